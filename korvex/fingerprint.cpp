#include "korvex/fingerprint.h"

#include <array>
#include <limits>
#include <string>

#include "korvex/circular.h"
#include "korvex/fingerprint_params.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fptypes_local.h"
#include "korvex/fpversion.h"
#include "korvex/lingo.h"
#include "korvex/maccs.h"
#include "korvex/path.h"
#include "korvex/tree.h"
#include "korvex/unhashed.h"

namespace ZQKorvex {

ZQFPTypeFactoryNoParams<ZQFPMACCS166Type> maccs166TypeFactory;
ZQFPTypeFactoryNoParams<ZQFPLingoType> lingoTypeFactory;
ZQFPTypeFactory<ZQFPPathType> pathTypeFactory;
ZQFPTypeFactory<ZQFPCircularType> circularTypeFactory;
ZQFPTypeFactory<ZQFPTreeType> treeTypeFactory;
ZQFPTypeFactory<ZQFPUnhashedPathType> uhpathTypeFactory;
ZQFPTypeFactory<ZQFPUnhashedCircularType> uhcircularTypeFactory;
ZQFPTypeFactory<ZQFPUnhashedTreeType> uhtreeTypeFactory;

namespace {

// Version 0 belongs to types read from older records, which the unhashed kinds don't have.
bool IsUsableVersion(const ZQFPKind& kind, unsigned short version) {
  return version == ZQGetFingerPrintVersion(kind.number) || (version == 0 && kind.IsHashed());
}

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
  const std::uint64_t strayBits = kind.IsHashed() ? 0xf0000f0000000000 : 0xffffff0000000000;
  if (id & strayBits) ZQThrow.Warning("%s", kind.strayBitsReport);
  ZQFPTypeValues values = ZQDecodeFPTypeID(id);
  if (kind.IsHashed()) {
    ZQ_ASSERT(values.numbits >= 16);
  } else {
    values.numbits = 0;
  }
  return values;
}

template <unsigned int fptype>
std::string ZQFPTypeOfKind<fptype>::GetFPTypeString() const {
  std::string text;
  ZQGetFPTypeStringFromID<ZQFPTypeOfKind>(text, GetVersion(), GetID());
  return text;
}

template <unsigned int fptype>
std::uint64_t ZQFPTypeOfKind<fptype>::GetIDFromParams(
    unsigned int numbits, unsigned int min, unsigned int max, unsigned int atype,
    unsigned int btype) requires ZQHashedFPKind<fptype> {
  std::uint64_t id = 0;
  ZQPackFPTypeID(*ZQFindFPKind(fptype), {numbits, min, max, atype, btype}, id);
  return id;
}

template <unsigned int fptype>
std::uint64_t ZQFPTypeOfKind<fptype>::GetIDFromParams(
    unsigned int min, unsigned int max, unsigned int atype,
    unsigned int btype) requires ZQUnhashedFPKind<fptype> {
  std::uint64_t id = 0;
  ZQPackFPTypeID(*ZQFindFPKind(fptype), {0, min, max, atype, btype}, id);
  return id;
}

template <unsigned int fptype>
void ZQFPTypeOfKind<fptype>::SetParamsFromID(std::uint64_t id, unsigned int& numbits,
                                             unsigned int& min, unsigned int& max,
                                             unsigned int& atype,
                                             unsigned int& btype) requires ZQHashedFPKind<fptype> {
  std::tie(numbits, min, max, atype, btype) = ZQUnpackFPTypeID(*ZQFindFPKind(fptype), id).AsTuple();
}

template <unsigned int fptype>
void ZQFPTypeOfKind<fptype>::SetParamsFromID(std::uint64_t id, unsigned int& min, unsigned int& max,
                                             unsigned int& atype, unsigned int& btype) requires
    ZQUnhashedFPKind<fptype> {
  std::tie(std::ignore, min, max, atype, btype) =
      ZQUnpackFPTypeID(*ZQFindFPKind(fptype), id).AsTuple();
}

template class ZQFPTypeOfKind<ZQFPType::MACCS166>;
template class ZQFPTypeOfKind<ZQFPType::Lingo>;
template class ZQFPTypeOfKind<ZQFPType::Path>;
template class ZQFPTypeOfKind<ZQFPType::Circular>;
template class ZQFPTypeOfKind<ZQFPType::Tree>;
template class ZQFPTypeOfKind<ZQFPType::UnhashedPath>;
template class ZQFPTypeOfKind<ZQFPType::UnhashedCircular>;
template class ZQFPTypeOfKind<ZQFPType::UnhashedTree>;

const ZQFPTypeBase* ZQInternFPType(const ZQFPKind& kind, unsigned short version, std::uint64_t id) {
  switch (kind.number) {
    case ZQFPType::MACCS166:
      return maccs166TypeFactory.GetFPType(version);
    case ZQFPType::Path:
      return pathTypeFactory.GetFPType(version, id);
    case ZQFPType::Lingo:
      return lingoTypeFactory.GetFPType(version);
    case ZQFPType::Circular:
      return circularTypeFactory.GetFPType(version, id);
    case ZQFPType::Tree:
      return treeTypeFactory.GetFPType(version, id);
    case ZQFPType::UnhashedPath:
      return uhpathTypeFactory.GetFPType(version, id);
    case ZQFPType::UnhashedCircular:
      return uhcircularTypeFactory.GetFPType(version, id);
    case ZQFPType::UnhashedTree:
      return uhtreeTypeFactory.GetFPType(version, id);
    default:
      return nullptr;
  }
}

const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, unsigned short version,
                                const ZQFPTypeValues& values) {
  if (!ZQ_ASSERT(IsUsableVersion(kind, version))) return nullptr;
  std::uint64_t id = 0;
  if (kind.HasParams() && !ZQPackFPTypeID(kind, values, id)) return nullptr;
  return ZQInternFPType(kind, version, id);
}

const ZQFPTypeBase* ZQGetFPType(const ZQFPKind& kind, const ZQFPTypeValues& values) {
  return ZQGetFPType(kind, ZQGetFingerPrintVersion(kind.number), values);
}

bool ZQFingerPrint::operator==(const ZQFingerPrint& other) const {
  if (!type_ || !other.type_) {
    ZQThrow.Warning("ZQFingerPrint::operator== : uninitialized fingerprint type!");
    return false;
  }
  return type_ == other.type_ &&
         static_cast<const ZQBitVector&>(*this) == static_cast<const ZQBitVector&>(other);
}

bool ZQIsFPType(const ZQFingerPrint& fp, unsigned int fptype) {
  return fp.GetFPTypeBase()->GetFPType() == fptype;
}

bool ZQIsSameFPType(const ZQFingerPrint& a, const ZQFingerPrint& b) {
  if (!a || !b) {
    ZQThrow.Warning("ZQIsSameFPType() : uninitialized fingerprint type!");
    return false;
  }
  return a.GetFPTypeBase() == b.GetFPTypeBase();
}

bool ZQCanMakeFP(const ZQFPTypeBase* type, std::string* fault) {
  std::string why = "null is no fingerprint type";
  if (const ZQFPKind* kind = type ? ZQFindFPKind(type->GetFPType()) : nullptr) {
    const ZQFPTypeValues values = ZQDecodeFPTypeID(type->GetID());
    why = ZQFindFPTypeFault(*kind, values);
    if (type->GetVersion() != ZQGetFingerPrintVersion(kind->number)) {
      why = "version " + ZQGetFingerPrintVersionString(type->GetVersion()) + " is an old one";
    } else if (why.empty() && values.maxDistance > kind->largestMade) {
      why = std::string("maximum ") + kind->distanceKey + " " + std::to_string(values.maxDistance) +
            " is above " + std::to_string(kind->largestMade) +
            ", the largest that fingerprints are made of";
    } else if (why.empty() && kind->HasParams() && kind->IsHashed() && values.atype == 0 &&
               values.btype == 0) {
      why = "atype and btype are both None";
    } else if (why.empty() && ZQGetFPType(*kind, type->GetVersion(), values) != type) {
      why = "it isn't the one object of its parameters";
    }
  }
  if (fault) *fault = why;
  return why.empty();
}

bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  switch (type ? type->GetFPType() : 0) {
    case ZQFPType::MACCS166:
      return ZQMakeMACCS166FP(fp, mol);
    case ZQFPType::Path:
      return ZQMakePathFP(fp, mol, type);
    case ZQFPType::Lingo:
      return ZQMakeLingoFP(fp, mol);
    case ZQFPType::Circular:
      return ZQMakeCircularFP(fp, mol, type);
    case ZQFPType::Tree:
      return ZQMakeTreeFP(fp, mol, type);
    case ZQFPType::UnhashedPath:
      return ZQMakeUnhashedPathFP(fp, mol, type);
    case ZQFPType::UnhashedCircular:
      return ZQMakeUnhashedCircularFP(fp, mol, type);
    case ZQFPType::UnhashedTree:
      return ZQMakeUnhashedTreeFP(fp, mol, type);
    default:
      fp.SetFPTypeBase(nullptr);
      return false;
  }
}

bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int fptype,
              bool ignoreChargeAndHyb) {
  const ZQFPTypeBase* type = ZQGetFPType(fptype, ignoreChargeAndHyb);
  if (!type) ZQThrow.Warning("ZQMakeFP() unknown fingerprint type");
  return ZQMakeFP(fp, mol, type);
}

const ZQFPTypeBase* ZQGetFPType(unsigned int fptype, bool ignoreChargeAndHyb) {
  constexpr unsigned int pathAtom = ZQFPAtomType::DefaultPathAtom;
  constexpr unsigned int circularAtom = ZQFPAtomType::DefaultCircularAtom;
  constexpr unsigned int treeAtom = ZQFPAtomType::DefaultTreeAtom;
  constexpr unsigned int pathBond = ZQFPBondType::DefaultPathBond;
  constexpr unsigned int circularBond = ZQFPBondType::DefaultCircularBond;
  constexpr unsigned int treeBond = ZQFPBondType::DefaultTreeBond;
  const unsigned int charge = ignoreChargeAndHyb ? ZQFPAtomType::FCharge : 0;
  const unsigned int chargeAndHyb = ignoreChargeAndHyb ? charge | ZQFPAtomType::Hyb : 0;
  switch (fptype) {
    case ZQFPType::MACCS166:
      return ZQGetMACCS166FPType(ZQGetFingerPrintVersion(fptype));
    case ZQFPType::Path:
      return ZQGetPathFPType(4096, 0, 5, pathAtom & ~chargeAndHyb, pathBond);
    case ZQFPType::Lingo:
      return ZQGetLingoFPType(ZQGetFingerPrintVersion(fptype));
    case ZQFPType::Circular:
      return ZQGetCircularFPType(4096, 0, 5, circularAtom & ~charge, circularBond);
    case ZQFPType::Tree:
      return ZQGetTreeFPType(4096, 0, 4, treeAtom & ~chargeAndHyb, treeBond);
    case ZQFPType::UnhashedPath:
      return ZQGetUnhashedPathFPType(ZQGetFingerPrintVersion(fptype), 0, 5, pathAtom, pathBond);
    case ZQFPType::UnhashedCircular:
      return ZQGetUnhashedCircularFPType(ZQGetFingerPrintVersion(fptype), 0, 5, circularAtom,
                                         circularBond);
    case ZQFPType::UnhashedTree:
      return ZQGetUnhashedTreeFPType(ZQGetFingerPrintVersion(fptype), 0, 4, treeAtom, treeBond);
    default:
      ZQThrow.Warning("ZQGetFPType() unknown fingerprint type");
      return nullptr;
  }
}

const ZQFPTypeBase* ZQGetPathFPType(unsigned int numbits, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return ZQGetFPType(zqPathKind, {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetPathFPType(unsigned short version, unsigned int numbits,
                                    unsigned int minbonds, unsigned int maxbonds,
                                    unsigned int atype, unsigned int btype) {
  return ZQGetFPType(zqPathKind, version, {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetCircularFPType(unsigned int numbits, unsigned int minradius,
                                        unsigned int maxradius, unsigned int atype,
                                        unsigned int btype) {
  return ZQGetFPType(zqCircularKind, {numbits, minradius, maxradius, atype, btype});
}

const ZQFPTypeBase* ZQGetCircularFPType(unsigned short version, unsigned int numbits,
                                        unsigned int minradius, unsigned int maxradius,
                                        unsigned int atype, unsigned int btype) {
  return ZQGetFPType(zqCircularKind, version, {numbits, minradius, maxradius, atype, btype});
}

const ZQFPTypeBase* ZQGetTreeFPType(unsigned int numbits, unsigned int minbonds,
                                    unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return ZQGetFPType(zqTreeKind, {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetTreeFPType(unsigned short version, unsigned int numbits,
                                    unsigned int minbonds, unsigned int maxbonds,
                                    unsigned int atype, unsigned int btype) {
  return ZQGetFPType(zqTreeKind, version, {numbits, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetUnhashedPathFPType(unsigned short version, unsigned int minbonds,
                                            unsigned int maxbonds, unsigned int atype,
                                            unsigned int btype) {
  return ZQGetFPType(zqUnhashedPathKind, version, {0, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetUnhashedCircularFPType(unsigned short version, unsigned int minradius,
                                                unsigned int maxradius, unsigned int atype,
                                                unsigned int btype) {
  return ZQGetFPType(zqUnhashedCircularKind, version, {0, minradius, maxradius, atype, btype});
}

const ZQFPTypeBase* ZQGetUnhashedTreeFPType(unsigned short version, unsigned int minbonds,
                                            unsigned int maxbonds, unsigned int atype,
                                            unsigned int btype) {
  return ZQGetFPType(zqUnhashedTreeKind, version, {0, minbonds, maxbonds, atype, btype});
}

const ZQFPTypeBase* ZQGetLingoFPType(unsigned short version) {
  return ZQGetFPType(zqLingoKind, version);
}

const ZQFPTypeBase* ZQGetMACCS166FPType(unsigned short version) {
  return ZQGetFPType(zqMACCS166Kind, version);
}

}  // namespace ZQKorvex
