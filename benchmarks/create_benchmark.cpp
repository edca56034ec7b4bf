// How fast a molecule file becomes a database: `create_benchmark MOLFILE [ROUNDS]`.
//
// Runs with one and with two threads take turns, so that both meet the same machine; printed are
// the medians and the ratio of the two, then where the time of one molecule goes on one thread.
// Before anything is timed, the files made by one, two and four threads are compared.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <functional>
#include <iterator>
#include <string>
#include <vector>

#include "korvex/korvex.h"

using namespace ZQKorvex;  // NOLINT(google-build-using-namespace)

namespace {

double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

double Median(std::vector<double> values) {
  const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
  std::nth_element(values.begin(), middle, values.end());
  return *middle;
}

void Create(const std::string& database, const std::string& molecules, unsigned int threads) {
  ZQCreateFastFPDatabaseOptions options(ZQGetFPType(ZQFPType::Path));
  options.SetNumProcessors(threads);
  if (!ZQCreateFastFPDatabaseFile(database, molecules, options)) std::exit(1);
}

std::string Content(const std::string& name) {
  std::ifstream file(name, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

// The steps of one fingerprint, each timed by what it adds to the ones before.
void PrintSteps(const std::string& name) {
  ZQMolDatabase molecules;
  if (!molecules.Open(name)) std::exit(1);
  ZQMol mol;
  ZQFingerPrint fp;
  std::vector<unsigned int> atomInvariants;
  std::vector<unsigned int> bondInvariants;
  const auto run = [&](int steps) {
    for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
      if (!molecules.GetMolecule(mol, i) || steps == 0) continue;
      if (steps == 5) {
        ZQMakePathFP(fp, mol);
        continue;
      }
      ZQGraphMol copy(mol);
      if (steps >= 2) ZQPrepareForFingerprinting(copy, ZQFPType::Path);
      if (steps >= 3 && mol.NumAtoms() > 20) ZQPerceiveSymmetry(copy, true, false);
      if (steps >= 4) {
        ZQGetFingerprintAtomTypes(atomInvariants, bondInvariants, copy,
                                  ZQFPAtomType::DefaultPathAtom, ZQFPBondType::DefaultPathBond);
      }
    }
  };
  const char* names[] = {"read the SMILES", "copy",       "rings and aromaticity",
                         "symmetry",        "invariants", "walks and bits"};
  double before = 0;
  for (int steps = 0; steps < 6; ++steps) {
    std::vector<double> times;
    for (int round = 0; round < 5; ++round) times.push_back(Seconds([&] { run(steps); }));
    const double micros = Median(times) / molecules.GetMaxMolIdx() * 1e6;
    std::printf("  %-22s %6.2f us a molecule\n", names[steps], micros - before);
    before = micros;
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: create_benchmark MOLFILE [ROUNDS]\n");
    return 2;
  }
  const std::string molecules = argv[1];
  const int rounds = argc > 2 ? std::atoi(argv[2]) : 7;
  const std::string folder = std::filesystem::temp_directory_path() / "korvex_create_benchmark";
  std::filesystem::create_directories(folder);
  const auto database = [&](unsigned int threads) {
    return folder + "/" + std::to_string(threads) + ".fpbin";
  };
  for (const unsigned int threads : {1U, 2U, 4U}) Create(database(threads), molecules, threads);
  const std::string content = Content(database(1));
  if (content != Content(database(2)) || content != Content(database(4))) {
    std::printf("WRONG: the files of 1, 2 and 4 threads differ\n");
    return 1;
  }
  const auto records = static_cast<double>(ZQFastFPDatabaseParams(database(1)).NumFingerPrints());

  std::vector<double> one;
  std::vector<double> two;
  for (int round = 0; round < rounds; ++round) {
    one.push_back(Seconds([&] { Create(database(1), molecules, 1); }));
    two.push_back(Seconds([&] { Create(database(2), molecules, 2); }));
  }
  std::printf("%.0f molecules, median of %d rounds\n", records, rounds);
  std::printf("  1 thread  %8.0f molecules/s  (target 25,000)\n", records / Median(one));
  std::printf("  2 threads %8.0f molecules/s, %.2f times one  (target 1.85)\n",
              records / Median(two), Median(one) / Median(two));
  PrintSteps(molecules);
  std::filesystem::remove_all(folder);
}
