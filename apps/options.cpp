#include "apps/options.h"

#include <algorithm>
#include <span>
#include <utility>
#include <vector>

#include "korvex/fingerprint_params.h"
#include "korvex/fpdatabaseoptions_params.h"
#include "korvex/fpfast.h"
#include "korvex/korvex_namespace.h"

namespace KorvexProgram {

void AddArgument(ZQInterface& interface, const char* name, const char* brief) {
  interface.AddParameter(ZQParameter(name, "", ZQParamType::String, brief).SetPositional());
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

  bool IsUnhashed() const { return hashedNumber != 0 && hashedNumber != number; }
};

constexpr Kind allKinds[] = {
    {"Path", ZQFPType::Path, ZQFPType::Path},
    {"Circular", ZQFPType::Circular, ZQFPType::Circular},
    {"Tree", ZQFPType::Tree, ZQFPType::Tree},
    {"UHPath", ZQFPType::UnhashedPath, ZQFPType::Path},
    {"UHCircular", ZQFPType::UnhashedCircular, ZQFPType::Circular},
    {"UHTree", ZQFPType::UnhashedTree, ZQFPType::Tree},
    {"MACCS166", ZQFPType::MACCS166, 0},
    {"Lingo", ZQFPType::Lingo, 0},
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
  if (kind->IsUnhashed() && IsAnySet(interface, parameterNames.first(1), reason)) return nullptr;

  // What isn't set has the default of the kind, which is known only now.
  ZQInterface ofKind;
  ZQConfigureFingerPrint(ofKind, ZQGetFPType(kind->hashedNumber));
  for (const char* parameter : parameterNames) {
    if (!interface.IsSet(parameter)) continue;
    ofKind.FindParameter(parameter)->SetValue(interface.FindParameter(parameter)->GetValue());
  }
  const ZQFPTypeBase* type = ZQSetupFingerPrint(ofKind);
  if (!type || !kind->IsUnhashed()) return type;
  // The unhashed kind has the string of its sibling under its own name, without a size.
  std::string text = type->GetFPTypeString();
  text.replace(0, text.find(','), kind->name);
  const std::size_t size = text.find(",size=");
  text.erase(size, text.find(',', size + 1) - size);
  std::string fault;
  type = ZQReadFPType(text, &fault);
  if (!type) ZQThrow.Error("%s: %s", kind->name, fault.c_str());
  return type;
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
  const ZQFPTypeBase* type =
      interface.IsSet("-type") ? GetTypeByText(interface) : GetTypeByOptions(interface);
  const bool isTaken =
      type && (kinds == Kinds::All || CheckFingerPrintType(type, "a database can't hold these:"));
  return isTaken ? type : nullptr;
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
