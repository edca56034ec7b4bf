#include "korvex/fptypes.h"

#include <array>
#include <limits>

#include "korvex/fpatomtyper.h"
#include "korvex/fpkinds_local.h"
#include "korvex/fpversion.h"

namespace ZQKorvex {

namespace {

struct Limit {
  const char* of;
  const char* name;
  unsigned int value;
  unsigned int least;
  unsigned int most;

  bool IsKept() const { return value >= least && value <= most; }
};

// The limits of a kind with parameters, in the order in which they are checked.
std::array<Limit, 6> LimitsOf(const ZQFPKind& kind, const ZQFPTypeValues& values) {
  constexpr unsigned int any = std::numeric_limits<unsigned int>::max();
  const char* const distance = kind.distanceKey;
  const bool isHashed = kind.IsHashed();
  return {{{"", kind.sizeKey, values.numbits, isHashed ? 16 : 0U, isHashed ? 65535 : any},
           {"", "atype", values.atype, 0, 8191},
           {"", "btype", values.btype, 0, 255},
           {"minimum ", distance, values.minDistance, 0, isHashed ? values.maxDistance : any},
           {"minimum ", distance, values.minDistance, 0, kind.distanceLimit},
           {"maximum ", distance, values.maxDistance, 0, kind.distanceLimit}}};
}

// Whether bits outside the fields are set, for a kind with parameters.
bool HasStrayBits(const ZQFPKind& kind, std::uint64_t id) {
  return (id & (kind.IsHashed() ? 0xf0000f0000000000 : 0xffffff0000000000)) != 0;
}

// Why no fingerprint of a type can be made; empty if one can.
std::string FindMakingFault(const ZQFPTypeBase* type) {
  const ZQFPKind* kind = ZQFindFPKind(type);
  if (!kind) return "null is no fingerprint type";
  if (type->GetVersion() != kind->version) {
    return "version " + ZQGetFingerPrintVersionString(type->GetVersion()) + " is an old one";
  }
  if (kind->HasParams()) {
    const ZQFPTypeValues values = ZQDecodeFPTypeID(type->GetID());
    std::string fault = ZQFindFPTypeFault(*kind, values);
    if (!fault.empty()) return fault;
    if (values.maxDistance > kind->LargestMade()) {
      return std::string("maximum ") + kind->distanceKey + " " +
             std::to_string(values.maxDistance) + " is above " +
             std::to_string(kind->LargestMade()) + ", the largest that fingerprints are made of";
    }
    if (kind->IsHashed() && values.atype == 0 && values.btype == 0) {
      return "atype and btype are both None";
    }
  }
  if (!type->GetInternedKind() || (kind->HasParams() && HasStrayBits(*kind, type->GetID()))) {
    return "it isn't the one object of its parameters";
  }
  return {};
}

}  // namespace

std::string ZQFindFPTypeFault(const ZQFPKind& kind, const ZQFPTypeValues& values) {
  if (!kind.HasParams()) return {};
  for (const Limit& limit : LimitsOf(kind, values)) {
    if (limit.IsKept()) continue;
    return std::string(limit.of) + limit.name + " " + std::to_string(limit.value) + " is outside " +
           std::to_string(limit.least) + " to " + std::to_string(limit.most);
  }
  return {};
}

bool ZQPackFPTypeID(const ZQFPKind& kind, const ZQFPTypeValues& values, std::uint64_t& id) {
  bool legal = true;
  for (const Limit& limit : LimitsOf(kind, values)) legal &= ZQ_ASSERT(limit.IsKept());
  if (!legal) return false;
  const std::uint64_t numbits = kind.IsHashed() ? values.numbits : 0;
  id = numbits << 44 | std::uint64_t{values.atype} << 24 | std::uint64_t{values.btype} << 16 |
       std::uint64_t{values.minDistance} << 8 | values.maxDistance;
  return true;
}

ZQFPTypeValues ZQDecodeFPTypeID(std::uint64_t id) {
  return {.numbits = static_cast<unsigned int>(id >> 44),
          .minDistance = static_cast<unsigned int>(id >> 8 & 255),
          .maxDistance = static_cast<unsigned int>(id & 255),
          .atype = static_cast<unsigned int>(id >> 24 & 65535),
          .btype = static_cast<unsigned int>(id >> 16 & 255)};
}

ZQFPTypeValues ZQUnpackFPTypeID(const ZQFPKind& kind, std::uint64_t id) {
  if (HasStrayBits(kind, id)) ZQThrow.Warning("%s", kind.texts.strayBits);
  ZQFPTypeValues values = ZQDecodeFPTypeID(id);
  if (kind.IsHashed()) {
    ZQ_ASSERT(values.numbits >= 16);
  } else {
    values.numbits = 0;
  }
  return values;
}

const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, unsigned short version,
                                const ZQFPTypeValues& values) {
  // Version 0 belongs to types read from older records, which the unhashed kinds don't have.
  if (!ZQ_ASSERT(version == kind.version || (version == 0 && !kind.IsUnhashed()))) return nullptr;
  std::uint64_t id = 0;
  if (kind.HasParams() && !ZQPackFPTypeID(kind, values, id)) return nullptr;
  return kind.intern(version, id);
}

const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, const ZQFPTypeValues& values) {
  return ZQGetFPType(kind, kind.version, values);
}

const ZQFPTypeBase* ZQGetFPType(unsigned int fptype, bool ignoreChargeAndHyb) {
  const ZQFPKind* kind = ZQFindFPKind(fptype);
  if (!kind) {
    ZQThrow.Warning("ZQGetFPType() unknown fingerprint type");
    return nullptr;
  }
  ZQFPTypeValues values = kind->defaults;
  if (ignoreChargeAndHyb && kind->IsHashed()) {
    values.atype &= ~(ZQFPAtomType::FCharge | ZQFPAtomType::Hyb);
  }
  return ZQGetFPType(*kind, values);
}

bool ZQCanMakeFP(const ZQFPTypeBase* type, std::string* fault) {
  const std::string why = FindMakingFault(type);
  if (fault) *fault = why;
  return why.empty();
}

const ZQFPTypeBase* ZQGetPathFPType(unsigned int numbits, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Path), {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetPathFPType(unsigned short version, unsigned int numbits,
                                    unsigned int minbonds, unsigned int maxbonds,
                                    unsigned int atype, unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Path), version,
                     {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetCircularFPType(unsigned int numbits, unsigned int minradius,
                                        unsigned int maxradius, unsigned int atype,
                                        unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Circular),
                     {numbits, minradius, maxradius, atype, btype});
}

const ZQFPTypeBase* ZQGetCircularFPType(unsigned short version, unsigned int numbits,
                                        unsigned int minradius, unsigned int maxradius,
                                        unsigned int atype, unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Circular), version,
                     {numbits, minradius, maxradius, atype, btype});
}

const ZQFPTypeBase* ZQGetTreeFPType(unsigned int numbits, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Tree), {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetTreeFPType(unsigned short version, unsigned int numbits,
                                    unsigned int minbonds, unsigned int maxbonds,
                                    unsigned int atype, unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Tree), version,
                     {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetUnhashedPathFPType(unsigned short version, unsigned int minbonds,
                                            unsigned int maxbonds, unsigned int atype,
                                            unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::UnhashedPath), version,
                     {0, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetUnhashedCircularFPType(unsigned short version, unsigned int minradius,
                                                unsigned int maxradius, unsigned int atype,
                                                unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::UnhashedCircular), version,
                     {0, minradius, maxradius, atype, btype});
}

const ZQFPTypeBase* ZQGetUnhashedTreeFPType(unsigned short version, unsigned int minbonds,
                                            unsigned int maxbonds, unsigned int atype,
                                            unsigned int btype) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::UnhashedTree), version,
                     {0, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetLingoFPType(unsigned short version) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::Lingo), version, {});
}

const ZQFPTypeBase* ZQGetMACCS166FPType(unsigned short version) {
  return ZQGetFPType(ZQGetFPKind(ZQFPType::MACCS166), version, {});
}

}  // namespace ZQKorvex
