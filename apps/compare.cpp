#include <algorithm>
#include <cmath>
#include <cstdio>
#include <string>
#include <utility>

#include "apps/molecules.h"
#include "apps/options.h"
#include "apps/output.h"
#include "apps/stored.h"
#include "korvex/measuresim.h"
#include "korvex/vsepr_fingerprint.h"

namespace KorvexProgram {

namespace {

constexpr const char* vsepr = "VSEPR";  // the kind without a type
constexpr const char* arguments[] = {"MOL1", "MOL2"};

void Configure(ZQInterface& interface) {
  AddArgument(interface, arguments[0],
              "A SMILES, or a file of molecules or stored fingerprints (.zqb), whose first counts");
  AddArgument(interface, arguments[1], "The same");
  AddTypeOptions(interface, Kinds::All, {vsepr});
  AddVseprOptions(interface);
  AddTverskyCoeffs(interface);
  AddMoleculeFileOptions(interface);
}

// The first molecule of MOL1 or MOL2; false after a message.
bool ReadFirst(ZQMol& mol, const std::string& argument, const ZQInterface& interface) {
  ZQMolDatabase molecules;
  return OpenMoleculesOrSmiles(molecules, argument, interface) && molecules.GetMolecule(mol, 0);
}

int RunVsepr(const ZQInterface& interface) {
  if (IsAnyTypeParameterSet(interface, std::string("for fingerprints of kind ") + vsepr)) {
    return BadUsage;
  }
  const ZQVseprOptions options = GetVseprOptions(interface);
  ZQVseprFingerprint fps[2];
  for (int i = 0; i < 2; ++i) {
    const auto argument = interface.Get<std::string>(arguments[i]);
    ZQMol mol;
    if (!ReadFirst(mol, argument, interface) || !CheckAtoms(mol, argument) ||
        !MakeFingerPrint(fps[i], mol, options)) {
      return BadInput;
    }
  }
  const auto& [a, b] = fps;
  const double tversky =
      ZQGetTversky(a, b, interface.Get<float>("-alpha"), interface.Get<float>("-beta"));
  std::printf("Tanimoto\t%.6f\n", ZQGetTanimoto(a, b));
  // 0/0 has a sign on some processors.
  std::printf("Tversky\t%s\n", std::isnan(tversky) ? "nan" : Decimals(tversky, 6).c_str());
  return Done;
}

// Reads MOL1 and MOL2 as far as they are stored fingerprints, and returns their type, or null after
// a message.
const ZQFPTypeBase* ReadStoredFirst(ZQFingerPrint (&fps)[2], const ZQInterface& interface) {
  const ZQFPTypeBase* type = nullptr;
  for (int i = 0; i < 2; ++i) {
    const auto argument = interface.Get<std::string>(arguments[i]);
    if (!IsStoredName(argument)) continue;
    StoredReader reader;
    StoredFingerPrint stored;
    if (!reader.Open(argument)) return nullptr;
    if (!reader.Read(stored)) {
      ZQThrow.Error("%s holds no fingerprints", argument.c_str());
      return nullptr;
    }
    fps[i] = std::move(stored.fp);
    if (!CheckQueryType(type, fps[i].GetFPTypeBase(), argument)) return nullptr;
    type = fps[i].GetFPTypeBase();
    const bool needsMaking = !IsStoredName(interface.Get<std::string>(arguments[1 - i]));
    if (needsMaking && !CheckMaking(type, argument)) return nullptr;
  }
  return type;
}

int Run(const ZQInterface& interface) {
  if (interface.Get<std::string>("-fptype") == vsepr) return RunVsepr(interface);
  if (IsAnyVseprOptionSet(interface, std::string("without -fptype ") + vsepr)) return BadUsage;
  const bool isStored = std::ranges::any_of(
      arguments, [&](const char* name) { return IsStoredName(interface.Get<std::string>(name)); });
  ZQFingerPrint fps[2];
  const ZQFPTypeBase* type = nullptr;
  if (isStored) {
    if (IsAnyTypeOptionSet(interface, storedHaveType)) {
      return BadUsage;
    }
    type = ReadStoredFirst(fps, interface);
    if (!type) return BadInput;
  } else {
    type = GetTypeOption(interface, Kinds::All);
    if (!type) return BadUsage;
  }
  for (int i = 0; i < 2; ++i) {
    if (fps[i]) continue;
    const auto argument = interface.Get<std::string>(arguments[i]);
    ZQMol mol;
    if (!ReadFirst(mol, argument, interface) || !MakeFingerPrint(fps[i], mol, type, argument)) {
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
