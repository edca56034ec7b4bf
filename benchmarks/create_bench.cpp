/// The rate of making a database from a molecule file on one thread and on two, and the time of
/// each step for a molecule on one. The files of one, two and four threads must be the same.
///
///   create_bench MOLFILE [rounds]

#include <sstream>

#include "benchmarks/bench.h"
#include "korvex/korvex.h"

using namespace bench;

namespace {

void Create(const std::string& database, const std::string& molecules, unsigned int threads) {
  ZQCreateFastFPDatabaseOptions options(ZQGetFPType(ZQFPType::Path));
  options.SetNumProcessors(threads);
  Check(ZQCreateFastFPDatabaseFile(database, molecules, options), "database made");
}

std::string Content(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  std::ostringstream text;
  text << file.rdbuf();
  return text.str();
}

/// The first `steps` steps of making a fingerprint.
void RunSteps(const ZQMolDatabase& molecules, int steps) {
  ZQMol mol;
  ZQFingerPrint fp;
  std::vector<unsigned int> atomInvariants;
  std::vector<unsigned int> bondInvariants;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    if (!molecules.GetMolecule(mol, i) || steps == 1) continue;
    if (steps == 6) {
      ZQMakePathFP(fp, mol);
      continue;
    }
    ZQGraphMol copy(mol);
    if (steps >= 3) ZQPrepareForFingerprinting(copy, ZQFPType::Path);
    if (steps >= 4 && mol.NumAtoms() > 20) ZQPerceiveSymmetry(copy, true, false);
    if (steps >= 5) {
      ZQGetFingerprintAtomTypes(atomInvariants, bondInvariants, copy, ZQFPAtomType::DefaultPathAtom,
                                ZQFPBondType::DefaultPathBond);
    }
  }
}

void PrintSteps(const ZQMolDatabase& molecules, unsigned int rounds) {
  const std::vector<std::string> names{"read",     "copy",       "hydrogens, rings, aromaticity",
                                       "symmetry", "invariants", "paths and bits"};
  Race race;
  for (int steps = 1; steps <= 6; ++steps) {
    race.Add(names[static_cast<std::size_t>(steps - 1)], molecules.GetMaxMolIdx(),
             [&molecules, steps] { RunSteps(molecules, steps); });
  }
  race.Run(rounds);
  double before = 0;
  for (const std::string& name : names) {
    const double micros = 1e6 / race.Rate(name);
    std::printf("  %-34s %6.2f us a molecule\n", name.c_str(), micros - before);
    before = micros;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: create_bench MOLFILE [rounds]\n");
    return 2;
  }
  const std::string name = argv[1];
  const auto rounds = static_cast<unsigned int>(Argument(argc, argv, 2, 7));
  ZQMolDatabase molecules;
  Check(molecules.Open(name), "molecule file");
  const std::string folder =
      std::filesystem::temp_directory_path() / ("korvex_create_bench_" + std::to_string(getpid()));
  std::filesystem::create_directories(folder);
  const auto database = [&](unsigned int threads) {
    return folder + "/" + std::to_string(threads) + ".fpbin";
  };
  for (const unsigned int threads : {1U, 2U, 4U}) Create(database(threads), name, threads);
  const std::string content = Content(database(1));
  Check(content == Content(database(2)) && content == Content(database(4)),
        "files of 1, 2 and 4 threads are the same");

  Race race;
  for (const unsigned int threads : {1U, 2U}) {
    race.Add(threads == 1 ? "one thread" : "two threads", molecules.GetMaxMolIdx(),
             [&, threads] { Create(database(threads), name, threads); });
  }
  race.Run(rounds);
  std::printf("%u molecules: %.0f a second on one thread (at least 25000)\n",
              molecules.GetMaxMolIdx(), race.Rate("one thread"));
  race.Report("two threads", "one thread", 1.85);
  PrintSteps(molecules, rounds);
  std::filesystem::remove_all(folder);
}
