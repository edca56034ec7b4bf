#include <cstdio>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/stored.h"
#include "contract/bostrel/dots.h"
#include "contract/bostrel/strings.h"
#include "korvex/fpfast.h"
#include "korvex/fpfast_create.h"

namespace KorvexProgram {

namespace {

constexpr const char* outputName = "OUT.fpbin|OUT.zqb";

void Configure(ZQInterface& interface) {
  AddMoleculeFile(interface);
  AddArgument(interface, outputName,
              "The database to write, or stored fingerprints; an existing file is replaced at the "
              "end");
  AddThreads(interface);
  AddTypeOptions(interface, Kinds::OfFiles);
  AddMoleculeFileOptions(interface);
}

// Whether the file names its molecule file: a header has no room for a very long name, and a name
// of several lines is read as something else.
bool IsReadable(const std::string& filename, const std::string& moleculeFile) {
  const ZQFastFPDatabaseParams header(filename);
  if (header.IsConsistent() && header.GetMoleculeFile() == moleculeFile) return true;
  ZQThrow.Error("the name '%s' is too long for a database, or has a line feed",
                moleculeFile.c_str());
  return false;
}

int Run(const ZQInterface& interface) {
  const auto input = interface.Get<std::string>("MOLFILE");
  const auto output = interface.Get<std::string>(outputName);
  const bool isStored = IsStoredName(output);
  const ZQFPTypeBase* type =
      GetTypeOption(interface, isStored ? Kinds::OfFiles : Kinds::OfDatabases);
  if (!type) return BadUsage;
  if (!isStored && ZQFileExtension(output) != "fpbin") {
    ZQThrow.Error(
        "'%s': the name of a database ends in .fpbin, that of stored fingerprints in .zqb",
        output.c_str());
    return BadUsage;
  }
  if (!CheckReplaceable(output)) return BadInput;
  ZQMolDatabase molecules;
  if (!OpenMolecules(molecules, input, interface)) return BadInput;
  if (isStored) return WriteStored(output, molecules, type, GetThreads(interface));
  ZQCreateFastFPDatabaseOptions options(type);
  options.SetNumProcessors(GetThreads(interface));
  options.SetTracer(ZQDots(0, "molecules"));
  const PartialFile partial(output);
  ZQFPCreationCounts counts;
  if (!ZQCreateFastFPDatabaseFile(partial.GetName(), molecules, input, options, &counts)) {
    ZQThrow.Error("%s wasn't made from %s", output.c_str(), molecules.GetName().c_str());
    return BadInput;
  }
  if (counts.failed == counts.records) {
    ZQThrow.Error("%s holds no molecule that could be used", molecules.GetName().c_str());
    return BadInput;
  }
  if (!IsReadable(partial.GetName(), input) || !partial.Rename()) return BadInput;
  std::printf("%s: %lu records", output.c_str(), counts.records);
  if (counts.empty != 0) {
    std::printf(", %lu of them without a bit (unreadable, or nothing to make bits from)",
                counts.empty);
  }
  std::printf("\n");
  return Done;
}

}  // namespace

const Command createCommand{"create", "Makes a fingerprint database from a molecule file",
                            Configure, Run};

}  // namespace KorvexProgram
