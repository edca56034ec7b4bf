/// VSEPR fingerprints on one thread: their rate from a molecule file, against reading it and
/// against the direct enumeration of all simple paths; and comparisons, against a loop that only
/// adds up both lists. Every fingerprint of the first molecules is compared with the enumeration.
///
///   vsepr_bench MOLFILE [rounds] [molecules to enumerate]

#include <algorithm>
#include <cstdio>
#include <vector>

#include "benchmarks/bench.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/moldatabase.h"
#include "tests/vsepr_reference.h"

using namespace bench;

namespace {

constexpr std::size_t numTimed = 1000;     // molecules of the steps that are timed alone
constexpr double leastPerSecond = 8000.0;  // from a file of drug-like molecules

ZQVseprFingerprint::PathCounts Enumerate(const ZQMolBase& mol) {
  VseprReference reference(mol, {});
  for (auto atom = mol.GetAtoms(ZQIsHeavy()); atom; ++atom) reference.WalkFrom(*atom);
  return reference.GetPathCounts();
}

// The lists as a comparison reads them, without their order.
double AddUp(const ZQVseprFingerprint::PathCounts& a, const ZQVseprFingerprint::PathCounts& b) {
  double sum = 0;
  for (const auto& [key, weight] : a) sum += weight;
  for (const auto& [key, weight] : b) sum += weight;
  return sum;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: vsepr_bench MOLFILE [rounds] [molecules to enumerate]\n");
    return 2;
  }
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 5));
  const std::size_t numEnumerated = Argument(argc, argv, 3, numTimed);
  ZQMolDatabase file;
  Check(file.Open(argv[1]), "molecule file");
  std::vector<ZQMol> mols;
  std::vector<ZQVseprFingerprint> fps;
  std::vector<ZQVseprFingerprint::PathCounts> lists;
  std::size_t enumerated = 0;
  ZQMol mol;
  for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) {
    if (mols.size() == numTimed && enumerated == numEnumerated) break;
    if (!file.GetMolecule(mol, i)) continue;
    const ZQVseprFingerprint unprepared(mol, {});
    ZQPrepareForVsepr(mol);
    const ZQVseprFingerprint fp(mol, {});
    Check(fp.GetPathCounts() == unprepared.GetPathCounts(),
          "fingerprint of an unprepared molecule");
    if (enumerated < numEnumerated) {
      Check(fp.GetPathCounts() == Enumerate(mol), "fingerprint");
      ++enumerated;
    }
    if (mols.size() == numTimed) continue;
    mols.push_back(mol);
    fps.push_back(fp);
    lists.push_back(fp.GetPathCounts());
  }
  std::printf("%zu fingerprints equal the direct enumeration\n", enumerated);
  Check(!mols.empty(), "molecules");

  Race race;
  const auto forEachRecord = [&](auto visit) {
    for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) {
      if (file.GetMolecule(mol, i)) visit();
    }
  };
  race.Add("reading", file.GetMaxMolIdx(), [&] { forEachRecord([] {}); });
  race.Add("from the file", file.GetMaxMolIdx(), [&] {
    forEachRecord([&] {
      ZQPrepareForVsepr(mol);
      const ZQVseprFingerprint fp(mol, {});
    });
  });
  race.Add("paths", static_cast<double>(mols.size()), [&] {
    for (const ZQMol& each : mols) const ZQVseprFingerprint fp(each, {});
  });
  race.Add("enumerated", static_cast<double>(mols.size()), [&] {
    for (const ZQMol& each : mols) Enumerate(each);
  });
  const std::size_t numQueries = std::min<std::size_t>(fps.size(), 100);
  double sink = 0;
  const auto forEachPair = [&](auto visit) {
    for (std::size_t i = 0; i < numQueries; ++i) {
      for (std::size_t j = 0; j < fps.size(); ++j) sink += visit(i, j);
    }
  };
  const auto numPairs = static_cast<double>(numQueries * fps.size());
  race.Add("comparisons", numPairs, [&] {
    forEachPair([&](std::size_t i, std::size_t j) { return fps[i].GetTanimoto(fps[j]); });
  });
  race.Add("adding up", numPairs, [&] {
    forEachPair([&](std::size_t i, std::size_t j) { return AddUp(lists[i], lists[j]); });
  });
  race.Run(rounds);

  const double rate = race.Rate("from the file");
  std::printf("  %-14s %8.0f molecules a second (at least %.0f)%s, %.2f of reading\n",
              "from the file", rate, leastPerSecond, rate < leastPerSecond ? "  <-- below" : "",
              rate / race.Rate("reading"));
  std::printf("  %-14s %8.1f us a molecule, %.1f times as fast as enumerated\n", "paths",
              1e6 / race.Rate("paths"), race.Rate("paths") / race.Rate("enumerated"));
  std::printf("  %-14s %8.3f us a pair, %.2f of adding up%s\n", "comparisons",
              1e6 / race.Rate("comparisons"), race.Rate("comparisons") / race.Rate("adding up"),
              sink == 0 ? " (nothing in common)" : "");
}
