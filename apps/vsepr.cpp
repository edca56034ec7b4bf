#include <algorithm>
#include <atomic>
#include <cstdint>
#include <cstdio>
#include <iterator>
#include <limits>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "contract/quarnel/perception.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/threads.h"
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
  AddMoleculeFileOptions(interface);
}

// ---- lists

// Appends "key:weight key:weight" to a line that ends in a tab. Most weights equal the one before.
void AppendPairs(std::string& text, const ZQVseprFingerprint::PathCounts& counts) {
  std::string weightText;
  char digits[17] = {' '};
  double last = std::numeric_limits<double>::quiet_NaN();
  for (const auto& [key, weight] : counts) {
    if (weight != last) {
      weightText = ':';
      AppendShortest(weightText, weight);
      last = weight;
    }
    for (int i = 1; i <= 16; ++i) digits[i] = "0123456789abcdef"[key >> (64 - 4 * i) & 0xF];
    const int separator = text.back() == '\t' ? 1 : 0;  // none before the first
    text.append(digits + separator, std::end(digits)).append(weightText);
  }
}

int PrintFingerprints(const ZQMolDatabase& molecules, const ZQVseprOptions& options) {
  unsigned int made = 0;
  ZQMol mol;
  ZQVseprFingerprint fp;
  std::string line;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    line = TsvField(molecules.GetTitle(i)) + '\t';
    if (molecules.GetMolecule(mol, i) && MakeFingerPrint(fp, mol, options)) {
      AppendShortest(line, fp.GetVolume());
      line += '\t';
      AppendPairs(line, fp.GetPathCounts());
      ++made;
    } else {
      line += '\t';
    }
    line += '\n';
    std::fwrite(line.data(), 1, line.size(), stdout);
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
        limit_(options.GetLimit() == 0 ? molecules.GetMaxMolIdx() : options.GetLimit()),
        isUnreadable_(molecules.GetMaxMolIdx()) {}

  // A list holds up to twice its limit.
  std::uint64_t NumQueriesPerPass() const {
    return QueriesPerPass(limit_, isUnreadable_.size(), 2 * options_.GetNumProcessors());
  }

  // The hits of each query, best first.
  std::vector<HitList> Rank(const std::vector<ZQVseprFingerprint>& queries) {
    const float cutoff = options_.HasCutoff() ? options_.GetCutoff() : 0.0F;
    const ZQSimScore worst(0, -std::numeric_limits<double>::infinity());
    const std::vector<HitList> none(queries.size(), HitList(limit_, IsBetter, worst, 0));
    std::vector<HitList> hitsOfAll = none;
    std::mutex mutex;
    std::atomic<std::size_t> next = 0;
    ZQRunOnThreads(options_.GetNumProcessors(), [&] {
      std::vector<HitList> hits = none;
      ZQMol mol;
      ZQVseprFingerprint fp;
      for (std::size_t i = next++; i < isUnreadable_.size(); i = next++) {
        if (!Read(mol, i) || !MakeFingerPrint(fp, mol, vsepr_)) continue;
        for (std::size_t query = 0; query < queries.size(); ++query) {
          const double score = Score(queries[query], fp);
          // As float, or a score of 0.7 would exceed the float 0.7.
          if (static_cast<float>(score) > cutoff) hits[query].UpdateScores({i, score});
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
  ZQMolDatabase queries;
  if (!OpenMoleculesOrSmiles(queries, interface.Get<std::string>("-query"), interface)) {
    return BadInput;
  }

  Ranking ranking(molecules, vsepr, options);
  const std::uint64_t queriesPerPass = ranking.NumQueriesPerPass();
  HitWriter writer(interface);
  bool isAnyAnswered = false;
  for (unsigned int next = 0; next < queries.GetMaxMolIdx();) {
    std::vector<unsigned int> numbers;
    std::vector<ZQVseprFingerprint> fps;
    ZQMol mol;
    while (next < queries.GetMaxMolIdx() && fps.size() < queriesPerPass) {
      const bool read = queries.GetMolecule(mol, next++);
      ZQVseprFingerprint fp;
      if (!read || !CheckAtoms(mol, "query " + std::to_string(next)) ||
          !MakeFingerPrint(fp, mol, vsepr)) {
        continue;
      }
      fps.push_back(std::move(fp));
      numbers.push_back(next);
    }
    if (fps.empty()) break;
    const unsigned int numErrors = NumErrors();
    const std::vector<HitList> hitsOfAll = ranking.Rank(fps);
    if (NumErrors() != numErrors) return BadInput;  // too little memory
    for (std::size_t i = 0; i < hitsOfAll.size(); ++i) {
      writer.Write(numbers[i], hitsOfAll[i].GetItems(), molecules);
    }
    isAnyAnswered = ranking.IsAnyReadable();
  }
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
  if (!OpenMolecules(molecules, interface.Get<std::string>("MOLFILE"), interface)) return BadInput;
  if (interface.Get<bool>("-types")) return PrintTypes(molecules);
  const ZQVseprOptions options = GetVseprOptions(interface);
  return interface.IsSet("-query") ? PrintHits(molecules, options, interface)
                                   : PrintFingerprints(molecules, options);
}

}  // namespace

const Command vseprCommand{"vsepr", "Prints VSEPR fingerprints or atom types, or ranks by them",
                           Configure, Run};

}  // namespace KorvexProgram
