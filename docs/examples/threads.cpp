#include <korvex/korvex.h>

#include <cstdio>

using namespace ZQKorvex;

int main() {
  // Progress goes to standard error: a bar on a terminal, one line elsewhere. A ZQDots with an
  // observer calls that instead, and stops when it returns false.
  ZQCreateFastFPDatabaseOptions creation(ZQGetFPType(ZQFPType::Path));
  creation.SetNumProcessors(2);
  creation.SetTracer(ZQDots(0, "molecules"));
  if (!ZQCreateFastFPDatabaseFile("drugs.fpbin", "data/drugs.smi", creation)) return 1;

  const ZQFastFPDatabase database("drugs.fpbin", ZQFastFPDatabaseMemoryType::InMemory);
  ZQMol query;
  if (!database.IsValid() || !ZQSmilesToMol(query, "CN1C=NC2=C1C(=O)N(C(=O)N2C)C")) return 1;

  // A sorted search counts the scores of all records as it goes.
  ZQFPDatabaseOptions options(3, ZQSimMeasure::Tversky);
  options.SetTverskyCoeffs(0.9F, 0.1F);
  options.SetNumProcessors(0);  // all
  ZQSimSearchResult result(10, 0.0, 1.0);
  database.SortedSearch(result, query, options);
  std::printf("%s, %lu of %lu records\n", ZQSimSearchStatusToName(result.GetSearchStatus()).c_str(),
              result.NumSearched(), result.NumTargets());
  for (auto hit = result.GetSortedScores(); hit; ++hit) {
    std::printf("record %lu, score %.3f\n", hit->GetIdx(), hit->GetScore());
  }
  std::printf("%lu scores, mean %.3f\n", result.GetHistogram().NumSamples(),
              result.GetHistogram().Mean());
}
