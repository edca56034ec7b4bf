#include "korvex/circular.h"

#include "korvex/circular_local.h"
#include "korvex/hashed_local.h"

namespace ZQKorvex {

namespace {

constexpr ZQHashedKind circularKind{
    zqCircularKind,
    "ZQMakeCircularFP()",
    "circular",
    {4096, 0, 5, ZQFPAtomType::DefaultCircularAtom, ZQFPBondType::DefaultCircularBond},
    10,
    "",
    " 5"};

template <class T>
unsigned int GenerateIds(std::vector<T>& ids, const ZQMolBase& mol,
                         const std::vector<T>& atomInvariants, const std::vector<T>& bondInvariants,
                         unsigned int minradius, unsigned int maxradius) {
  ids.clear();
  return ZQCollectIds("ZQCircularIdGenerator()", ids, [&] {
    CircularGenerator<T>(mol, atomInvariants, bondInvariants, minradius, maxradius)
        .ForEachCircular([&ids](const T& id) { ids.push_back(id); });
  });
}

}  // namespace

bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                      unsigned int minradius, unsigned int maxradius, unsigned int atype,
                      unsigned int btype) {
  // Symmetry isn't perceived: a ball is cheaper than its share of the search would be.
  return ZQMakeHashedFP(fp, mol, circularKind, {numbits, minradius, maxradius, atype, btype}, false,
                        [](const ZQMolBase& copy, const std::vector<unsigned int>& atomInvariants,
                           const std::vector<unsigned int>& bondInvariants,
                           const ZQFPTypeValues& values, ZQFolder fold) {
                          CircularGenerator<unsigned int>(copy, atomInvariants, bondInvariants,
                                                          values.minDistance, values.maxDistance)
                              .ForEachCircular(fold);
                        });
}

bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  const auto& [numbits, min, max, atype, btype] = circularKind.defaults;
  return ZQMakeCircularFP(fp, mol, numbits, min, max, atype, btype);
}

bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (!type || type->GetFPType() != ZQFPType::Circular) {
    ZQThrow.Warning("%s : invalid circular fingerprint type", "ZQMakeCircularFP");
    return false;
  }
  const auto [numbits, min, max, atype, btype] = ZQUnpackFPTypeID(zqCircularKind, type->GetID());
  if (!ZQMakeCircularFP(fp, mol, numbits, min, max, atype, btype)) return false;
  return ZQ_ASSERT(fp.GetFPTypeBase() == type);
}

unsigned int ZQCircularIdGenerator(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                   const std::vector<unsigned int>& atomInvariants,
                                   const std::vector<unsigned int>& bondInvariants,
                                   unsigned int minradius, unsigned int maxradius,
                                   unsigned int /*atype*/, unsigned int /*btype*/) {
  return GenerateIds(ids, mol, atomInvariants, bondInvariants, minradius, maxradius);
}

unsigned int ZQCircularIdGenerator(std::vector<std::string>& ids, const ZQMolBase& mol,
                                   const std::vector<std::string>& atomInvariants,
                                   const std::vector<std::string>& bondInvariants,
                                   unsigned int minradius, unsigned int maxradius,
                                   unsigned int /*atype*/, unsigned int /*btype*/) {
  return GenerateIds(ids, mol, atomInvariants, bondInvariants, minradius, maxradius);
}

}  // namespace ZQKorvex
