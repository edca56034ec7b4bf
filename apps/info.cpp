#include <cstdio>
#include <string>

#include "apps/database.h"
#include "apps/options.h"
#include "apps/output.h"
#include "korvex/measuresim.h"
#include "korvex/version.h"

namespace KorvexProgram {

namespace {

void PrintFact(const char* name, const std::string& value) {
  std::printf("%s\t%s\n", name, TsvField(value).c_str());
}

void ConfigureInfo(ZQInterface& interface) { AddArgument(interface, "DB.fpbin", "The database"); }

int RunInfo(const ZQInterface& interface) {
  const auto filename = interface.Get<std::string>("DB.fpbin");
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

const Command infoCommand{"info", "Prints what the header of a database says", ConfigureInfo,
                          RunInfo};
const Command versionCommand{"version", "Prints which build of korvex this is", ConfigureVersion,
                             RunVersion};

}  // namespace KorvexProgram
