#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>

#include "apps/database.h"
#include "apps/options.h"
#include "apps/output.h"
#include "korvex/fps.h"
#include "korvex/measuresim.h"
#include "korvex/version.h"

namespace KorvexProgram {

namespace {

void PrintFact(const char* name, const std::string& value) {
  std::printf("%s\t%s\n", name, TsvField(value).c_str());
}

constexpr const char* source = "DB.fpbin|FILE.fps";

void ConfigureInfo(ZQInterface& interface) {
  AddArgument(interface, source, "The database, or an FPS file");
}

// Reads the whole file: only its lines say how many fingerprints there are.
int PrintFPSFacts(const std::string& filename) {
  ZQFPSReader reader;
  if (!reader.Open(filename)) return BadInput;
  std::uint64_t records = 0;
  for (ZQFPSRecord record; reader.Read(record);) ++records;
  if (!reader.IsGood()) return BadInput;
  const ZQFPSHeader& header = reader.GetHeader();
  std::error_code error;
  PrintFact("file", filename);
  PrintFact("bytes", std::to_string(std::filesystem::file_size(filename, error)));
  PrintFact("type", header.type);
  PrintFact("bits", std::to_string(header.numBits));
  PrintFact("fingerprints", std::to_string(records));
  PrintFact("lines left out", std::to_string(reader.NumSkipped()));
  PrintFact("software", header.software);
  for (const std::string& name : header.sources) PrintFact("source", name);
  PrintFact("date", header.date);
  for (const auto& [key, value] : header.others) PrintFact(TsvField(key).c_str(), value);
  return Done;
}

int RunInfo(const ZQInterface& interface) {
  const auto filename = interface.Get<std::string>(source);
  if (ZQIsFPSName(filename)) return PrintFPSFacts(filename);
  const ZQFastFPDatabaseParams header(filename);
  if (!IsWhole(header, filename)) return BadInput;
  const unsigned int method = ZQGetPopCountMethod();
  PrintFact("file", filename);
  PrintFact("bytes", std::to_string(header.GetFileSize()));
  PrintFact("byte order", header.IsLittleEndian() ? "little-endian" : "not said");
  PrintFact("molecule file", header.GetMoleculeFile());
  PrintFact("type", header.GetFPTypeBase()->GetFPTypeString());
  PrintFact("bits", std::to_string(header.NumWords() * 64));
  PrintFact("words", std::to_string(header.NumWords()));
  PrintFact("fingerprints", std::to_string(header.NumFingerPrints()));
  PrintFact("popcount method",
            std::to_string(method) + (method == 2 ? " (POPCNT)" : " (portable)"));
  PrintFact("processor", ZQKorvexGetProcessor());
  PrintFact("GPU", ZQKorvexGetGPU());
  return Done;
}

void ConfigureVersion(ZQInterface& /*interface*/) {}

int RunVersion(const ZQInterface& /*interface*/) {
  const ZQLibraryVersion version = ZQKorvexVersion();
  PrintFact("toolkit", version.toolkit);
  PrintFact("library", version.library);
  PrintFact("release", version.release);
  PrintFact("build", std::to_string(ZQKorvexGetVersion()));
  PrintFact("architecture", ZQKorvexGetArch());
  PrintFact("platform", ZQKorvexGetPlatform());
  PrintFact("configuration", ZQKorvexGetConfigureArgs());
  PrintFact("GPU", ZQKorvexGetGPU());
  return Done;
}

}  // namespace

const Command infoCommand{"info", "Prints what the header of a database or of an FPS file says",
                          ConfigureInfo, RunInfo};
const Command versionCommand{"version", "Prints which build of korvex this is", ConfigureVersion,
                             RunVersion};

}  // namespace KorvexProgram
