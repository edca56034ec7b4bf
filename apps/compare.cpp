#include <cstdio>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
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
  const auto alpha = interface.Get<float>("-alpha");
  const auto beta = interface.Get<float>("-beta");
  for (unsigned int measure = 1; ZQSimMeasure::IsValid(measure); ++measure) {
    if (!IsComparedBy(type, measure)) continue;
    std::printf("%s\t%.6f\n", ZQGetSimilarityMeasureName(measure).c_str(),
                ZQGetSimilarity(measure, a, b, alpha, beta));
  }
  return Done;
}

}  // namespace

const Command compareCommand{"compare", "Prints the similarity measures of two molecules",
                             Configure, Run};

}  // namespace KorvexProgram
