/// The rate of making each kind of fingerprint from a molecule file, on one thread and including
/// reading, that of identifying circular environments with each instruction set of this processor,
/// and the growth of the time with the size of a molecule.
///
///   kinds_bench MOLFILE FILE_OF_ALL_SIZES [rounds]

#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fpkinds.h"
#include "korvex/processor_local.h"

using namespace bench;

namespace {

struct Case {
  std::string name;
  const ZQFPTypeBase* type;
  double target;  // molecules per second
};

// The default type of each kind, and small environments.
std::vector<Case> MakeCases() {
  const std::map<std::string, double> targets{{"Path 0-5", 25000},
                                              {"Circular 0-2", 25000},
                                              {"Circular 0-5", 12000},
                                              {"Tree 0-4", 10000},
                                              {"MACCS166", 8000}};
  std::vector<Case> cases;
  const auto add = [&](const ZQFPKind& kind, const ZQFPTypeValues& values) {
    std::string name = kind.name;
    if (kind.HasParams()) {
      name += " " + std::to_string(values.minDistance) + "-" + std::to_string(values.maxDistance);
    }
    const auto target = targets.find(name);
    cases.push_back(
        {name, ZQGetFPType(kind, values), target == targets.end() ? 0 : target->second});
    Check(cases.back().type != nullptr, name.c_str());
  };
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    if (kind.number == ZQFPType::Circular) {
      ZQFPTypeValues small = kind.defaults;
      small.maxDistance = 2;
      add(kind, small);
    }
    add(kind, kind.defaults);
  }
  return cases;
}

unsigned int NumHeavyAtoms(const ZQMolBase& mol) {
  unsigned int count = 0;
  for (auto atom = mol.GetAtoms(ZQIsHeavy()); atom; ++atom) ++count;
  return count;
}

// Up to `most` molecules of about this many heavy atoms.
std::vector<ZQMol> MoleculesOf(const ZQMolDatabase& file, unsigned int numAtoms, std::size_t most) {
  std::vector<ZQMol> molecules;
  ZQMol mol;
  for (unsigned int i = 0; i < file.GetMaxMolIdx() && molecules.size() < most; ++i) {
    if (!file.GetMolecule(mol, i)) continue;
    const unsigned int count = NumHeavyAtoms(mol);
    if (20 * count >= 19 * numAtoms && 20 * count <= 21 * numAtoms) molecules.push_back(mol);
  }
  return molecules;
}

void PrintRates(const std::vector<Case>& cases, const ZQMolDatabase& file, unsigned int rounds) {
  Race race;
  ZQMol mol;
  ZQFingerPrint fp;
  for (const Case& each : cases) {
    race.Add(each.name, file.GetMaxMolIdx(), [&, type = each.type] {
      for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) {
        if (file.GetMolecule(mol, i)) ZQMakeFP(fp, mol, type);
      }
    });
  }
  // The identifiers of environments with each row of the processor table.
  for (const std::string& processor : ZQGetProcessorNames()) {
    race.Add(processor, file.GetMaxMolIdx(),
             [&, processor, type = ZQGetFPType(ZQFPType::Circular)] {
               ZQForceProcessor(processor.c_str());
               for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) {
                 if (file.GetMolecule(mol, i)) ZQMakeFP(fp, mol, type);
               }
               ZQForceProcessor(nullptr);
             });
  }
  race.Run(rounds);
  for (const Case& each : cases) {
    std::printf("  %-20s %8.0f molecules a second", each.name.c_str(), race.Rate(each.name));
    if (each.target != 0) {
      std::printf(" (at least %.0f)%s", each.target,
                  race.Rate(each.name) < each.target ? "  <-- below" : "");
    }
    std::printf("\n");
  }
  for (const std::string& processor : ZQGetProcessorNames()) {
    std::printf("  circular 0-5, %-20s %8.0f molecules a second\n", processor.c_str(),
                race.Rate(processor));
  }
}

void PrintGrowth(const std::vector<Case>& cases, const ZQMolDatabase& file, unsigned int rounds) {
  const unsigned int sizes[] = {20, 40, 80};
  Race race;
  ZQFingerPrint fp;
  const auto name = [](const Case& each, unsigned int size) {
    return each.name + std::to_string(size);
  };
  for (const unsigned int size : sizes) {
    const std::vector<ZQMol> molecules = MoleculesOf(file, size, 300);
    Check(!molecules.empty(), "no molecules of this size");
    for (const Case& each : cases) {
      race.Add(name(each, size), static_cast<double>(molecules.size()),
               [&fp, molecules, type = each.type] {
                 for (const ZQMol& mol : molecules) ZQMakeFP(fp, mol, type);
               });
    }
  }
  race.Run(rounds);
  std::printf("us a molecule of 20, 40 and 80 heavy atoms, and the growth with each doubling\n");
  for (const Case& each : cases) {
    double before = 0;
    std::printf("  %-20s", each.name.c_str());
    for (const unsigned int size : sizes) {
      const double micros = 1e6 / race.Rate(name(each, size));
      std::printf(" %9.1f", micros);
      if (before != 0) std::printf(" (x %.2f)", micros / before);
      before = micros;
    }
    std::printf("\n");
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: kinds_bench MOLFILE FILE_OF_ALL_SIZES [rounds]\n");
    return 2;
  }
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 3, 5));
  ZQMolDatabase rates;
  ZQMolDatabase sizes;
  Check(rates.Open(argv[1]) && sizes.Open(argv[2]), "molecule files");
  const std::vector<Case> cases = MakeCases();
  PrintRates(cases, rates, rounds);
  PrintGrowth(cases, sizes, 10 * rounds);
}
