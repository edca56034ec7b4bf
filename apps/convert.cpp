#include <cstdio>
#include <ctime>
#include <iostream>
#include <string>

#include "apps/database.h"
#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "contract/bostrel/strings.h"
#include "korvex/fps_convert.h"
#include "korvex/version.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddArgument(interface, "IN",
              "A database (.fpbin), or an FPS file (.fps, .fps.gz; - is standard input)");
  AddArgument(interface, outputArgument,
              "The other of the two (- is an FPS file on standard output); an existing file is "
              "replaced when it is complete");
  interface.AddParameter({"-molecules", "-mol", ZQParamType::String,
                          "Molecule file of the database, for ids, in place of the one that the "
                          "database names"});
  AddMoleculeFileOptions(interface, true);
}

constexpr const char* standardOutput = "-";

bool IsDatabaseName(const std::string& filename) { return ZQFileExtension(filename) == "fpbin"; }

// Date and time in UTC, such as 2026-11-23T21:30:00.
std::string Now() {
  const std::time_t now = std::time(nullptr);
  std::tm utc{};
  gmtime_r(&now, &utc);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc)};
}

void PrintCount(const std::string& output, std::uint64_t records) {
  std::printf("%s: %lu records", output.c_str(), records);
}

int ToFPS(const std::string& input, const std::string& output, const ZQInterface& interface) {
  const auto database = OpenDatabase(input);
  if (!database) return BadInput;
  HitMolecules titles;
  if (!titles.Open(interface, input, *database)) return BadInput;
  ZQFPSHeader header;
  header.numBits = static_cast<unsigned int>(64 * database->GetHeader().NumWords());
  header.type = database->GetFPTypeBase()->GetFPTypeString();
  header.software = "korvex/" + ZQKorvexGetNonDebugRelease();
  header.sources = {database->GetHeader().GetMoleculeFile()};
  header.date = Now();

  ZQFPSWriter writer;
  const auto writeAll = [&] {
    ZQFingerPrint fp;
    bool isGood = true;
    for (std::uint64_t i = 0; i < database->NumFingerPrints() && isGood; ++i) {
      if (!database->GetFingerPrint(fp, i)) return false;
      const std::string title = titles.GetTitle(i);
      isGood = writer.Write(fp.Words(), title.empty() ? std::to_string(i) : title);
    }
    return writer.Close();
  };
  if (output == standardOutput) {
    return writer.Open(std::cout, "standard output", header) && writeAll() ? Done : BadInput;
  }
  const PartialFile partial(output);
  if (!writer.Open(partial.GetName(), header) || !writeAll() || !partial.Rename()) return BadInput;
  PrintCount(output, database->NumFingerPrints());
  std::printf("\n");
  return Done;
}

int ToDatabase(const std::string& input, const std::string& output) {
  const PartialFile partial(output);
  ZQFPSConversionCounts counts;
  const bool isDone =
      input == standardInput
          ? ZQConvertFPSToFastFPDatabase(partial.GetName(), std::cin, inputName, &counts)
          : ZQConvertFPSToFastFPDatabase(partial.GetName(), input, &counts);
  if (!isDone) return BadInput;
  const ZQFastFPDatabaseParams header(partial.GetName());
  if (!header.IsConsistent()) {
    ZQThrow.Error("the #source of %s is too long for a database", input.c_str());
    return BadInput;
  }
  if (!partial.Rename()) return BadInput;
  PrintCount(output, counts.records);
  if (counts.skipped != 0) std::printf(", %lu lines left out", counts.skipped);
  std::printf("\n");
  if (counts.sources > 1) {
    ZQThrow.Warning("%s has %lu sources; the database names the first", input.c_str(),
                    counts.sources);
  }
  return Done;
}

int Run(const ZQInterface& interface) {
  const auto input = interface.Get<std::string>("IN");
  const auto output = interface.Get<std::string>(outputArgument);
  const bool toFPS = IsDatabaseName(input) && (output == standardOutput || ZQIsFPSName(output));
  const bool isFPS =
      IsFPS(input, interface) || (input == standardInput && !interface.IsSet("-input-format"));
  const bool toDatabase = IsDatabaseName(output) && isFPS;
  if (!toFPS && !toDatabase) {
    ZQThrow.Error("'%s' and '%s': one must end in .fpbin, the other in .fps or .fps.gz, or be -",
                  input.c_str(), output.c_str());
    return BadUsage;
  }
  constexpr const char* ofMolecules[] = {"-molecules", "-smiles-column", "-title-column"};
  if (toDatabase && IsAnySet(interface, ofMolecules, "with an FPS file, which has ids")) {
    return BadUsage;
  }
  if (!CheckReplaceable(output)) return BadInput;
  if (toDatabase) return ToDatabase(input, output);
  return ToFPS(input, output, interface);
}

}  // namespace

const Command convertCommand{"convert", "Turns a database into an FPS file, or back", Configure,
                             Run};

}  // namespace KorvexProgram
