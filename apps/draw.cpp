#include "korvex/draw.h"

#include <limits>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddArgument(interface, "MOLFILE", "Molecules, or one molecule as a SMILES");
  interface.AddParameter(
      ZQParameter("-svg", "", ZQParamType::String, "The file to write; - is standard output")
          .SetDefault(std::string("-")));
  interface.AddParameter(
      ZQParameter("-record", "", ZQParamType::Int, "Number of the molecule in its file, from 1")
          .SetLegalRange(1, std::numeric_limits<int>::max())
          .SetDefault(1));
  constexpr int mostPixels = 100000;
  interface.AddParameter(
      ZQParameter("-width", "", ZQParamType::Int, "Width in pixels; 0 for that of the molecule")
          .SetLegalRange(0, mostPixels)
          .SetDefault(0));
  interface.AddParameter(
      ZQParameter("-height", "", ZQParamType::Int, "Height in pixels; 0 for that of the molecule")
          .SetLegalRange(0, mostPixels)
          .SetDefault(0));
  AddMoleculeFileOptions(interface);
}

int Run(const ZQInterface& interface) {
  const auto record = static_cast<unsigned int>(interface.Get<int>("-record"));
  ZQMolDatabase molecules;
  ZQMol mol;
  if (!OpenMoleculesOrSmiles(molecules, interface.Get<std::string>("MOLFILE"), interface)) {
    return BadInput;
  }
  const unsigned int count = molecules.GetMaxMolIdx();
  const std::string name = molecules.GetName();
  if (record > count) {
    ZQThrow.Error("there is no record %u in %s, which has %u", record, name.c_str(), count);
    return BadInput;
  }
  if (!molecules.GetMolecule(mol, record - 1)) return BadInput;
  if (count > 1 && !interface.IsSet("-record")) {
    ZQThrow.Info("%s has %u records; this is the first", name.c_str(), count);
  }
  ZQLayout layout;
  if (!ZQMakeLayout(layout, mol)) return BadInput;
  ZQDrawStyle style;
  style.width = static_cast<unsigned int>(interface.Get<int>("-width"));
  style.height = static_cast<unsigned int>(interface.Get<int>("-height"));
  style.title = mol.GetTitle();
  const std::string svg = ZQDrawSVG(mol, layout, style);
  return WriteFile(interface.Get<std::string>("-svg"), svg) ? Done : BadInput;
}

}  // namespace

const Command drawCommand{"draw", "Draws a molecule as SVG", Configure, Run};

}  // namespace KorvexProgram
