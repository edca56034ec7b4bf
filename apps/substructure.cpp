#include <cstdio>
#include <limits>
#include <string>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "contract/quarnel/perception.h"
#include "contract/quarnel/subsearch.h"

namespace KorvexProgram {

namespace {

void Configure(ZQInterface& interface) {
  AddArgument(interface, "SMARTS", "The pattern to look for");
  AddArgument(interface, "MOLFILE", "Molecules, or one molecule as a SMILES");
  interface.AddParameter(ZQParameter("-count", "", ZQParamType::Bool,
                                     "Prints the number of matches in place of their atoms")
                             .SetDefault(false));
  interface.AddParameter(
      ZQParameter("-max", "", ZQParamType::Int, "Matches of a molecule at most; 0 means all")
          .SetLegalRange(0, std::numeric_limits<int>::max())
          .SetDefault(0));
  AddMoleculeFileOptions(interface);
}

// "1,2,3 4,5,6": a word for each match, with the numbers of its atoms in the pattern's order.
std::string TellMatches(const ZQSubSearch& pattern, const ZQMolBase& mol, std::size_t limit) {
  std::string text;
  for (auto match = pattern.Match(mol, true); match && limit != 0; ++match, --limit) {
    const char* separator = text.empty() ? "" : " ";
    for (const auto& pair : match->GetAtomPairs()) {
      text += separator + std::to_string(pair.target->GetIdx() + 1);
      separator = ",";
    }
  }
  return text;
}

int Run(const ZQInterface& interface) {
  const ZQSubSearch pattern(interface.Get<std::string>("SMARTS"));
  if (!pattern.IsValid()) return BadUsage;
  ZQMolDatabase molecules;
  if (!OpenMoleculesOrSmiles(molecules, interface.Get<std::string>("MOLFILE"), interface)) {
    return BadInput;
  }
  const bool count = interface.Get<bool>("-count");
  const auto limit = static_cast<std::size_t>(interface.Get<int>("-max"));
  const std::size_t most = limit == 0 ? std::numeric_limits<std::size_t>::max() : limit;

  unsigned int searched = 0;
  for (unsigned int i = 0; i < molecules.GetMaxMolIdx(); ++i) {
    ZQMol mol;
    if (!molecules.GetMolecule(mol, i)) continue;
    ++searched;
    ZQFindRingAtomsAndBonds(mol);
    ZQAssignAromaticFlags(mol, 2, true, 0, false);
    const std::string matches =
        count ? std::to_string(pattern.CountMatches(ZQSubSearchTarget(mol), true, most))
              : TellMatches(pattern, mol, most);
    if (matches.empty() || matches == "0") continue;
    std::printf("%u\t%s\t%s\n", i + 1, TsvField(mol.GetTitle()).c_str(), matches.c_str());
  }
  return searched != 0 ? Done : BadInput;
}

}  // namespace

const Command substructureCommand{"substructure", "Finds a SMARTS pattern in molecules", Configure,
                                  Run};

}  // namespace KorvexProgram
