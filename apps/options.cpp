#include "apps/options.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpversion.h"
#include "korvex/korvex_namespace.h"

namespace KorvexProgram {

void AddArgument(ZQInterface& interface, const char* name, const char* brief) {
  interface.AddParameter(ZQParameter(name, "", ZQParamType::String, brief).SetPositional());
}

UntrustedText::UntrustedText() : before_(ZQThrow.SetSink(nullptr)) {
  ZQThrow.SetSink([this](ZQErrorLevel level, const std::string& message) {
    return level == ZQErrorLevel::Fatal || before_(level, message);
  });
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

namespace {

// A kind of fingerprint, and the hashed kind that has the same parameters and defaults, 0 for one
// without parameters.
struct Kind {
  const char* name;
  unsigned int number;
  unsigned int hashedNumber;
  const ZQFPTypeBase* (*getUnhashedType)(unsigned short version, unsigned int min, unsigned int max,
                                         unsigned int atype, unsigned int btype);
};

constexpr Kind allKinds[] = {
    {"Path", ZQFPType::Path, ZQFPType::Path, nullptr},
    {"Circular", ZQFPType::Circular, ZQFPType::Circular, nullptr},
    {"Tree", ZQFPType::Tree, ZQFPType::Tree, nullptr},
    {"UHPath", ZQFPType::UnhashedPath, ZQFPType::Path, ZQGetUnhashedPathFPType},
    {"UHCircular", ZQFPType::UnhashedCircular, ZQFPType::Circular, ZQGetUnhashedCircularFPType},
    {"UHTree", ZQFPType::UnhashedTree, ZQFPType::Tree, ZQGetUnhashedTreeFPType},
    {"MACCS166", ZQFPType::MACCS166, 0, nullptr},
    {"Lingo", ZQFPType::Lingo, 0, nullptr},
};

bool IsTaken(const Kind& kind, Kinds kinds) {
  return kinds == Kinds::All || kind.number == kind.hashedNumber;
}

constexpr const char* optionNames[] = {"-fptype",      "-numbits",  "-mindistance",
                                       "-maxdistance", "-atomtype", "-bondtype"};
using Names = std::span<const char* const>;
constexpr Names parameterNames = Names(optionNames).subspan(1);

// "5 for Path, Circular; 4 for Tree", or the one value that all kinds share.
std::string TellDefaults(const char* parameterName, Kinds kinds) {
  std::vector<std::pair<std::string, std::string>> namesByValue;
  for (const Kind& kind : allKinds) {
    if (kind.hashedNumber == 0 || !IsTaken(kind, kinds)) continue;
    ZQInterface ofKind;
    ZQConfigureFingerPrint(ofKind, ZQGetFPType(kind.hashedNumber));
    const std::string value = ofKind.FindParameter(parameterName)->GetDefaultText();
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

bool IsAnySet(const ZQInterface& interface, Names names, const std::string& reason) {
  for (const char* name : names) {
    if (!interface.IsSet(name)) continue;
    ZQThrow.Error("option %s is of no use %s", name, reason.c_str());
    return true;
  }
  return false;
}

const ZQFPTypeBase* GetTypeByOptions(const ZQInterface& interface) {
  const auto name = interface.Get<std::string>("-fptype");
  const Kind* kind = std::find_if(std::begin(allKinds), std::end(allKinds),
                                  [&name](const Kind& each) { return each.name == name; });
  const std::string reason = "for fingerprints of kind " + name;
  if (kind->hashedNumber == 0) {
    return IsAnySet(interface, parameterNames, reason) ? nullptr : ZQGetFPType(kind->number);
  }
  if (kind->getUnhashedType && IsAnySet(interface, parameterNames.first(1), reason)) return nullptr;

  // What isn't set has the default of the kind, which is known only now.
  ZQInterface ofKind;
  ZQConfigureFingerPrint(ofKind, ZQGetFPType(kind->hashedNumber));
  for (const char* parameter : parameterNames) {
    if (!interface.IsSet(parameter)) continue;
    ofKind.FindParameter(parameter)->SetValue(interface.FindParameter(parameter)->GetValue());
  }
  const ZQFPTypeBase* type = ZQSetupFingerPrint(ofKind);
  if (!type || !kind->getUnhashedType) return type;
  const ZQFPTypeParams params(type);
  const UntrustedText untrusted;
  type =
      kind->getUnhashedType(ZQGetFingerPrintVersion(kind->number), params.GetMinDistance(),
                            params.GetMaxDistance(), params.GetAtomTypes(), params.GetBondTypes());
  if (!type) {
    ZQThrow.Error("-maxdistance: %u is too large for fingerprints of kind %s",
                  params.GetMaxDistance(), kind->name);
  }
  return type;
}

const ZQFPTypeBase* GetTypeByText(const ZQInterface& interface, Kinds kinds) {
  if (IsAnySet(interface, optionNames, "beside -type")) return nullptr;
  const auto text = interface.Get<std::string>("-type");
  const UntrustedText untrusted;
  const ZQFPTypeBase* type = ZQGetFPType(text);
  if (!type) {
    ZQThrow.Error("-type: '%s' names no fingerprint type, or has a number out of range",
                  text.c_str());
    return nullptr;
  }
  const auto isTaken = [&](const Kind& kind) {
    return kind.number == type->GetFPType() && IsTaken(kind, kinds);
  };
  if (std::none_of(std::begin(allKinds), std::end(allKinds), isTaken)) {
    ZQThrow.Error("-type: a database holds path, circular or tree fingerprints, not '%s'",
                  text.c_str());
    return nullptr;
  }
  // A type may say what no generator does, such as an enormous radius.
  ZQGraphMol methane;
  methane.NewAtom(6)->SetImplicitHCount(4);
  ZQFingerPrint fp;
  if (ZQMakeFP(fp, methane, type)) return type;
  ZQThrow.Error("-type: no fingerprint can be made of '%s'", text.c_str());
  return nullptr;
}

}  // namespace

void AddTypeOptions(ZQInterface& interface, Kinds kinds) {
  ZQConfigureFingerPrint(interface, ZQGetFPType(ZQFPType::Path));
  for (const char* name : parameterNames) {
    interface.FindParameter(name)->SetDefaultText(TellDefaults(name, kinds));
  }
  if (kinds == Kinds::All) {
    const ZQNamespaceInterface& hashed = *ZQGetFPTypeNamespaceInterface();
    std::vector<std::string> further;
    for (const Kind& kind : allKinds) {
      if (!hashed.IsValid(kind.name)) further.emplace_back(kind.name);
    }
    interface.FindParameter("-fptype")->SetLegalNames(hashed, std::move(further));
  }
  interface.GetInterface("fingerprint options")
      ->AddParameter(
          ZQParameter("-type", "", ZQParamType::String,
                      "The whole type in one string, in place of the options above, such as "
                      "\"Path,ver=2.0.0,size=1024,bonds=0-5,atype=AtmNum,btype=Order\""));
}

const ZQFPTypeBase* GetTypeOption(const ZQInterface& interface, Kinds kinds) {
  return interface.IsSet("-type") ? GetTypeByText(interface, kinds) : GetTypeByOptions(interface);
}

void AddTverskyCoeffs(ZQInterface& interface) {
  ZQInterface* group = interface.GetInterface("fingerprint database search options");
  if (!group) group = &interface;
  const ZQFPDatabaseOptions defaults;
  group->AddParameter(ZQParameter("-alpha", "", ZQParamType::Float,
                                  "Tversky: weight of the bits that the query has alone")
                          .SetLegalRange(0.0F, 1.0F)
                          .SetDefault(defaults.GetTverskyAlpha()));
  group->AddParameter(ZQParameter("-beta", "", ZQParamType::Float,
                                  "Tversky: weight of the bits that the other one has alone")
                          .SetLegalRange(0.0F, 1.0F)
                          .SetDefault(defaults.GetTverskyBeta()));
}

void SetTverskyCoeffs(ZQFPDatabaseOptions& options, const ZQInterface& interface) {
  options.SetTverskyCoeffs(interface.Get<float>("-alpha"), interface.Get<float>("-beta"));
}

}  // namespace KorvexProgram
