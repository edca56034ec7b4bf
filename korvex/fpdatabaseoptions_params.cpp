#include "korvex/fpdatabaseoptions_params.h"

#include <utility>
#include <vector>

#include "korvex/fingerprint_params.h"
#include "korvex/fpatomtyper.h"
#include "korvex/korvex_namespace.h"
#include "korvex/version.h"

namespace ZQKorvex {

namespace {

ZQInterface* GetOrAddInterface(ZQInterface& parent, const std::string& name) {
  ZQInterface* found = parent.GetInterface(name);
  return found ? found : parent.AddInterface(name);
}

bool AddIntParameter(ZQInterface& interface, const char* name, const char* alias, int least,
                     int greatest, unsigned int value, const char* brief, const char* detail) {
  ZQParameter parameter(name, alias, ZQParamType::Int, brief);
  parameter.SetLegalRange(least, greatest).SetDefault(static_cast<int>(value)).AddDetail(detail);
  return interface.AddParameter(std::move(parameter)) != nullptr;
}

// Adds a string parameter with the names of a namespace; `apiName` is its name in the
// documentation.
bool AddNameParameter(ZQInterface& interface, const std::string& name, const std::string& alias,
                      const ZQNamespaceInterface* space, const char* apiName,
                      std::vector<std::string> furtherNames, const std::string& value,
                      const char* brief) {
  ZQParameter parameter(name, alias, ZQParamType::String, brief);
  parameter.SetLegalNames(*space, std::move(furtherNames)).SetDefault(value);
  AddDetails(&parameter, space);
  parameter.AddDetail("\n\tAPI : " + ZQGetKorvexClassHyperlink(apiName) + " namespace");
  return interface.AddParameter(std::move(parameter)) != nullptr;
}

// Adds a parameter for a method of `ZQFPDatabaseOptions`.
bool AddSearchOption(ZQInterface& interface, ZQParameter parameter, const char* method) {
  parameter.AddDetail("\n\tAPI : " + ZQGetKorvexMethodHyperlink("ZQFPDatabaseOptions", method) +
                      " method");
  return GetOrAddInterface(interface, "fingerprint database search options")
             ->AddParameter(std::move(parameter)) != nullptr;
}

}  // namespace

void AddDetails(ZQParameter* parameter, const ZQNamespaceInterface* space) {
  std::string text = "\nPrimitive expressions :";
  for (const ZQNamespacePrim& prim : space->GetPrimitives()) {
    text += "\n\t" + prim.name;
    if (!prim.help.empty()) text += " - " + prim.help;
  }
  if (space->GetMode() == ZQNamespaceMode::Combining) {
    text += "\n\tCombined expressions :\n\tCreated by combining primitive tokens with | ";
  }
  parameter->AddDetail(text);
}

// ---- fingerprint types

bool ZQConfigureFingerPrint(ZQInterface& interface, const ZQFPTypeBase* type) {
  static constexpr const char* caller = "ZQConfigureFingerPrint()";
  if (!type) {
    ZQThrow.Warning("%s invalid fingerprint type pointer!", caller);
    return false;
  }
  const ZQFPKind* kind = ZQFindFPKind(type);
  if (!kind || !kind->IsHashed()) {
    ZQThrow.Warning("%s invalid fingerprint type (only path, circular or tree is allowed)", caller);
    return false;
  }
  const ZQFPTypeParams params(type);
  if (!params.IsValid()) {
    ZQThrow.Warning("%s invalid fingerprint type", caller);
    return false;
  }
  ZQInterface* options = interface.AddInterface("fingerprint options");
  if (!options) {
    ZQThrow.Warning("%s problem configuring fingerprint interface!", caller);
    return false;
  }
  return ZQConfigureFingerPrintType(*options, kind->number) &&
         AddIntParameter(*options, "-numbits", "-size", 64, 65535, params.GetNumBits(),
                         "Size of bitvector",
                         "Only available for path, circular or tree fingerprint.") &&
         AddIntParameter(*options, "-mindistance", "-mind", 0, 10, params.GetMinDistance(),
                         "Minimum number of bonds/radius in path/circular/tree fingerprint",
                         "\n\tOnly available for path, circular or tree fingerprints."
                         "\n\tThis value has to be smaller or equal to the max distance value.") &&
         AddIntParameter(*options, "-maxdistance", "-maxd", 0, 10, params.GetMaxDistance(),
                         "Maximum number of bonds/radius in path/circular/tree fingerprint",
                         "\n\tOnly available for path, circular or tree fingerprints."
                         "\n\tThis value has to be greater or equal to the min distance value.") &&
         AddNameParameter(
             *options, "-atomtype", "-a", ZQGetFPAtomTypeNamespaceInterface(), "ZQFPAtomType",
             {"None", "DefaultAtom", "DefaultPathAtom", "DefaultCircularAtom", "DefaultTreeAtom"},
             ZQGetFPAtomType(params.GetAtomTypes()), "Fingerprint atom type") &&
         AddNameParameter(
             *options, "-bondtype", "-b", ZQGetFPBondTypeNamespaceInterface(), "ZQFPBondType",
             {"None", "DefaultBond", "DefaultPathBond", "DefaultCircularBond", "DefaultTreeBond"},
             ZQGetFPBondType(params.GetBondTypes()), "Fingerprint bond type");
}

bool ZQConfigureFingerPrintType(ZQInterface& interface, unsigned int fptype,
                                const std::string& name, const std::string& alias) {
  const ZQNamespaceInterface* space = ZQGetFPTypeNamespaceInterface();
  return AddNameParameter(interface, name, alias, space, "ZQFPType", {},
                          space->GetName(fptype, std::string()), "Fingerprint type");
}

namespace {

// Replaces the values by the parameters that are set or, if `all`, by all parameters.
void ReadValues(ZQFPTypeValues& values, const ZQInterface& interface, bool all) {
  const auto isTaken = [&](const char* name) { return all || interface.IsSet(name); };
  const auto number = [&](const char* name) {
    return static_cast<unsigned int>(interface.Get<int>(name));
  };
  if (isTaken("-numbits")) values.numbits = number("-numbits");
  if (isTaken("-mindistance")) values.minDistance = number("-mindistance");
  if (isTaken("-maxdistance")) values.maxDistance = number("-maxdistance");
  if (isTaken("-atomtype")) {
    values.atype = ZQGetFPAtomType(interface.Get<std::string>("-atomtype"));
  }
  if (isTaken("-bondtype")) {
    values.btype = ZQGetFPBondType(interface.Get<std::string>("-bondtype"));
  }
}

bool CheckValues(const ZQFPTypeValues& values) {
  static constexpr const char* caller = "ZQSetupFingerPrint";
  if (static_cast<int>(values.minDistance) > static_cast<int>(values.maxDistance)) {
    ZQThrow.Warning("%s Invalid min distance (%d) > max distance (%d)", caller, values.minDistance,
                    values.maxDistance);
    return false;
  }
  if (values.atype == 0 && values.btype == 0) {
    ZQThrow.Warning("%s Invalid fingerprint atom or bond typing", caller);
    return false;
  }
  return true;
}

}  // namespace

const ZQFPTypeBase* ZQSetupFingerPrint(const ZQInterface& interface) {
  const unsigned int fptype =
      ZQGetFPTypeNamespaceInterface()->GetValue(interface.Get<std::string>("-fptype"), 0);
  if (fptype == 0) {
    ZQThrow.Warning("%s Invalid fingerprint type", "ZQSetupFingerPrint");
    return nullptr;
  }
  ZQFPTypeValues values;
  ReadValues(values, interface, true);
  return CheckValues(values) ? ZQGetFPType(*ZQFindFPKind(fptype), values) : nullptr;
}

const ZQFPTypeBase* ZQSetupFingerPrint(const ZQInterface& interface, const ZQFPKind& kind) {
  ZQFPTypeValues values = kind.defaults;
  ReadValues(values, interface, false);
  if (kind.HasParams() && !CheckValues(values)) return nullptr;
  const std::string fault = ZQFindFPTypeFault(kind, values);
  if (!fault.empty()) ZQThrow.Error("%s: %s", kind.name, fault.c_str());
  return fault.empty() ? ZQGetFPType(kind, values) : nullptr;
}

// ---- databases

bool ZQConfigureFPDatabaseMemoryType(ZQInterface& interface, unsigned int memoryType,
                                     const std::string& name, const std::string& alias) {
  const ZQNamespaceInterface* space = ZQGetMemoryTypeNamespaceInterface();
  return AddNameParameter(*GetOrAddInterface(interface, "fingerprint database options"), name,
                          alias, space, "ZQFastFPDatabaseMemoryType", {},
                          space->GetName(memoryType, std::string()), "Memory type");
}

unsigned int ZQGetFPDatabaseMemoryType(const ZQInterface& interface, const std::string& name) {
  return ZQGetMemoryTypeNamespaceInterface()->GetValue(interface.Get<std::string>(name), 0);
}

bool ZQConfigureFPDatabaseOptionsLimit(ZQInterface& interface, unsigned int limit,
                                       const std::string& name, const std::string& alias) {
  ZQParameter parameter(name, alias, ZQParamType::Int, "Maximum number of similarity scores");
  parameter.SetLegalRange(0, 100000)
      .SetDefault(static_cast<int>(limit))
      .AddDetail("\n\tIf set to zero, then all of the similarity scores are returned");
  return AddSearchOption(interface, std::move(parameter), "SetLimit");
}

bool ZQConfigureFPDatabaseOptionsSimFunc(ZQInterface& interface, unsigned int simFunc,
                                         const std::string& name, const std::string& alias) {
  const ZQNamespaceInterface* space = ZQGetSimMeasureNamespaceInterface();
  ZQParameter parameter(name, alias, ZQParamType::String, "Similarity measure");
  parameter.SetLegalNames(*space).SetDefault(space->GetName(simFunc, std::string()));
  AddDetails(&parameter, space);
  return AddSearchOption(interface, std::move(parameter), "SetSimFunc");
}

bool ZQConfigureFPDatabaseOptionsCutoff(ZQInterface& interface, const ZQFPDatabaseOptions& options,
                                        const std::string& name, const std::string& alias) {
  ZQParameter parameter(name, alias, ZQParamType::Float, "Similarity cutoff value");
  if (options.HasCutoff()) parameter.SetDefault(options.GetCutoff());
  parameter.AddDetail("\n\tBy default there is no similarity cutoff");
  return AddSearchOption(interface, std::move(parameter), "SetCutoff");
}

bool ZQConfigureFPDatabaseOptions(ZQInterface& interface, const ZQFPDatabaseOptions& options) {
  ZQParameter descending("-descending", "", ZQParamType::Bool, "Order of similarity scores");
  descending.SetDefault(options.GetDescendingOrder())
      .AddDetail(
          "\n\tIf true scores are returned in descending order otherwise in ascending order");
  return ZQConfigureFPDatabaseOptionsLimit(interface, options.GetLimit()) &&
         ZQConfigureFPDatabaseOptionsSimFunc(interface, options.GetSimFunc()) &&
         ZQConfigureFPDatabaseOptionsCutoff(interface, options) &&
         AddSearchOption(interface, std::move(descending), "SetDescendingOrder");
}

bool ZQConfigureFPDatabaseOptions(ZQInterface& interface, unsigned int mask) {
  return (!(mask & ZQFPDatabaseOptionsMask::Limit) ||
          ZQConfigureFPDatabaseOptionsLimit(interface)) &&
         (!(mask & ZQFPDatabaseOptionsMask::SimFunc) ||
          ZQConfigureFPDatabaseOptionsSimFunc(interface)) &&
         (!(mask & ZQFPDatabaseOptionsMask::Cutoff) ||
          ZQConfigureFPDatabaseOptionsCutoff(interface));
}

void ZQSetupFPDatabaseOptions(ZQFPDatabaseOptions& options, const ZQInterface& interface) {
  if (interface.IsSet("-limit")) {
    options.SetLimit(static_cast<unsigned int>(interface.Get<int>("-limit")));
  }
  if (interface.IsSet("-simfunc")) {
    options.SetSimFunc(ZQGetSimMeasureNamespaceInterface()->GetValue(
        interface.Get<std::string>("-simfunc"), ZQSimMeasure::Tanimoto));
  }
  if (interface.IsSet("-cutoff")) options.SetCutoff(interface.Get<float>("-cutoff"));
  if (interface.IsSet("-descending")) {
    options.SetDescendingOrder(interface.Get<bool>("-descending"));
  }
}

}  // namespace ZQKorvex
