#include "korvex/fpfast_database.h"

#include <exception>
#include <utility>

#include "korvex/fpfast_database_inmemory_impl_local.h"
#include "korvex/fpfast_database_mmap_impl_local.h"
#include "korvex/fpfast_local.h"
#include "korvex/measures_local.h"
#include "korvex/version.h"

namespace ZQKorvex {

namespace {

std::unique_ptr<ZQFastFPDatabaseImplBase> MakeImpl(const std::string& filename,
                                                   unsigned int memoryType) {
  const char* caller = "ZQFastFPDatabase::ZQFastFPDatabase()";
  switch (memoryType) {
    case ZQFastFPDatabaseMemoryType::InMemory:
      return std::make_unique<ZQFastFPInMemoryDatabaseImpl>(filename);
    case ZQFastFPDatabaseMemoryType::MemoryMapped:
      return std::make_unique<ZQFastFPMemoryMapDatabaseImpl>(filename);
    case ZQFastFPDatabaseMemoryType::CUDA:
      break;
    default:
      ZQThrow.Warning("%s : invalid memory type parameter initialized for memory-mapped!", caller);
  }
  // No build has a GPU back end yet; it would be made here where ZQKorvexIsGPUReady() says so.
  ZQThrow.Warning("%s : no CUDA-enabled device available falling back to memory-mapped type!",
                  caller);
  return std::make_unique<ZQFastFPMemoryMapDatabaseImpl>(filename);
}

/// The result of a query. Without memory for it warns and gives what `makeEmpty` returns.
template <class Query, class MakeEmpty>
auto GuardedOr(const char* caller, MakeEmpty makeEmpty, Query query) {
  try {
    return query();
  } catch (const std::exception& failure) {
    ZQThrow.Warning("%s : %s!", caller, failure.what());
    return makeEmpty();
  }
}

template <class Query, class Result>
Result Guarded(const char* caller, Result empty, Query query) {
  return GuardedOr(
      caller, [&empty] { return std::move(empty); }, query);
}

}  // namespace

ZQFastFPDatabase::ZQFastFPDatabase(const std::string& filename, unsigned int memoryType)
    : impl_(MakeImpl(filename, memoryType)) {}
ZQFastFPDatabase::~ZQFastFPDatabase() = default;

// The checks.

bool ZQFastFPDatabase::IsValidDatabase(const char* caller) const {
  if (IsValid()) return true;
  ZQThrow.Warning("%s : invalid ZQFastFPDatabase object!", caller);
  return false;
}

bool ZQFastFPDatabase::IsValidMolecule(const ZQMolBase& mol, const char* caller) const {
  if (mol) return true;
  ZQThrow.Warning("%s : empty molecule!", caller);
  return false;
}

bool ZQFastFPDatabase::IsValidOptions(const ZQFPDatabaseOptions& options,
                                      const char* caller) const {
  if (ZQSimMeasure::IsValid(options.GetSimFunc())) return true;
  ZQThrow.Warning("%s : unknown similarity measure type '%d'!", caller,
                  static_cast<int>(options.GetSimFunc()));
  return false;
}

bool ZQFastFPDatabase::IsValidFPType(const ZQFingerPrint& fp, const char* caller) const {
  if (!fp.GetFPTypeBase()) {
    ZQThrow.Warning("%s : invalid fingerprint type!", caller);
    return false;
  }
  if (fp.GetFPTypeBase() != GetFPTypeBase()) {
    ZQThrow.Warning("%s : fingerprint type mismatch!", caller);
    return false;
  }
  return true;
}

bool ZQFastFPDatabase::IsValidFPIndex(std::uint64_t index, const char* caller) const {
  if (index < NumFingerPrints()) return true;
  ZQThrow.Warning("%s : fingerprint index out of range!", caller);
  return false;
}

// The database itself.

bool ZQFastFPDatabase::IsValid() const { return impl_->IsValid(); }

const ZQFPTypeBase* ZQFastFPDatabase::GetFPTypeBase() const {
  if (!IsValidDatabase("ZQFastFPDatabase::GetFPTypeBase()")) return nullptr;
  return impl_->GetFPTypeBase();
}

std::uint64_t ZQFastFPDatabase::NumFingerPrints() const {
  if (!IsValidDatabase("ZQFastFPDatabase::NumFingerPrints()")) return 0;
  return impl_->NumFingerPrints();
}

unsigned int ZQFastFPDatabase::GetMemoryType() const {
  if (!IsValidDatabase("ZQFastFPDatabase::GetMemoryType()")) return 0;
  return impl_->GetMemoryType();
}

std::string ZQFastFPDatabase::GetMemoryTypeString() const {
  if (!IsValidDatabase("ZQFastFPDatabase::GetMemoryTypeString()")) return {};
  return impl_->GetMemoryTypeString();
}

const ZQFastFPDatabaseParams& ZQFastFPDatabase::GetHeader() const { return impl_->GetHeader(); }

bool ZQFastFPDatabase::GetFingerPrint(ZQFingerPrint& fp, std::uint64_t index) const {
  const char* caller = "ZQFastFPDatabase::GetFingerPrint()";
  if (!IsValidDatabase(caller) || !IsValidFPIndex(index, caller)) return false;
  return Guarded(caller, false, [&] {
    fp.SetFPTypeBase(impl_->GetFPTypeBase());
    std::vector<std::uint64_t> words;
    std::uint64_t moleculeIndex = 0;
    std::uint64_t popcount = 0;
    if (!impl_->GetFingerPrint(words, moleculeIndex, popcount, index) ||
        !ZQConvertFP(fp, impl_->GetFPTypeBase(), words)) {
      ZQThrow.Warning("%s : cannot access fingerprint!", caller);
      return false;
    }
    if (moleculeIndex != index) {
      ZQThrow.Warning("%s : fingerprint and molecule index inconsistency!", caller);
      return false;
    }
    return true;
  });
}

std::int64_t ZQFastFPDatabase::GetMoleculeIndex(std::uint64_t index) const {
  const char* caller = "ZQFastFPDatabase::GetMolculeIndex()";
  if (!IsValidDatabase(caller) || !IsValidFPIndex(index, caller)) return -1;
  return Guarded(caller, std::int64_t{-1}, [&] {
    std::vector<std::uint64_t> words;
    std::uint64_t moleculeIndex = 0;
    std::uint64_t popcount = 0;
    if (!impl_->GetFingerPrint(words, moleculeIndex, popcount, index)) {
      ZQThrow.Warning("%s : cannot access fingerprint!", caller);
      return std::int64_t{-1};
    }
    return static_cast<std::int64_t>(moleculeIndex);
  });
}

// One query against all.

ZQIter<ZQSimScore> ZQFastFPDatabase::GetScores(const ZQFingerPrint& query,
                                               const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetScores()";
  if (!IsValidDatabase(caller) || !IsValidFPType(query, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<ZQSimScore>(), [&] { return impl_->GetScores(query, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetScores(const ZQMolBase& query,
                                               const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetScores()";
  if (!IsValidDatabase(caller) || !IsValidMolecule(query, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<ZQSimScore>(), [&] { return impl_->GetScores(query, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetScores(std::uint64_t index,
                                               const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetScores()";
  if (!IsValidDatabase(caller) || !IsValidFPIndex(index, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<ZQSimScore>(), [&] { return impl_->GetScores(index, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetSortedScores(const ZQFingerPrint& query,
                                                     const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSortedScores()";
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return {};
  return Guarded(caller, ZQIter<ZQSimScore>(),
                 [&] { return impl_->GetSortedScores(query, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetSortedScores(const ZQMolBase& query,
                                                     const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSortedScores()";
  if (!IsValidDatabase(caller) || !IsValidMolecule(query, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<ZQSimScore>(),
                 [&] { return impl_->GetSortedScores(query, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetSortedScores(std::uint64_t index,
                                                     const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSortedScores()";
  if (!IsValidDatabase(caller) || !IsValidFPIndex(index, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<ZQSimScore>(),
                 [&] { return impl_->GetSortedScores(index, options); });
}

std::vector<ZQIter<ZQSimScore>> ZQFastFPDatabase::GetSortedScores(
    const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSortedScores()";
  std::vector<ZQIter<ZQSimScore>> none(queries.size());
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return none;
  return Guarded(caller, std::move(none), [&] { return impl_->GetSortedScores(queries, options); });
}

ZQIter<double> ZQFastFPDatabase::GetRawScores(const ZQFingerPrint& query,
                                              const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetRawScores()";
  if (!IsValidDatabase(caller) || !IsValidFPType(query, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<double>(), [&] { return impl_->GetRawScores(query, options); });
}

ZQIter<double> ZQFastFPDatabase::GetRawScores(const ZQMolBase& query,
                                              const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetRawScores()";
  if (!IsValidDatabase(caller) || !IsValidMolecule(query, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<double>(), [&] { return impl_->GetRawScores(query, options); });
}

ZQIter<double> ZQFastFPDatabase::GetRawScores(std::uint64_t index,
                                              const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetRawScores()";
  if (!IsValidDatabase(caller) || !IsValidFPIndex(index, caller) ||
      !IsValidOptions(options, caller)) {
    return {};
  }
  return Guarded(caller, ZQIter<double>(), [&] { return impl_->GetRawScores(index, options); });
}

unsigned int ZQFastFPDatabase::SortedSearch(ZQSimSearchResult& result, const ZQMolBase& query,
                                            const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::Search()";
  if (!IsValidDatabase(caller)) return result.GetSearchStatus();
  return Guarded(caller, ZQSimSearchStatus::Uninitialized,
                 [&] { return impl_->SortedSearch(result, query, options); });
}

// All against all.

ZQIter<float> ZQFastFPDatabase::GetAllScores(const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetAllScores()";
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return {};
  return Guarded(caller, ZQIter<float>(), [&] { return impl_->GetAllScores(options); });
}

ZQFPHistogram ZQFastFPDatabase::GetHistogram(const ZQFPDatabaseOptions& options,
                                             unsigned long bins) const {
  const char* caller = "ZQFastFPDatabase::GetHistogram()";
  const auto none = [bins] { return ZQFPHistogram(bins, 0.0, 1.0); };
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return none();
  return GuardedOr(caller, none, [&] { return impl_->GetHistogram(options, bins); });
}

ZQFPVariogram ZQFastFPDatabase::GetVariogram(const std::vector<float>& values,
                                             const ZQFPDatabaseOptions& options,
                                             unsigned long bins) const {
  const char* caller = "ZQFastFPDatabase::GetVariogram()";
  const auto none = [bins] { return ZQFPVariogram(bins, 0.0, 1.0); };
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return none();
  if (!ZQIsSymmetric(options.GetSimFunc())) {
    ZQThrow.Warning("%s : %s similarity is not supported!", caller,
                    ZQGetSimilarityMeasureName(options.GetSimFunc()).c_str());
    return none();
  }
  if (values.size() != impl_->NumFingerPrints()) {
    ZQThrow.Warning("%s : %lu values for %lu fingerprints!", caller, values.size(),
                    impl_->NumFingerPrints());
    return none();
  }
  return GuardedOr(caller, none, [&] { return impl_->GetVariogram(values, options, bins); });
}

ZQIter<ZQSimScorePair> ZQFastFPDatabase::GetSparseMatrix(const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSparseMatrix()";
  if (!IsValidDatabase(caller)) return {};
  return Guarded(caller, ZQIter<ZQSimScorePair>(), [&] { return impl_->GetSparseMatrix(options); });
}

bool ZQIsFastFPDatabaseReady() { return ZQGetPopCountMethod() != 0; }

}  // namespace ZQKorvex
