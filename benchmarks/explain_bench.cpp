/// The time to explain the similarity of two molecules, as a multiple of that to make their two
/// fingerprints, over pairs of ten drugs. A ratio of one run; the times are of one pair.
///
///   explain_bench [rounds]

#include <cstdio>
#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/readers.h"
#include "korvex/fpexplain.h"
#include "korvex/fpkinds.h"
#include "korvex/fppattern.h"

using namespace bench;

namespace {

constexpr const char* drugs[] = {
    "CC(=O)Oc1ccccc1C(=O)O",                                                    // aspirin
    "CC(C)Cc1ccc(cc1)C(C)C(=O)O",                                               // ibuprofen
    "CN1C=NC2=C1C(=O)N(C(=O)N2C)C",                                             // caffeine
    "CN1CCC23C4C1CC5=C2C(=C(C=C5)O)OC3C(C=C4)O",                                // morphine
    "CN1C(=O)CN=C(c2ccccc2)c2cc(Cl)ccc12",                                      // diazepam
    "CC1(C)SC2C(NC(=O)Cc3ccccc3)C(=O)N2C1C(=O)O",                               // benzylpenicillin
    "CCCc1nn(C)c2c1nc([nH]c2=O)-c1cc(ccc1OCC)S(=O)(=O)N1CCN(C)CC1",             // sildenafil
    "Cc1ccc(cc1Nc1nccc(n1)-c1cccnc1)NC(=O)c1ccc(cc1)CN1CCN(C)CC1",              // imatinib
    "CC(C)c1c(C(=O)Nc2ccccc2)c(-c2ccccc2)c(-c2ccc(F)cc2)n1CCC(O)CC(O)CC(=O)O",  // atorvastatin
    "COc1ccc2nc([nH]c2c1)S(=O)Cc1ncc(C)c(OC)c1C"};                              // omeprazole

struct Case {
  std::string name;
  const ZQFPTypeBase* type;
  double largestRatio;  // 0 for none
};

}  // namespace

int main(int argc, char** argv) {
  std::vector<ZQMol> mols(std::size(drugs));
  for (std::size_t i = 0; i < mols.size(); ++i) Check(ZQSmilesToMol(mols[i], drugs[i]), drugs[i]);
  const Case cases[] = {{"Circular 0-3", ZQGetCircularFPType(4096, 0, 3, 4239, 1), 30},
                        {"Path 0-5", ZQGetFPType(ZQFPType::Path), 0},
                        {"Tree 0-4", ZQGetFPType(ZQFPType::Tree), 0},
                        {"MACCS166", ZQGetFPType(ZQFPType::MACCS166), 0}};
  const auto forEachPair = [&](auto visit) {
    for (std::size_t i = 0; i < mols.size(); ++i) visit(mols[i], mols[(i + 3) % mols.size()]);
  };
  const auto pairs = static_cast<double>(mols.size());
  constexpr int repeats = 10;  // so that both ways run for about as long
  Race race;
  for (const Case& each : cases) {
    std::size_t shared = 0;
    forEachPair([&](const ZQMol& a, const ZQMol& b) {
      ZQSimilarityExplanation explanation;
      Check(ZQExplainSimilarity(explanation, a, b, each.type), "explanation");
      std::size_t matches = 0;
      for (auto match = ZQGetFPOverlap(a, b, each.type); match; ++match) ++matches;
      Check(matches == explanation.overlap.size(), "overlap");
      shared += matches;
    });
    std::printf("  %-14s %6.0f matches a pair\n", each.name.c_str(),
                static_cast<double>(shared) / pairs);
    race.Add(each.name, pairs, [&] {
      ZQSimilarityExplanation explanation;
      forEachPair([&](const ZQMol& a, const ZQMol& b) {
        ZQExplainSimilarity(explanation, a, b, each.type);
      });
    });
    race.Add("fingerprints of " + each.name, repeats * pairs, [&] {
      ZQFingerPrint fp;
      for (int i = 0; i < repeats; ++i) {
        forEachPair([&](const ZQMol& a, const ZQMol& b) {
          ZQMakeFP(fp, a, each.type);
          ZQMakeFP(fp, b, each.type);
        });
      }
    });
  }
  race.Run(static_cast<unsigned int>(Argument(argc, argv, 1, 200)));
  for (const Case& each : cases) {
    const double micros = 1e6 / race.Rate(each.name);
    const double ratio = race.Rate("fingerprints of " + each.name) / race.Rate(each.name);
    std::printf("  %-14s %8.1f us a pair, %6.1f times its fingerprints", each.name.c_str(), micros,
                ratio);
    if (each.largestRatio != 0) {
      std::printf(" (at most %.0f, and 5000 us)%s", each.largestRatio,
                  ratio > each.largestRatio || micros > 5000 ? "  <-- above" : "");
    }
    std::printf("\n");
  }
}
