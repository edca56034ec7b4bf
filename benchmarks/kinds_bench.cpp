/// How fast each kind of fingerprint is made from a file of molecules, on one thread and reading
/// included, how the naming of circular environments goes by each set of instructions that this
/// processor has, and how the time grows with the size of a molecule.
///
///   kinds_bench MOLFILE FILE_OF_ALL_SIZES [rounds]

#include <cstdio>
#include <string>
#include <vector>

#include "benchmarks/bench.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/moldatabase.h"
#include "korvex/fingerprint_params.h"
#include "korvex/processor_local.h"

using namespace bench;

namespace {

struct Kind {
  const char* name;
  const char* type;
  double target;  // molecules a second
};

constexpr Kind kinds[] = {
    {"path 0-5", "Path,ver=2.0.0,size=4096,bonds=0-5,atype=DefaultPathAtom,btype=DefaultPathBond",
     25000},
    {"circular 0-2",
     "Circular,ver=2.0.0,size=4096,radius=0-2,atype=DefaultCircularAtom,btype=DefaultCircularBond",
     25000},
    {"circular 0-5",
     "Circular,ver=2.0.0,size=4096,radius=0-5,atype=DefaultCircularAtom,btype=DefaultCircularBond",
     12000},
    {"tree 0-4", "Tree,ver=2.0.0,size=4096,bonds=0-4,atype=DefaultTreeAtom,btype=DefaultTreeBond",
     10000},
    {"MACCS-166", "MACCS166,ver=2.2.0", 8000},
    {"Lingo", "Lingo,ver=2.0.0", 0},
    {"text of paths 0-5", "UHPath,ver=2.0.0,bonds=0-5,atype=DefaultPathAtom,btype=DefaultPathBond",
     0},
    {"text of balls 0-5",
     "UHCircular,ver=2.0.0,radius=0-5,atype=DefaultCircularAtom,btype=DefaultCircularBond", 0},
    {"text of trees 0-4", "UHTree,ver=2.0.0,bonds=0-4,atype=DefaultTreeAtom,btype=DefaultTreeBond",
     0}};

const ZQFPTypeBase* MakeType(const Kind& kind) {
  const ZQFPTypeBase* type = ZQGetFPType(std::string(kind.type));
  Check(type != nullptr, kind.type);
  return type;
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

void PrintRates(const ZQMolDatabase& file, unsigned int rounds) {
  Race race;
  ZQMol mol;
  ZQFingerPrint fp;
  for (const Kind& kind : kinds) {
    race.Add(kind.name, file.GetMaxMolIdx(), [&, type = MakeType(kind)] {
      for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) {
        if (file.GetMolecule(mol, i)) ZQMakeFP(fp, mol, type);
      }
    });
  }
  const Kind& environments = kinds[2];
  for (const std::string& processor : ZQGetProcessorNames()) {
    race.Add(processor, file.GetMaxMolIdx(), [&, processor, type = MakeType(environments)] {
      ZQForceProcessor(processor.c_str());
      for (unsigned int i = 0; i < file.GetMaxMolIdx(); ++i) {
        if (file.GetMolecule(mol, i)) ZQMakeFP(fp, mol, type);
      }
      ZQForceProcessor(nullptr);
    });
  }
  race.Run(rounds);
  for (const Kind& kind : kinds) {
    std::printf("  %-20s %8.0f molecules a second", kind.name, race.Rate(kind.name));
    if (kind.target != 0) {
      std::printf(" (at least %.0f)%s", kind.target,
                  race.Rate(kind.name) < kind.target ? "  <-- below" : "");
    }
    std::printf("\n");
  }
  for (const std::string& processor : ZQGetProcessorNames()) {
    std::printf("  %s, %-20s %8.0f molecules a second\n", environments.name, processor.c_str(),
                race.Rate(processor));
  }
}

void PrintGrowth(const ZQMolDatabase& file, unsigned int rounds) {
  const unsigned int sizes[] = {20, 40, 80};
  Race race;
  ZQFingerPrint fp;
  const auto name = [](const Kind& kind, unsigned int size) {
    return kind.name + std::to_string(size);
  };
  for (const unsigned int size : sizes) {
    const std::vector<ZQMol> molecules = MoleculesOf(file, size, 300);
    Check(!molecules.empty(), "no molecules of this size");
    for (const Kind& kind : kinds) {
      race.Add(name(kind, size), static_cast<double>(molecules.size()),
               [&fp, molecules, type = MakeType(kind)] {
                 for (const ZQMol& mol : molecules) ZQMakeFP(fp, mol, type);
               });
    }
  }
  race.Run(rounds);
  std::printf("us a molecule of 20, 40 and 80 heavy atoms, and the growth with each doubling\n");
  for (const Kind& kind : kinds) {
    double before = 0;
    std::printf("  %-20s", kind.name);
    for (const unsigned int size : sizes) {
      const double micros = 1e6 / race.Rate(name(kind, size));
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
  PrintRates(rates, rounds);
  PrintGrowth(sizes, 10 * rounds);
}
