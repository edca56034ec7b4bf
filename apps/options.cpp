#include "apps/options.h"

#include <algorithm>
#include <iterator>
#include <utility>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpfast.h"
#include "korvex/fpkinds.h"
#include "korvex/korvex_namespace.h"

namespace KorvexProgram {

void AddArgument(ZQInterface& interface, const char* name, const char* brief) {
  interface.AddParameter(ZQParameter(name, "", ZQParamType::String, brief).SetPositional());
}

void AddChoice(ZQInterface& interface, const char* name, const char* alias, const char* brief,
               const ZQNamespaceInterface& choices, const char* byDefault) {
  ZQParameter parameter(name, alias, ZQParamType::String, brief);
  parameter.SetLegalNames(choices).SetDefault(byDefault);
  AddDetails(&parameter, &choices);
  interface.AddParameter(std::move(parameter));
}

void AddThreads(ZQInterface& interface) {
  interface.AddParameter(ZQParameter("-threads", "-t", ZQParamType::Int,
                                     "Threads; 0 stands for all processors, and more than twice "
                                     "their number are never started")
                             .SetLegalRange(0, 65535)
                             .SetDefault(0));
}

unsigned int GetThreads(const ZQInterface& interface) {
  return static_cast<unsigned int>(interface.Get<int>("-threads"));
}

bool IsAnySet(const ZQInterface& interface, std::span<const char* const> names,
              const std::string& reason) {
  for (const char* name : names) {
    if (!interface.IsSet(name)) continue;
    ZQThrow.Error("option %s is of no use %s", name, reason.c_str());
    return true;
  }
  return false;
}

namespace {

bool IsTaken(const ZQFPKind& kind, Kinds kinds) {
  return kinds == Kinds::OfDatabases ? kind.isStorable : kinds == Kinds::All || !kind.IsUnhashed();
}

constexpr const char* optionNames[] = {"-fptype",      "-numbits",  "-mindistance",
                                       "-maxdistance", "-atomtype", "-bondtype"};
using Names = std::span<const char* const>;
constexpr Names parameterNames = Names(optionNames).subspan(1);

// The default of a kind for one of the parameters, in the form of the command line.
std::string TellDefault(const std::string& parameterName, const ZQFPTypeValues& defaults) {
  if (parameterName == "-numbits") return std::to_string(defaults.numbits);
  if (parameterName == "-mindistance") return std::to_string(defaults.minDistance);
  if (parameterName == "-maxdistance") return std::to_string(defaults.maxDistance);
  if (parameterName == "-atomtype") return ZQGetFPAtomType(defaults.atype);
  return ZQGetFPBondType(defaults.btype);
}

// "5 for Path, Circular; 4 for Tree", or the one value that all kinds share.
std::string TellDefaults(const std::string& parameterName, Kinds kinds) {
  std::vector<std::pair<std::string, std::string>> namesByValue;
  for (const ZQFPKind& kind : ZQGetFPKinds()) {
    const bool has = parameterName == "-numbits" ? kind.IsHashed() : kind.HasParams();
    if (!has || !IsTaken(kind, kinds)) continue;
    const std::string value = TellDefault(parameterName, kind.defaults);
    const auto found = std::find_if(namesByValue.begin(), namesByValue.end(),
                                    [&value](const auto& entry) { return entry.first == value; });
    if (found == namesByValue.end()) {
      namesByValue.emplace_back(value, kind.name);
    } else {
      found->second += std::string(", ") + kind.name;
    }
  }
  if (namesByValue.size() == 1) return namesByValue.front().first;
  std::string text;
  for (const auto& [value, names] : namesByValue) {
    text.append(text.empty() ? "" : "; ").append(value).append(" for ").append(names);
  }
  return text;
}

const ZQFPTypeBase* GetTypeByOptions(const ZQInterface& interface) {
  const auto name = interface.Get<std::string>("-fptype");
  const auto kind = std::ranges::find(ZQGetFPKinds(), name, &ZQFPKind::name);
  const std::size_t useless = kind->IsHashed() ? 0 : kind->HasParams() ? 1 : parameterNames.size();
  if (IsAnySet(interface, parameterNames.first(useless), "for fingerprints of kind " + name)) {
    return nullptr;
  }
  return ZQSetupFingerPrint(interface, *kind);
}

const ZQFPTypeBase* GetTypeByText(const ZQInterface& interface) {
  if (IsAnySet(interface, optionNames, "beside -type")) return nullptr;
  const auto text = interface.Get<std::string>("-type");
  std::string fault;
  const ZQFPTypeBase* type = ZQReadFPType(text, &fault);
  if (type && ZQCanMakeFP(type, &fault)) return type;
  if (fault.empty()) {
    ZQThrow.Error("-type: '%s' names no fingerprint type", text.c_str());
  } else {
    ZQThrow.Error("-type: '%s': %s", text.c_str(), fault.c_str());
  }
  return nullptr;
}

}  // namespace

void AddTypeOptions(ZQInterface& interface, Kinds kinds, std::vector<std::string> furtherKinds) {
  ZQConfigureFingerPrint(interface, ZQGetFPType(ZQFPType::Path));
  for (const char* name : parameterNames) {
    interface.FindParameter(name)->SetDefaultText(TellDefaults(name, kinds));
  }
  if (kinds != Kinds::OfDatabases) {
    const ZQNamespaceInterface& hashed = *ZQGetFPTypeNamespaceInterface();
    std::vector<std::string> further;
    for (const ZQFPKind& kind : ZQGetFPKinds()) {
      if (!hashed.IsValid(kind.name) && IsTaken(kind, kinds)) further.emplace_back(kind.name);
    }
    std::ranges::move(furtherKinds, std::back_inserter(further));
    interface.FindParameter("-fptype")->SetLegalNames(hashed, std::move(further));
  }
  interface.GetInterface("fingerprint options")
      ->AddParameter(
          ZQParameter("-type", "", ZQParamType::String,
                      "The whole type in one string, in place of the options above, such as "
                      "\"Path,ver=2.0.0,size=1024,bonds=0-5,atype=AtmNum,btype=Order\""));
}

const ZQFPTypeBase* GetTypeOption(const ZQInterface& interface, Kinds kinds) {
  const ZQFPTypeBase* type =
      interface.IsSet("-type") ? GetTypeByText(interface) : GetTypeByOptions(interface);
  const bool isTaken = type && (kinds != Kinds::OfDatabases ||
                                CheckFingerPrintType(type, "a database can't hold these:"));
  return isTaken ? type : nullptr;
}

bool IsComparedBy(const ZQFPTypeBase* type, unsigned int measure) {
  return measure == ZQSimMeasure::Tanimoto || !ZQFindFPKind(type)->IsUnhashed();
}

bool CheckMeasure(const ZQFPTypeBase* type, unsigned int measure) {
  if (IsComparedBy(type, measure)) return true;
  ZQThrow.Error("-simfunc: fingerprints of kind %s have no measure but Tanimoto",
                ZQFindFPKind(type)->name);
  return false;
}

bool IsAnyTypeOptionSet(const ZQInterface& interface, const std::string& reason) {
  constexpr const char* kind[] = {"-fptype"};
  return IsAnySet(interface, kind, reason) || IsAnyTypeParameterSet(interface, reason);
}

bool IsAnyTypeParameterSet(const ZQInterface& interface, const std::string& reason) {
  constexpr const char* wholeType[] = {"-type"};
  return IsAnySet(interface, parameterNames, reason) || IsAnySet(interface, wholeType, reason);
}

void AddVseprOptions(ZQInterface& interface) {
  const ZQVseprOptions defaults;
  ZQInterface* group = interface.AddInterface("VSEPR fingerprint options");
  const auto addLength = [&](const char* name, unsigned int length, const char* brief) {
    group->AddParameter(ZQParameter(name, "", ZQParamType::Int, brief)
                            .SetLegalRange(0, 65535)
                            .SetDefault(static_cast<int>(length)));
  };
  const auto addFlag = [&](const char* name, bool flag, const char* brief) {
    group->AddParameter(ZQParameter(name, "", ZQParamType::Bool, brief).SetDefault(flag));
  };
  addLength("-maxpathlength", defaults.GetMaxPathLength(),
            "The greatest number of atoms in a path; 8 is used for a greater number");
  addLength("-minpathlength", defaults.GetMinPathLength(),
            "The number of bonds from which on a path counts");
  addFlag("-forcepathsout", defaults.GetForcePathsOut(),
          "Whether paths follow shortest routes from their first atom only");
  addFlag("-weightbylength", defaults.GetWeightByLength(),
          "Whether a path of n atoms weighs exp((9 - n) / 2) instead of 1");
  addFlag("-stereoaware", defaults.GetStereoAware(),
          "Whether types distinguish the configurations of tetrahedral centres");
}

bool IsAnyVseprOptionSet(const ZQInterface& interface, const std::string& reason) {
  constexpr const char* names[] = {"-maxpathlength", "-minpathlength", "-forcepathsout",
                                   "-weightbylength", "-stereoaware"};
  return IsAnySet(interface, names, reason);
}

ZQVseprOptions GetVseprOptions(const ZQInterface& interface) {
  ZQVseprOptions options;
  options.SetMaxPathLength(static_cast<unsigned int>(interface.Get<int>("-maxpathlength")))
      .SetMinPathLength(static_cast<unsigned int>(interface.Get<int>("-minpathlength")))
      .SetForcePathsOut(interface.Get<bool>("-forcepathsout"))
      .SetWeightByLength(interface.Get<bool>("-weightbylength"))
      .SetStereoAware(interface.Get<bool>("-stereoaware"));
  if (options.GetMaxPathLength() > ZQVseprFingerprint::MaxAtoms) {
    ZQVseprFingerprint().Setup(ZQMol(), options);  // warns once, in place of at each record
    options.SetMaxPathLength(ZQVseprFingerprint::MaxAtoms);
  }
  return options;
}

void AddTverskyCoeffs(ZQInterface& interface) {
  ZQInterface* group = interface.GetInterface("fingerprint database search options");
  if (!group) group = &interface;
  const ZQFPDatabaseOptions defaults;
  group->AddParameter(
      ZQParameter("-alpha", "", ZQParamType::Float, "Tversky: weight of what the query has alone")
          .SetLegalRange(0.0F, 1.0F)
          .SetDefault(defaults.GetTverskyAlpha()));
  group->AddParameter(ZQParameter("-beta", "", ZQParamType::Float,
                                  "Tversky: weight of what the other one has alone")
                          .SetLegalRange(0.0F, 1.0F)
                          .SetDefault(defaults.GetTverskyBeta()));
}

void SetTverskyCoeffs(ZQFPDatabaseOptions& options, const ZQInterface& interface) {
  options.SetTverskyCoeffs(interface.Get<float>("-alpha"), interface.Get<float>("-beta"));
}

}  // namespace KorvexProgram
