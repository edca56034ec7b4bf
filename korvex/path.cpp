#include "korvex/path.h"

#include "korvex/hashed_local.h"
#include "korvex/path_local.h"

namespace ZQKorvex {

namespace {

constexpr ZQHashedKind pathKind{
    zqPathKind, "ZQMakePathFP()",
    "path",     {4096, 0, 5, ZQFPAtomType::DefaultPathAtom, ZQFPBondType::DefaultPathBond},
    20,         "!",
    ""};

// Into a set or, behind one another, into a vector.
template <class Ids, class T>
unsigned int GenerateIds(const char* name, Ids& ids, const ZQMolBase& mol,
                         std::vector<T>& atomInvariants, std::vector<T>& bondInvariants,
                         unsigned int minbonds, unsigned int maxbonds) {
  return ZQCollectIds(name, ids, [&] {
    PathGenerator<T>(mol, atomInvariants, bondInvariants, minbonds, maxbonds)
        .ForEachPath([&ids](const T& id) { ids.insert(ids.end(), id); });
  });
}

}  // namespace

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                  unsigned int minbonds, unsigned int maxbonds, unsigned int atype,
                  unsigned int btype) {
  return ZQMakeHashedFP(
      fp, mol, pathKind, {numbits, minbonds, maxbonds, atype, btype}, true,
      [](const ZQMolBase& copy, std::vector<unsigned int>& atomInvariants,
         std::vector<unsigned int>& bondInvariants, const ZQFPTypeValues& values, ZQFolder fold) {
        PathGenerator<unsigned int>(copy, atomInvariants, bondInvariants, values.minDistance,
                                    values.maxDistance)
            .ForEachPath(fold);
      });
}

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  const auto& [numbits, min, max, atype, btype] = pathKind.defaults;
  return ZQMakePathFP(fp, mol, numbits, min, max, atype, btype);
}

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (!type || type->GetFPType() != ZQFPType::Path) {
    ZQThrow.Warning("%s : invalid path fingerprint type!", "ZQMakePathFP");
    return false;
  }
  const auto [numbits, min, max, atype, btype] = ZQUnpackFPTypeID(zqPathKind, type->GetID());
  if (!ZQMakePathFP(fp, mol, numbits, min, max, atype, btype)) return false;
  return ZQ_ASSERT(fp.GetFPTypeBase() == type);
}

unsigned int ZQPathIdGenerator(std::set<unsigned int>& ids, const ZQMolBase& mol,
                               std::vector<unsigned int>& atomInvariants,
                               std::vector<unsigned int>& bondInvariants, unsigned int minbonds,
                               unsigned int maxbonds) {
  return GenerateIds("ZQPathIdGenerator()", ids, mol, atomInvariants, bondInvariants, minbonds,
                     maxbonds);
}

unsigned int ZQPathIdGenerator(std::set<std::string>& ids, const ZQMolBase& mol,
                               std::vector<std::string>& atomInvariants,
                               std::vector<std::string>& bondInvariants, unsigned int minbonds,
                               unsigned int maxbonds) {
  return GenerateIds("ZQPathIdGenerator()", ids, mol, atomInvariants, bondInvariants, minbonds,
                     maxbonds);
}

unsigned int ZQPathIdGeneratorStack(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                                    std::vector<unsigned int>& atomInvariants,
                                    std::vector<unsigned int>& bondInvariants,
                                    unsigned int minbonds, unsigned int maxbonds) {
  return GenerateIds("ZQPathIdGeneratorStack()", ids, mol, atomInvariants, bondInvariants, minbonds,
                     maxbonds);
}

unsigned int ZQPathIdGeneratorStack(std::vector<std::string>& ids, const ZQMolBase& mol,
                                    std::vector<std::string>& atomInvariants,
                                    std::vector<std::string>& bondInvariants, unsigned int minbonds,
                                    unsigned int maxbonds) {
  return GenerateIds("ZQPathIdGeneratorStack()", ids, mol, atomInvariants, bondInvariants, minbonds,
                     maxbonds);
}

}  // namespace ZQKorvex
