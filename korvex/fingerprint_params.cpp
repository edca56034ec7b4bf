#include "korvex/fingerprint_params.h"

#include <limits>
#include <vector>

#include "contract/bostrel/strings.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fptypes.h"
#include "korvex/fpversion.h"

namespace ZQKorvex {

namespace {

constexpr unsigned int unset = std::numeric_limits<unsigned int>::max();

// Warns about the fault; returns false as the parser's result.
bool Refuse(const char* what, const ZQFPKind& kind) {
  ZQThrow.Warning("%s for `%s` type!", what, kind.name);
  return false;
}

bool ParseVersionToken(const std::string& text, const ZQFPKind& kind, unsigned short& version) {
  if (!ZQIsValidFingerPrintVersion(text)) return Refuse("Invalid version", kind);
  version = ZQGetFingerPrintVersion(text);
  return true;
}

bool ParseDistances(const std::string& text, const ZQFPKind& kind, ZQFPTypeValues& values) {
  const std::vector<std::string> parts = ZQStringTokenize(text, '-');
  if (parts.size() != 2) return Refuse("Invalid fingerprint distance", kind);
  if (!ZQStringToNumber(parts[0], values.minDistance)) {
    return Refuse("Invalid fingerprint minimum distance", kind);
  }
  if (!ZQStringToNumber(parts[1], values.maxDistance)) {
    return Refuse("Invalid fingerprint maximum distance", kind);
  }
  return true;
}

bool ParseParam(const std::string& key, const std::string& value, const ZQFPKind& kind,
                unsigned short& version, ZQFPTypeValues& values) {
  if (key == "ver") return ParseVersionToken(value, kind, version);
  if (key == kind.sizeKey) {
    return ZQStringToNumber(value, values.numbits) || Refuse("Invalid fingerprint size", kind);
  }
  if (key == kind.distanceKey) return ParseDistances(value, kind, values);
  if (key == "atype") {
    values.atype = ZQGetFPAtomType(value);
    return ZQIsValidFPAtomType(value);
  }
  if (key == "btype") {
    values.btype = ZQGetFPBondType(value);
    return ZQIsValidFPBondType(value);
  }
  ZQThrow.Warning("'%s' is not a valid fingerprint type primitive!", key.c_str());
  return false;
}

bool ParseParams(const ZQFPKind& kind, const std::string& typeString, unsigned short& version,
                 ZQFPTypeValues& values) {
  version = 0;
  values = {kind.IsHashed() ? unset : 0, unset, unset, unset, unset};
  bool typeSeen = false;
  for (const std::string& token : ZQStringTokenize(typeString, ',')) {
    if (token == kind.name) {
      typeSeen = true;
      continue;
    }
    const std::vector<std::string> parts = ZQStringTokenize(token, '=');
    if (parts.size() != 2) return Refuse("Invalid string can not be tokenized", kind);
    if (!ParseParam(parts[0], parts[1], kind, version, values)) return false;
  }
  if (!typeSeen) {
    ZQThrow.Warning("Missing fingerprint type!");
    return false;
  }
  if (version == 0) {
    ZQThrow.Warning("Missing fingerprint version!");
    return false;
  }
  if (values.numbits == unset || (kind.IsHashed() && values.numbits == 0)) {
    return Refuse("Size cannot be initialized", kind);
  }
  if (values.minDistance == unset || values.maxDistance == unset) {
    return Refuse("Min or max distance cannot be initialized", kind);
  }
  if (values.atype == unset) return Refuse("Atom type cannot be initialized", kind);
  if (values.btype == unset) return Refuse("Bond type cannot be initialized", kind);
  if (values.atype == 0 && values.btype == 0) {
    return Refuse("The atom and bond type cannot be both None", kind);
  }
  return true;
}

bool ParseVersion(const ZQFPKind& kind, const std::string& typeString, unsigned short& version) {
  version = 0;
  if (typeString == kind.name) return true;  // the older form, without a version
  const std::vector<std::string> tokens = ZQStringTokenize(typeString, ',');
  if (tokens.empty()) {
    ZQThrow.Warning("Invalid fingerprint type string!");
    return false;
  }
  bool typeSeen = false;
  for (const std::string& token : tokens) {
    if (token == kind.name) {
      typeSeen = true;
      continue;
    }
    const std::vector<std::string> parts = ZQStringTokenize(token, '=');
    if (parts.size() != 2) {
      ZQThrow.Warning("Invalid `%s` type string!", kind.name);
      return false;
    }
    if (parts[0] == "ver" && !ParseVersionToken(parts[1], kind, version)) return false;
  }
  if (!typeSeen) return false;
  return version != 0 || Refuse("Version number cannot be initialized", kind);
}

// The parsed content of a type string of any kind.
struct Parsed {
  const ZQFPKind* kind = nullptr;
  unsigned short version = 0;
  ZQFPTypeValues values;
};

bool Parse(const std::string& typeString, Parsed& parsed) {
  parsed.kind = ZQFindFPKind(typeString);
  if (!parsed.kind) return false;
  return parsed.kind->HasParams()
             ? ParseParams(*parsed.kind, typeString, parsed.version, parsed.values)
             : ParseVersion(*parsed.kind, typeString, parsed.version);
}

bool HasUnknownNumBits(const Parsed& parsed) {
  return parsed.kind->IsUnhashed() && parsed.values.numbits != 0;
}

// Whether the string has a valid type of the current version; warns otherwise.
bool ParseUsable(const std::string& typeString, Parsed& parsed) {
  if (!Parse(typeString, parsed)) {
    if (parsed.kind && parsed.kind->HasParams()) {
      ZQThrow.Warning("ZQGetFPType() invalid fingerprint type string");
    }
    return false;
  }
  if (parsed.version == parsed.kind->version) return true;
  constexpr const char* message = "ZQGetFPType() fingerprint type with old version number";
  if (parsed.kind->HasParams()) {
    ZQThrow.Warning("%s", message);
  } else {
    ZQThrow.Error("%s", message);
  }
  return false;
}

}  // namespace

void ZQGetFPTypeStringFromID(unsigned int fptype, std::string& text, unsigned short version,
                             std::uint64_t id) {
  const ZQFPKind* found = ZQFindFPKind(fptype);
  if (!ZQ_ASSERT(found != nullptr)) return;
  const ZQFPKind& kind = *found;
  text += kind.name;
  text += ",ver=" + ZQGetFingerPrintVersionString(version);
  if (!kind.HasParams()) return;
  const ZQFPTypeValues values = ZQUnpackFPTypeID(kind, id);
  if (kind.IsHashed())
    text += std::string(",") + kind.sizeKey + "=" + std::to_string(values.numbits);
  text += std::string(",") + kind.distanceKey + "=" + std::to_string(values.minDistance) + "-" +
          std::to_string(values.maxDistance);
  text += ",atype=" + ZQGetFPAtomType(values.atype);
  text += ",btype=" + ZQGetFPBondType(values.btype);
}

const ZQFPTypeBase* ZQGetFPType(const std::string& typeString) {
  Parsed parsed;
  if (!ParseUsable(typeString, parsed)) return nullptr;
  ZQ_ASSERT(!HasUnknownNumBits(parsed));
  return ZQGetFPType(*parsed.kind, parsed.version, parsed.values);
}

const ZQFPTypeBase* ZQReadFPType(const std::string& typeString, std::string* fault) {
  Parsed parsed;
  std::string why;
  const bool usable = ParseUsable(typeString, parsed);
  if (usable) {
    why = HasUnknownNumBits(parsed)
              ? "numbits " + std::to_string(parsed.values.numbits) + " is outside 0 to 0"
              : ZQFindFPTypeFault(*parsed.kind, parsed.values);
  }
  if (fault) *fault = why;
  if (!usable || !why.empty()) return nullptr;
  return ZQGetFPType(*parsed.kind, parsed.version, parsed.values);
}

bool ZQGetFPTypeParamsFromString(unsigned int fptype, const std::string& typeString,
                                 unsigned short& version, unsigned int& numbits, unsigned int& min,
                                 unsigned int& max, unsigned int& atype, unsigned int& btype) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  if (!ZQ_ASSERT(kind && kind->HasParams())) return false;
  ZQFPTypeValues values;
  const bool valid = ParseParams(*kind, typeString, version, values);
  std::tie(numbits, min, max, atype, btype) = values.AsTuple();
  return valid;
}

bool ZQGetFPTypeParamsFromString(unsigned int fptype, const std::string& typeString,
                                 unsigned short& version) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  if (!ZQ_ASSERT(kind && !kind->HasParams())) return false;
  return ParseVersion(*kind, typeString, version);
}

bool ZQIsValidFPTypeString(const std::string& typeString) {
  Parsed parsed;
  if (!Parse(typeString, parsed)) return false;
  ZQ_ASSERT(!HasUnknownNumBits(parsed));
  if (parsed.version != parsed.kind->version) {
    ZQThrow.Warning("ZQIsValidFPTypeString() fingerprint type with old version number");
  }
  return true;
}

unsigned short ZQGetFPTypeVersion(const std::string& typeString) {
  const ZQFPKind* kind = ZQFindFPKind(typeString);
  Parsed parsed;
  return kind && !kind->IsUnhashed() && Parse(typeString, parsed) ? parsed.version : 0;
}

unsigned int GetFPTypeFromTypeStringPrefix(const std::string& typeString) {
  const ZQFPKind* kind = ZQFindFPKind(typeString);
  return kind ? kind->number : 0;
}

namespace {

std::string NameOf(unsigned int fptype) { return ZQFindFPKind(fptype)->name; }

}  // namespace

std::string ZQGetMACCS166FPStringPrefix() { return NameOf(ZQFPType::MACCS166); }
std::string ZQGetPathFPStringPrefix() { return NameOf(ZQFPType::Path); }
std::string ZQGetLingoFPStringPrefix() { return NameOf(ZQFPType::Lingo); }
std::string ZQGetCircularFPStringPrefix() { return NameOf(ZQFPType::Circular); }
std::string ZQGetTreeFPStringPrefix() { return NameOf(ZQFPType::Tree); }
std::string ZQGetUnhashedPathFPStringPrefix() { return NameOf(ZQFPType::UnhashedPath); }
std::string ZQGetUnhashedCircularFPStringPrefix() { return NameOf(ZQFPType::UnhashedCircular); }
std::string ZQGetUnhashedTreeFPStringPrefix() { return NameOf(ZQFPType::UnhashedTree); }

namespace {

template <class T>
bool GetUnhashedParams(const std::string& typeString, unsigned short& version, unsigned int& min,
                       unsigned int& max, unsigned int& atype, unsigned int& btype) {
  unsigned int numbits = 0;
  const bool valid =
      ZQGetFPTypeParamsFromString<T>(typeString, version, numbits, min, max, atype, btype);
  if (valid) ZQ_ASSERT(numbits == 0);
  return valid;
}

}  // namespace

bool ZQGetPathFPTypeParams(const std::string& typeString, unsigned short& version,
                           unsigned int& numbits, unsigned int& minbonds, unsigned int& maxbonds,
                           unsigned int& atype, unsigned int& btype) {
  return ZQGetFPTypeParamsFromString<ZQFPPathType>(typeString, version, numbits, minbonds, maxbonds,
                                                   atype, btype);
}

bool ZQGetCircularFPTypeParams(const std::string& typeString, unsigned short& version,
                               unsigned int& numbits, unsigned int& minradius,
                               unsigned int& maxradius, unsigned int& atype, unsigned int& btype) {
  return ZQGetFPTypeParamsFromString<ZQFPCircularType>(typeString, version, numbits, minradius,
                                                       maxradius, atype, btype);
}

bool ZQGetTreeFPTypeParams(const std::string& typeString, unsigned short& version,
                           unsigned int& numbits, unsigned int& minbonds, unsigned int& maxbonds,
                           unsigned int& atype, unsigned int& btype) {
  return ZQGetFPTypeParamsFromString<ZQFPTreeType>(typeString, version, numbits, minbonds, maxbonds,
                                                   atype, btype);
}

bool ZQGetUnhashedPathFPTypeParams(const std::string& typeString, unsigned short& version,
                                   unsigned int& minbonds, unsigned int& maxbonds,
                                   unsigned int& atype, unsigned int& btype) {
  return GetUnhashedParams<ZQFPUnhashedPathType>(typeString, version, minbonds, maxbonds, atype,
                                                 btype);
}

bool ZQGetUnhashedCircularFPTypeParams(const std::string& typeString, unsigned short& version,
                                       unsigned int& minradius, unsigned int& maxradius,
                                       unsigned int& atype, unsigned int& btype) {
  return GetUnhashedParams<ZQFPUnhashedCircularType>(typeString, version, minradius, maxradius,
                                                     atype, btype);
}

bool ZQGetUnhashedTreeFPTypeParams(const std::string& typeString, unsigned short& version,
                                   unsigned int& minbonds, unsigned int& maxbonds,
                                   unsigned int& atype, unsigned int& btype) {
  return GetUnhashedParams<ZQFPUnhashedTreeType>(typeString, version, minbonds, maxbonds, atype,
                                                 btype);
}

bool ZQGetLingoFPTypeParams(const std::string& typeString, unsigned short& version) {
  return ZQGetFPTypeParamsFromString<ZQFPLingoType>(typeString, version);
}

bool ZQGetMACCS166FPTypeParams(const std::string& typeString, unsigned short& version) {
  return ZQGetFPTypeParamsFromString<ZQFPMACCS166Type>(typeString, version);
}

ZQFPTypeParams::ZQFPTypeParams(const std::string& typeString) {
  const ZQFPKind* kind = ZQFindFPKind(typeString);
  if (!kind) return;
  fptype_ = kind->number;
  Parsed parsed;
  if (kind->IsUnhashed() || !Parse(typeString, parsed)) return;
  version_ = parsed.version;
  const ZQFPTypeValues& values = parsed.values;
  numbits_ = kind->HasParams() ? values.numbits : kind->defaults.numbits;
  minDistance_ = values.minDistance;
  maxDistance_ = values.maxDistance;
  atomTypes_ = values.atype;
  bondTypes_ = values.btype;
  valid_ = true;
}

ZQFPTypeParams::ZQFPTypeParams(const ZQFPTypeBase* type)
    : ZQFPTypeParams(type ? type->GetFPTypeString() : std::string()) {}

std::string ZQGetFingerPrintName(const ZQFPTypeBase* type) {
  constexpr const char* unknown = "UNKNOWN";
  if (!ZQ_ASSERT(type != nullptr)) return unknown;
  const std::string typeString = type->GetFPTypeString();
  ZQ_ASSERT(ZQFPTypeParams(typeString).IsValid());
  const ZQFPKind* kind = ZQFindFPKind(typeString);
  return kind && !kind->IsUnhashed() ? kind->name : unknown;
}

unsigned int ZQGetFingerPrintSize(const ZQFPTypeBase* type) {
  if (!ZQ_ASSERT(type != nullptr)) return 0;
  return ZQFPTypeParams(type).GetNumBits();
}

}  // namespace ZQKorvex
