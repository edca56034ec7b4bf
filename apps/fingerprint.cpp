#include <cstdio>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/stored.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddMoleculeFile(interface);
  interface.AddParameter({"-zqb", "", ZQParamType::String,
                          "Writes the fingerprints with their titles to this file (.zqb) instead"});
  AddTypeOptions(interface, Kinds::All);
}

int Run(const ZQInterface& interface) {
  const ZQFPTypeBase* type = GetTypeOption(interface, Kinds::All);
  if (!type) return BadUsage;
  const auto filename = interface.Get<std::string>("MOLFILE");
  if (interface.IsSet("-zqb")) {
    const auto output = interface.Get<std::string>("-zqb");
    if (!IsStoredName(output)) {
      ZQThrow.Error("'%s': the name of stored fingerprints ends in .zqb", output.c_str());
      return BadUsage;
    }
    return CheckReplaceable(output) ? WriteStored(output, filename, type, 1) : BadInput;
  }
  ZQMolDatabase molecules;
  if (!OpenMolecules(molecules, filename)) return BadInput;
  ZQMol mol;
  ZQFingerPrint fp;
  std::string content;
  unsigned int made = 0;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    content.clear();
    if (molecules.GetMolecule(mol, i) &&
        MakeFingerPrint(fp, mol, type, "record " + std::to_string(i + 1) + " of " + filename)) {
      content = FingerPrintField(fp);
      ++made;
    }
    std::printf("%s\t%s\n", TsvField(molecules.GetTitle(i)).c_str(), content.c_str());
  }
  return made != 0 ? Done : BadInput;
}

}  // namespace

const Command fingerprintCommand{"fingerprint", "Prints the fingerprint of each molecule of a file",
                                 Configure, Run};

}  // namespace KorvexProgram
