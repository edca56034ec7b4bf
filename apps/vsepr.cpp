#include <algorithm>
#include <cinttypes>
#include <cstdint>
#include <cstdio>
#include <limits>
#include <mutex>
#include <string>
#include <vector>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/threads.h"
#include "contract/quarnel/perception.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/vsepr_aro_stereo_types.h"
#include "korvex/vsepr_aro_types.h"
#include "korvex/vsepr_fingerprint.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddMoleculeFile(interface);
  interface.AddParameter(
      ZQParameter("-types", "", ZQParamType::Bool, "Prints the VSEPR types of the atoms instead")
          .SetDefault(false));
  interface.AddParameter({"-query", "", ZQParamType::String,
                          "Ranks the file instead, against each record of this molecule file, or "
                          "against one SMILES"});
  AddHitFormat(interface);
  AddThreads(interface);
  AddVseprOptions(interface);
  ZQConfigureFPDatabaseOptions(interface,
                               ZQFPDatabaseOptionsMask::Limit | ZQFPDatabaseOptionsMask::Cutoff);
  static const ZQNamespaceInterface measures(
      "Measure", ZQNamespaceMode::Single,
      {{"Tanimoto", ZQSimMeasure::Tanimoto, "the weights of both, divided by those of either"},
       {"Tversky", ZQSimMeasure::Tversky, "the same, with -alpha and -beta"}});
  AddChoice(*interface.GetInterface("fingerprint database search options"), "-simfunc", "-s",
            "Similarity measure", measures, "Tanimoto");
  AddTverskyCoeffs(interface);
}

// ---- lists

int PrintFingerprints(const ZQMolDatabase& molecules, const ZQVseprOptions& options) {
  unsigned int made = 0;
  ZQMol mol;
  ZQVseprFingerprint fp;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    std::string volume;
    std::string pairs;
    if (molecules.GetMolecule(mol, i)) {
      PrepareForVsepr(mol);
      fp.Setup(mol, options);
      if (NumErrors() != 0) return BadInput;  // too little memory
      volume = ShortestNumber(fp.GetVolume());
      for (const auto& [key, weight] : fp.GetPathCounts()) {
        char digits[17];
        std::snprintf(digits, sizeof digits, "%016" PRIx64, key);
        pairs.append(pairs.empty() ? "" : " ").append(digits);
        pairs.append(":").append(ShortestNumber(weight));
      }
      ++made;
    }
    std::printf("%s\t%s\t%s\n", TsvField(molecules.GetTitle(i)).c_str(), volume.c_str(),
                pairs.c_str());
  }
  return made != 0 ? Done : BadInput;
}

int PrintTypes(const ZQMolDatabase& molecules) {
  unsigned int read = 0;
  ZQMol mol;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    const std::string title = TsvField(molecules.GetTitle(i));
    if (!molecules.GetMolecule(mol, i)) {
      std::printf("%s\t\t\t\t\t\t\n", title.c_str());
      continue;
    }
    ++read;
    PrepareForVsepr(mol);
    for (auto atom = mol.GetAtoms(); atom; ++atom) {
      const unsigned int plain = VSEPRAroType::GetType(*atom);
      const unsigned int stereo = VSEPRAroStereoType::GetType(*atom);
      std::printf("%s\t%u\t%s\t%u\t%s\t%u\t%s\n", title.c_str(), atom->GetIdx(),
                  ZQGetAtomicSymbol(atom->GetAtomicNum()), plain,
                  VSEPRAroType::GetName(plain).c_str(), stereo,
                  VSEPRAroStereoType::GetName(stereo).c_str());
    }
  }
  return read != 0 ? Done : BadInput;
}

// ---- ranking

using HitList = ZQHitList<ZQSimScore>;

// A strict total order, so that the best hits are the same for any number of threads.
bool IsBetter(const ZQSimScore& a, const ZQSimScore& b) {
  if (a.GetScore() != b.GetScore()) return a.GetScore() > b.GetScore();
  return a.GetIdx() < b.GetIdx();
}

// Ranks a molecule file. The fingerprint of a record is made anew for each pass, so that memory
// doesn't grow with the file.
class Ranking {
 public:
  Ranking(const ZQMolDatabase& molecules, const ZQVseprOptions& vsepr,
          const ZQFPDatabaseOptions& options)
      : molecules_(molecules),
        vsepr_(vsepr),
        options_(options),
        isUnreadable_(molecules.GetMaxMolIdx()) {
    const auto records = molecules.GetMaxMolIdx();
    limit_ = options.GetLimit() == 0 ? records : std::min(options.GetLimit(), records);
  }

  // The most hits of a query that are held at a time: a list holds up to twice its limit, and each
  // record is in the list of one thread.
  std::uint64_t MostHits() const {
    const std::uint64_t inLists = std::uint64_t{2} * limit_ * options_.GetNumProcessors();
    return std::min<std::uint64_t>(inLists, isUnreadable_.size());
  }

  // The hits of each query, best first.
  std::vector<HitList> Rank(const std::vector<ZQVseprFingerprint>& queries) {
    // No score that equals the cutoff passes: no index is less than 0.
    const ZQSimScore threshold(0, options_.HasCutoff() ? options_.GetCutoff() : 0.0);
    const std::vector<HitList> none(queries.size(), HitList(limit_, IsBetter, threshold, 0));
    std::vector<HitList> hitsOfAll = none;
    std::mutex mutex;
    OnThreads(options_.GetNumProcessors(), [&](auto next) {
      std::vector<HitList> hits = none;
      ZQMol mol;
      ZQVseprFingerprint fp;
      for (std::size_t i = next(); i < isUnreadable_.size(); i = next()) {
        if (!Read(mol, i)) continue;
        PrepareForVsepr(mol);
        fp.Setup(mol, vsepr_);
        for (std::size_t query = 0; query < queries.size(); ++query) {
          hits[query].UpdateScores({i, Score(queries[query], fp)});
        }
      }
      const std::lock_guard lock(mutex);
      for (std::size_t query = 0; query < queries.size(); ++query) {
        for (const ZQSimScore& hit : hits[query].GetItems()) hitsOfAll[query].UpdateScores(hit);
      }
    });
    for (HitList& hits : hitsOfAll) hits.SortScores(true);
    return hitsOfAll;
  }

  // After a pass.
  bool IsAnyReadable() const { return std::ranges::count(isUnreadable_, 0) != 0; }

 private:
  // Reports a record that can't be read in the first pass only.
  bool Read(ZQMol& mol, std::size_t record) {
    if (isUnreadable_[record]) return false;
    isUnreadable_[record] = !molecules_.GetMolecule(mol, static_cast<unsigned int>(record));
    return !isUnreadable_[record];
  }

  double Score(const ZQVseprFingerprint& query, const ZQVseprFingerprint& record) const {
    if (options_.GetSimFunc() == ZQSimMeasure::Tanimoto) return ZQGetTanimoto(query, record);
    return ZQGetTversky(query, record, options_.GetTverskyAlpha(), options_.GetTverskyBeta());
  }

  const ZQMolDatabase& molecules_;
  ZQVseprOptions vsepr_;
  ZQFPDatabaseOptions options_;
  unsigned int limit_;
  std::vector<char> isUnreadable_;  // a byte each: threads write to neighbours
};

int PrintHits(const ZQMolDatabase& molecules, const ZQVseprOptions& vsepr,
              const ZQInterface& interface) {
  ZQFPDatabaseOptions options;
  ZQSetupFPDatabaseOptions(options, interface);
  options.SetLimit(static_cast<unsigned int>(interface.Get<int>("-limit")));  // its own default
  SetTverskyCoeffs(options, interface);
  options.SetNumProcessors(GetThreads(interface));
  MoleculeArgument queries;
  if (!queries.Open(interface.Get<std::string>("-query"))) return BadInput;

  Ranking ranking(molecules, vsepr, options);
  const std::uint64_t queriesPerPass = QueriesPerPass(ranking.MostHits());
  HitWriter writer(interface);
  bool isAnyAnswered = false;
  for (unsigned int next = 0; next < queries.NumMolecules();) {
    std::vector<unsigned int> numbers;
    std::vector<ZQVseprFingerprint> fps;
    ZQMol mol;
    while (next < queries.NumMolecules() && fps.size() < queriesPerPass) {
      if (!queries.GetMolecule(mol, next++)) continue;
      PrepareForVsepr(mol);
      fps.emplace_back(mol, vsepr);
      numbers.push_back(next);
    }
    if (fps.empty()) break;
    const std::vector<HitList> hitsOfAll = ranking.Rank(fps);
    if (NumErrors() != 0) {
      writer.Finish();
      return BadInput;  // too little memory
    }
    for (std::size_t i = 0; i < hitsOfAll.size(); ++i) {
      unsigned int rank = 0;
      for (const ZQSimScore& hit : hitsOfAll[i].GetItems()) {
        const auto record = static_cast<unsigned int>(hit.GetIdx());
        writer.Write({numbers[i], ++rank, hit.GetScore(), record, molecules.GetTitle(record),
                      molecules.GetSmiles(record)});
      }
    }
    isAnyAnswered = ranking.IsAnyReadable();
  }
  writer.Finish();
  return isAnyAnswered ? Done : BadInput;
}

// False after an error about an option that would be ignored.
bool CheckOptions(const ZQInterface& interface) {
  constexpr const char* query[] = {"-query"};
  constexpr const char* ofRanking[] = {"-format",  "-threads", "-limit", "-cutoff",
                                       "-simfunc", "-alpha",   "-beta"};
  constexpr const char* weights[] = {"-alpha", "-beta"};
  if (interface.Get<bool>("-types") && (IsAnyVseprOptionSet(interface, "with -types") ||
                                        IsAnySet(interface, query, "with -types"))) {
    return false;
  }
  if (!interface.IsSet("-query")) return !IsAnySet(interface, ofRanking, "without -query");
  return interface.Get<std::string>("-simfunc") == "Tversky" ||
         !IsAnySet(interface, weights, "without -simfunc Tversky");
}

int Run(const ZQInterface& interface) {
  if (!CheckOptions(interface)) return BadUsage;
  ZQMolDatabase molecules;
  if (!OpenMolecules(molecules, interface.Get<std::string>("MOLFILE"))) return BadInput;
  if (interface.Get<bool>("-types")) return PrintTypes(molecules);
  const ZQVseprOptions options = GetVseprOptions(interface);
  return interface.IsSet("-query") ? PrintHits(molecules, options, interface)
                                   : PrintFingerprints(molecules, options);
}

}  // namespace

const Command vseprCommand{"vsepr", "Prints VSEPR fingerprints or atom types, or ranks by them",
                           Configure, Run};

}  // namespace KorvexProgram
