#include <cstdio>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
#include "korvex/fpkinds.h"
#include "korvex/measuresim.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddArgument(interface, "MOL1", "A SMILES, or a molecule file whose first record counts");
  AddArgument(interface, "MOL2", "The same");
  AddTypeOptions(interface, Kinds::All);
  AddTverskyCoeffs(interface);
}

int Run(const ZQInterface& interface) {
  const ZQFPTypeBase* type = GetTypeOption(interface, Kinds::All);
  if (!type) return BadUsage;
  ZQFingerPrint fps[2];
  for (int i = 0; i < 2; ++i) {
    const auto argument = interface.Get<std::string>(i == 0 ? "MOL1" : "MOL2");
    MoleculeArgument molecules;
    ZQMol mol;
    if (!molecules.Open(argument) || !molecules.GetMolecule(mol, 0) ||
        !MakeFingerPrint(fps[i], mol, type, argument)) {
      return BadInput;
    }
  }
  const auto& [a, b] = fps;
  std::printf("Tanimoto\t%.6f\n", ZQTanimoto(a, b));
  if (ZQFindFPKind(type)->IsUnhashed()) return Done;  // the other five count bits
  std::printf("Cosine\t%.6f\n", ZQCosine(a, b));
  std::printf("Dice\t%.6f\n", ZQDice(a, b));
  std::printf("Euclid\t%.6f\n", ZQEuclid(a, b));
  std::printf("Tversky\t%.6f\n",
              ZQTversky(a, b, interface.Get<float>("-alpha"), interface.Get<float>("-beta")));
  std::printf("Manhattan\t%.6f\n", ZQManhattan(a, b));
  return Done;
}

}  // namespace

const Command compareCommand{"compare", "Prints the similarity measures of two molecules",
                             Configure, Run};

}  // namespace KorvexProgram
