#include <cmath>
#include <cstdio>
#include <string>

#include "apps/database.h"
#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/ranker_fps.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpneighbors.h"

namespace KorvexProgram {

namespace {

constexpr const char* source = "DB.fpbin|FILE.fps";

// Runs `run` with the database or the FPS file, both of which have the queries of this file.
template <class RunWith>
int WithDatabase(const ZQInterface& interface, RunWith run) {
  const auto filename = interface.Get<std::string>(source);
  if (filename == standardInput || ZQIsFPSName(filename)) {
    constexpr const char* ofDatabases[] = {"-memtype"};
    if (IsAnySet(interface, ofDatabases, "with FPS files, which are searched in memory")) {
      return BadUsage;
    }
    const auto database = OpenFPS(filename);
    return database ? run(*database) : BadInput;
  }
  const auto database = OpenDatabase(filename, ZQGetFPDatabaseMemoryType(interface));
  return database ? run(*database) : BadInput;
}

void ConfigureHistogram(ZQInterface& interface) {
  AddArgument(interface, source, "The database, or an FPS file (- is one on standard input)");
  interface.AddParameter(
      ZQParameter("-bins", "", ZQParamType::Int, "Bins of equal width between 0 and 1")
          .SetLegalRange(1, 1000000)
          .SetDefault(20));
  ZQConfigureFPDatabaseOptions(interface, ZQFPDatabaseOptionsMask::SimFunc);
  AddTverskyCoeffs(interface);
  AddThreads(interface);
  ZQConfigureFPDatabaseMemoryType(interface, ZQFastFPDatabaseMemoryType::MemoryMapped);
}

template <class Database>
int PrintHistogram(const ZQInterface& interface, const Database& database) {
  ZQFPDatabaseOptions options;
  ZQSetupFPDatabaseOptions(options, interface);
  SetTverskyCoeffs(options, interface);
  options.SetNumProcessors(GetThreads(interface));
  options.SetTracer(ZQDots(0, "pairs"));
  const unsigned int numWarnings = NumWarnings();
  const ZQFPHistogram histogram =
      database.GetHistogram(options, static_cast<unsigned long>(interface.Get<int>("-bins")));
  if (NumWarnings() != numWarnings) return BadInput;  // too little memory, or a failing GPU
  const unsigned long pairs = histogram.NumSamples();
  std::printf("# pairs %lu\n", pairs);
  if (pairs != 0) std::printf("# mean %.6f\n# std %.6f\n", histogram.Mean(), histogram.Std());
  ZQIter<double> boundary = histogram.GetBinBoundaries();
  // Computed from the density, as `GetCounts` can't return a count above 2^32 - 1, which the pairs
  // of some 100,000 records reach.
  for (ZQIter<double> density = histogram.GetDensity(); density; ++density) {
    const double lower = *boundary;
    ++boundary;
    std::printf("%.6f\t%.6f\t%.0f\n", lower, *boundary,
                pairs == 0 ? 0.0 : std::round(*density * static_cast<double>(pairs)));
  }
  return Done;
}

int RunHistogram(const ZQInterface& interface) {
  return WithDatabase(interface,
                      [&](const auto& database) { return PrintHistogram(interface, database); });
}

void ConfigureNeighbors(ZQInterface& interface) {
  AddArgument(interface, source, "The database, or an FPS file (- is one on standard input)");
  ZQConfigureFPDatabaseOptions(interface, ZQFPDatabaseOptionsMask::Limit |
                                              ZQFPDatabaseOptionsMask::SimFunc |
                                              ZQFPDatabaseOptionsMask::Cutoff);
  AddTverskyCoeffs(interface);
  ZQConfigureFPDatabaseMemoryType(interface, ZQFastFPDatabaseMemoryType::MemoryMapped);
}

template <class Database>
int PrintNeighbors(const ZQInterface& interface, const Database& database) {
  ZQFPDatabaseOptions options;
  ZQSetupFPDatabaseOptions(options, interface);
  SetTverskyCoeffs(options, interface);
  options.SetTracer(ZQDots(0, "pairs"));
  const unsigned int numWarnings = NumWarnings();
  ZQVisitNeighbors(database, options, [](const ZQSimScorePair& pair) {
    std::printf("%lu\t%lu\t%.6f\n", pair.GetIdx1(), pair.GetIdx2(), pair.GetScore());
  });
  if (NumWarnings() != numWarnings) return BadInput;  // too little memory, or a failing GPU
  return Done;
}

int RunNeighbors(const ZQInterface& interface) {
  return WithDatabase(interface,
                      [&](const auto& database) { return PrintNeighbors(interface, database); });
}

}  // namespace

const Command histogramCommand{"histogram", "Prints how the scores of all pairs are distributed",
                               ConfigureHistogram, RunHistogram};
const Command neighborsCommand{"neighbors", "Prints the nearest other records of each record",
                               ConfigureNeighbors, RunNeighbors};

}  // namespace KorvexProgram
