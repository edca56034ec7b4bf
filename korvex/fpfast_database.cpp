#include "korvex/fpfast_database.h"

#include <utility>

#include "korvex/cuda/fpfast_database_cuda_impl_local.h"
#include "korvex/fpfast_database_inmemory_impl_local.h"
#include "korvex/fpfast_database_mmap_impl_local.h"
#include "korvex/fpfast_local.h"
#include "korvex/measures_local.h"
#include "korvex/memory_local.h"
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
  if (ZQKorvexIsGPUReady()) return std::make_unique<ZQFastFPCUDADatabaseImpl>(filename);
  ZQThrow.Warning("%s : no CUDA-enabled device available falling back to memory-mapped type!",
                  caller);
  return std::make_unique<ZQFastFPMemoryMapDatabaseImpl>(filename);
}

// Names in messages of operations with several overloads.
constexpr const char* scoresName = "ZQFastFPDatabase::GetScores()";
constexpr const char* sortedScoresName = "ZQFastFPDatabase::GetSortedScores()";
constexpr const char* rawScoresName = "ZQFastFPDatabase::GetRawScores()";

/// Makes the query fingerprint of a molecule, after checking all arguments. The message for a
/// molecule without a fingerprint has `colon` after the caller's name.
bool MakeQuery(const ZQFastFPDatabase& database, ZQFingerPrint& fp, const ZQMolBase& mol,
               const ZQFPDatabaseOptions& options, const char* caller, const char* colon = " :") {
  return database.IsValidDatabase(caller) && database.IsValidMolecule(mol, caller) &&
         database.IsValidOptions(options, caller) && ZQWarnOnFailure(caller, [&] {
           return database.GetImpl().MakeQuery(fp, mol, std::string(caller) + colon);
         });
}

/// The same for a record.
bool MakeQuery(const ZQFastFPDatabase& database, ZQFingerPrint& fp, std::uint64_t index,
               const ZQFPDatabaseOptions& options, const char* caller) {
  return database.IsValidDatabase(caller) && database.IsValidFPIndex(index, caller) &&
         database.IsValidOptions(options, caller) && ZQWarnOnFailure(caller, [&] {
           return database.GetImpl().MakeQuery(fp, index, std::string(caller) + " :");
         });
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
  return ZQWarnOnFailure(caller, [&] {
    fp.SetFPTypeBase(impl_->GetFPTypeBase());
    std::uint64_t moleculeIndex = 0;
    if (!impl_->GetFingerPrint(fp, moleculeIndex, index)) return false;
    if (moleculeIndex != index) {
      ZQThrow.Warning("%s : fingerprint and molecule index inconsistency!", caller);
      return false;
    }
    return true;
  });
}

std::int64_t ZQFastFPDatabase::GetMoleculeIndex(std::uint64_t index) const {
  const char* caller = "ZQFastFPDatabase::GetMolculeIndex()";
  constexpr std::int64_t none = -1;
  if (!IsValidDatabase(caller) || !IsValidFPIndex(index, caller)) return none;
  return ZQWarnOnFailure(
      caller,
      [&] {
        std::vector<std::uint64_t> words;
        std::uint64_t moleculeIndex = 0;
        std::uint64_t popcount = 0;
        if (!impl_->GetFingerPrint(words, moleculeIndex, popcount, index)) {
          ZQThrow.Warning("%s : cannot access fingerprint!", caller);
          return none;
        }
        return static_cast<std::int64_t>(moleculeIndex);
      },
      [] { return none; });
}

// One query against all records.

ZQIter<ZQSimScore> ZQFastFPDatabase::GetScores(const ZQFingerPrint& query,
                                               const ZQFPDatabaseOptions& options) const {
  if (!IsValidDatabase(scoresName) || !IsValidFPType(query, scoresName) ||
      !IsValidOptions(options, scoresName)) {
    return {};
  }
  return ZQWarnOnFailure(scoresName, [&] { return impl_->GetScores(query, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetScores(const ZQMolBase& query,
                                               const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(*this, fp, query, options, scoresName)) return {};
  return ZQWarnOnFailure(scoresName, [&] { return impl_->GetScores(fp, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetScores(std::uint64_t index,
                                               const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(*this, fp, index, options, scoresName)) return {};
  return ZQWarnOnFailure(scoresName, [&] { return impl_->GetScores(fp, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetSortedScores(const ZQFingerPrint& query,
                                                     const ZQFPDatabaseOptions& options) const {
  if (!IsValidDatabase(sortedScoresName) || !IsValidOptions(options, sortedScoresName)) {
    return {};
  }
  return ZQWarnOnFailure(sortedScoresName, [&] { return impl_->GetSortedScores(query, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetSortedScores(const ZQMolBase& query,
                                                     const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(*this, fp, query, options, sortedScoresName)) return {};
  return ZQWarnOnFailure(sortedScoresName, [&] { return impl_->GetSortedScores(fp, options); });
}

ZQIter<ZQSimScore> ZQFastFPDatabase::GetSortedScores(std::uint64_t index,
                                                     const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(*this, fp, index, options, sortedScoresName)) return {};
  return ZQWarnOnFailure(sortedScoresName, [&] { return impl_->GetSortedScores(fp, options); });
}

std::vector<ZQIter<ZQSimScore>> ZQFastFPDatabase::GetSortedScores(
    const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const {
  std::vector<ZQIter<ZQSimScore>> none(queries.size());
  if (!IsValidDatabase(sortedScoresName) || !IsValidOptions(options, sortedScoresName)) return none;
  return ZQWarnOnFailure(
      sortedScoresName, [&] { return impl_->GetSortedScores(queries, options); },
      [&none] { return std::move(none); });
}

ZQIter<double> ZQFastFPDatabase::GetRawScores(const ZQFingerPrint& query,
                                              const ZQFPDatabaseOptions& options) const {
  if (!IsValidDatabase(rawScoresName) || !IsValidFPType(query, rawScoresName) ||
      !IsValidOptions(options, rawScoresName)) {
    return {};
  }
  return ZQWarnOnFailure(rawScoresName, [&] { return impl_->GetRawScores(query, options); });
}

ZQIter<double> ZQFastFPDatabase::GetRawScores(const ZQMolBase& query,
                                              const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(*this, fp, query, options, rawScoresName, "")) return {};
  return ZQWarnOnFailure(rawScoresName, [&] { return impl_->GetRawScores(fp, options); });
}

ZQIter<double> ZQFastFPDatabase::GetRawScores(std::uint64_t index,
                                              const ZQFPDatabaseOptions& options) const {
  ZQFingerPrint fp;
  if (!MakeQuery(*this, fp, index, options, rawScoresName)) return {};
  return ZQWarnOnFailure(rawScoresName, [&] { return impl_->GetRawScores(fp, options); });
}

unsigned int ZQFastFPDatabase::SortedSearch(ZQSimSearchResult& result, const ZQMolBase& query,
                                            const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::Search()";
  if (!IsValidDatabase(caller)) return result.GetSearchStatus();
  return ZQWarnOnFailure(
      caller,
      [&] {
        ZQFingerPrint fp;
        result.GetImpl().SetSearchStatus(ZQSimSearchStatus::Uninitialized);
        if (!impl_->MakeQuery(fp, query, "ZQFastFPDatabase::SortedSearch()")) {
          return ZQSimSearchStatus::Uninitialized;
        }
        return impl_->SortedSearch(result, fp, options);
      },
      [] { return ZQSimSearchStatus::Uninitialized; });
}

// All pairs of records.

ZQIter<float> ZQFastFPDatabase::GetAllScores(const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetAllScores()";
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return {};
  return ZQWarnOnFailure(caller, [&] { return impl_->GetAllScores(options); });
}

ZQFPHistogram ZQFastFPDatabase::GetHistogram(const ZQFPDatabaseOptions& options,
                                             unsigned long bins) const {
  const char* caller = "ZQFastFPDatabase::GetHistogram()";
  const auto none = [bins] { return ZQFPHistogram(bins, 0.0, 1.0); };
  if (!IsValidDatabase(caller) || !IsValidOptions(options, caller)) return none();
  return ZQWarnOnFailure(
      caller, [&] { return impl_->GetHistogram(options, bins); }, none);
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
  return ZQWarnOnFailure(
      caller, [&] { return impl_->GetVariogram(values, options, bins); }, none);
}

ZQIter<ZQSimScorePair> ZQFastFPDatabase::GetSparseMatrix(const ZQFPDatabaseOptions& options) const {
  const char* caller = "ZQFastFPDatabase::GetSparseMatrix()";
  if (!IsValidDatabase(caller)) return {};
  return ZQWarnOnFailure(caller, [&] { return impl_->GetSparseMatrix(options); });
}

bool ZQIsFastFPDatabaseReady() { return ZQGetPopCountMethod() != 0; }

}  // namespace ZQKorvex
