#include <cmath>
#include <utility>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/ranker.h"
#include "apps/stored.h"
#include "contract/quarnel/lingo.h"
#include "korvex/fpdatabase.h"
#include "korvex/fpkinds.h"

namespace KorvexProgram {

namespace {

constexpr const char* ofDatabases[] = {"-molecules", "-memtype"};

// Whether fingerprints of a type can be ranked by the measure of the options; reports an error.
bool CheckOptions(const ZQInterface& interface, const ZQFPTypeBase* type,
                  const ZQFPDatabaseOptions& options) {
  const ZQFPKind& kind = *ZQFindFPKind(type);
  constexpr const char* weights[] = {"-alpha", "-beta"};
  if (kind.measures != ZQFPMeasures::Bits &&
      IsAnySet(interface, weights, std::string("for fingerprints of kind ") + kind.name)) {
    return false;
  }
  return CheckMeasure(type, options.GetSimFunc());
}

// Fingerprints of one type in memory.
class MemoryRanker : public Ranker {
 public:
  MemoryRanker(const ZQFPTypeBase* type, const ZQFPDatabaseOptions& options)
      : database_(type), limit_(options.GetLimit()) {
    const bool isWeighted = options.GetSimFunc() == ZQSimMeasure::Tversky &&
                            ZQFindFPKind(type)->measures == ZQFPMeasures::Bits;
    if (isWeighted) {
      database_.SetSimFunc(ZQTverskySim(options.GetTverskyAlpha(), options.GetTverskyBeta()),
                           options.GetDescendingOrder());
    } else {
      database_.SetSimFunc(options.GetSimFunc(), options.GetDescendingOrder());
    }
    if (options.HasCutoff()) database_.SetCutoff(options.GetCutoff());
  }

  std::uint64_t NumFingerPrints() const override { return records_.size(); }
  bool CheckQuery(const ZQFingerPrint& fp, const std::string& where) const override {
    if (ZQFindFPKind(fp.GetFPTypeBase())->measures != ZQFPMeasures::Lingos) return true;
    const bool isLongEnough = ZQLingoSim(FingerPrintField(fp).c_str(), 1).IsValid();
    if (!isLongEnough) {
      ZQThrow.Error("%s: a Lingo text of fewer than four characters can't be compared",
                    where.c_str());
    }
    return isLongEnough;
  }
  std::vector<ZQIter<ZQSimScore>> Rank(const std::vector<ZQFingerPrint>& queries) const override {
    std::vector<ZQIter<ZQSimScore>> hits;
    hits.reserve(queries.size());
    for (const ZQFingerPrint& query : queries) {
      std::vector<ZQSimScore> ranked;
      for (auto hit = database_.GetSortedScores(query, limit_, 0, 0); hit; ++hit) {
        ranked.emplace_back(records_[hit->GetIdx()], hit->GetScore());
      }
      hits.emplace_back(new ZQVectorIter<ZQSimScore>(std::move(ranked)));
    }
    return hits;
  }
  ZQFPHistogram GetHistogram(const ZQMolBase& query, unsigned long bins) override {
    ZQFPHistogram histogram(bins, 0.0, 1.0);
    const bool hasCutoff = database_.HasCutoff();
    database_.ClearCutoff();
    for (auto score = database_.GetScores(query, 0, 0); score; ++score) {
      if (!std::isnan(score->GetScore())) histogram.AddSample(score->GetScore());
    }
    if (hasCutoff) database_.SetCutoff(database_.GetCutoff());
    return histogram;
  }
  const ZQFPTypeBase* GetFPTypeBase() const override { return database_.GetFPTypeBase(); }

 protected:
  /// Moves a fingerprint in. False, after a message, if there is too little memory.
  bool Add(ZQFingerPrint& fp, std::uint64_t record) {
    if (database_.AddFP(fp) == ZQFPDatabase::noIndex) return false;
    records_.push_back(record);
    fp = ZQFingerPrint();  // frees its memory
    return true;
  }

 private:
  ZQFPDatabase database_;
  unsigned int limit_;
  std::vector<std::uint64_t> records_;  // of each fingerprint
};

class MoleculeRanker : public MemoryRanker {
 public:
  using MemoryRanker::MemoryRanker;

  /// Adds the records of a file. False after a message if there are none, or too little memory.
  bool Open(const std::string& filename, const ZQInterface& interface, unsigned int numThreads) {
    if (!OpenMolecules(molecules_, filename, interface)) return false;
    std::vector<ZQFingerPrint> fps(molecules_.GetMaxMolIdx());
    MakeFingerPrints(fps, molecules_, 0, GetFPTypeBase(), numThreads);
    for (std::size_t i = 0; i < fps.size(); ++i) {
      if (fps[i] && !Add(fps[i], i)) return false;  // one without has a message
    }
    if (NumFingerPrints() == 0) {
      ZQThrow.Error("%s: no record has a fingerprint", molecules_.GetName().c_str());
    }
    return NumFingerPrints() != 0;
  }

  bool GetMolecule(ZQMol& mol, std::uint64_t record) const override {
    return molecules_.GetMolecule(mol, static_cast<unsigned int>(record));
  }
  std::string GetTitle(std::uint64_t record) const override {
    return molecules_.GetTitle(static_cast<unsigned int>(record));
  }
  std::string GetSmiles(std::uint64_t record) const override {
    return molecules_.GetSmiles(static_cast<unsigned int>(record));
  }

 private:
  ZQMolDatabase molecules_;
};

class StoredRanker : public MemoryRanker {
 public:
  using MemoryRanker::MemoryRanker;

  /// Adds one fingerprint or more. False, after a message, if there is too little memory.
  bool Fill(std::vector<StoredFingerPrint>& all) {
    titles_.resize(all.back().number);
    for (StoredFingerPrint& stored : all) {
      const std::uint64_t record = stored.number - 1;
      if (!Add(stored.fp, record)) return false;
      titles_[record] = std::move(stored.title);
    }
    return true;
  }

  bool GetMolecule(ZQMol& /*mol*/, std::uint64_t /*record*/) const override { return false; }
  std::string GetTitle(std::uint64_t record) const override { return titles_[record]; }
  std::string GetSmiles(std::uint64_t /*record*/) const override { return {}; }

 private:
  std::vector<std::string> titles_;  // of each record, also of those left out
};

}  // namespace

std::unique_ptr<Ranker> OpenMoleculeRanker(const std::string& filename,
                                           const ZQInterface& interface,
                                           const ZQFPDatabaseOptions& options,
                                           const ZQFPTypeBase* queryType, ExitCode& exitCode) {
  exitCode = BadUsage;
  if (IsAnySet(interface, ofDatabases, "with a molecule file")) return nullptr;
  if (queryType && IsAnyTypeOptionSet(interface, storedHaveType)) return nullptr;
  const ZQFPTypeBase* type = queryType ? queryType : GetTypeOption(interface, Kinds::All);
  if (!type || !CheckOptions(interface, type, options)) return nullptr;
  exitCode = BadInput;
  if (queryType && !CheckMaking(type, "the queries")) return nullptr;
  auto ranker = std::make_unique<MoleculeRanker>(type, options);
  if (!ranker->Open(filename, interface, options.GetNumProcessors())) return nullptr;
  return ranker;
}

std::unique_ptr<Ranker> OpenStoredRanker(const std::string& filename, const ZQInterface& interface,
                                         const ZQFPDatabaseOptions& options,
                                         const ZQFPTypeBase* queryType, ExitCode& exitCode) {
  exitCode = BadUsage;
  constexpr const char* html[] = {"-html"};
  if (IsAnySet(interface, ofDatabases, "with stored fingerprints") ||
      IsAnySet(interface, html, "with stored fingerprints, which have no molecules") ||
      IsAnyTypeOptionSet(interface, storedHaveType)) {
    return nullptr;
  }
  exitCode = BadInput;
  std::vector<StoredFingerPrint> all;
  if (!ReadStored(all, filename)) return nullptr;
  const ZQFPTypeBase* type = all.front().fp.GetFPTypeBase();
  if (queryType ? !CheckQueryType(queryType, type, filename) : !CheckMaking(type, filename)) {
    return nullptr;
  }
  exitCode = BadUsage;
  if (!CheckOptions(interface, type, options)) return nullptr;
  exitCode = BadInput;
  auto ranker = std::make_unique<StoredRanker>(type, options);
  if (!ranker->Fill(all)) return nullptr;
  return ranker;
}

}  // namespace KorvexProgram
