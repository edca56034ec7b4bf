#include <cstdio>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/stored.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddArgument(interface, "MOLFILE", "Molecules, or one molecule as a SMILES");
  interface.AddParameter({"-zqb", "", ZQParamType::String,
                          "Writes the fingerprints with their titles to this file (.zqb) instead"});
  AddTypeOptions(interface, Kinds::All);
  AddMoleculeFileOptions(interface);
}

bool OpenArgument(ZQMolDatabase& molecules, const ZQInterface& interface) {
  return OpenMoleculesOrSmiles(molecules, interface.Get<std::string>("MOLFILE"), interface);
}

int Run(const ZQInterface& interface) {
  const ZQFPTypeBase* type = GetTypeOption(interface, Kinds::All);
  if (!type) return BadUsage;
  ZQMolDatabase molecules;
  if (interface.IsSet("-zqb")) {
    const auto output = interface.Get<std::string>("-zqb");
    if (!IsStoredName(output)) {
      ZQThrow.Error("'%s': the name of stored fingerprints ends in .zqb", output.c_str());
      return BadUsage;
    }
    const bool canWrite = CheckReplaceable(output) && OpenArgument(molecules, interface);
    return canWrite ? WriteStored(output, molecules, type, 1) : BadInput;
  }
  if (!OpenArgument(molecules, interface)) return BadInput;
  ZQMol mol;
  ZQFingerPrint fp;
  std::string content;
  unsigned int made = 0;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    content.clear();
    if (molecules.GetMolecule(mol, i) && MakeFingerPrint(fp, mol, type, molecules.GetWhere(i))) {
      content = FingerPrintField(fp);
      ++made;
    }
    std::printf("%s\t%s\n", TsvField(molecules.GetTitle(i)).c_str(), content.c_str());
  }
  return made != 0 ? Done : BadInput;
}

}  // namespace

const Command fingerprintCommand{"fingerprint", "Prints the fingerprints of molecules", Configure,
                                 Run};

}  // namespace KorvexProgram
