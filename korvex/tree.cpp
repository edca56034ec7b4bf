#include "korvex/tree.h"

#include "korvex/hashed_local.h"
#include "korvex/tree_local.h"

namespace ZQKorvex {

namespace {

constexpr ZQHashedKind treeKind{
    zqTreeKind, "ZQMakeTreeFP()",
    "tree",     {4096, 0, 4, ZQFPAtomType::DefaultTreeAtom, ZQFPBondType::DefaultTreeBond},
    20,         "",
    ""};

template <class T>
unsigned int GenerateIds(std::vector<T>& ids, const ZQMolBase& mol,
                         const std::vector<T>& atomInvariants, const std::vector<T>& bondInvariants,
                         unsigned int minbonds, unsigned int maxbonds) {
  ids.clear();
  return ZQCollectIds("ZQTreeIdGenerator()", ids, [&] {
    TreeGenerator<T>(mol, atomInvariants, bondInvariants, minbonds, maxbonds)
        .ForEachTree([&ids](const T& id) { ids.push_back(id); });
  });
}

}  // namespace

bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int numbits,
                  unsigned int minbonds, unsigned int maxbonds, unsigned int atype,
                  unsigned int btype) {
  return ZQMakeHashedFP(fp, mol, treeKind, {numbits, minbonds, maxbonds, atype, btype}, true,
                        [](const ZQMolBase& copy, const std::vector<unsigned int>& atomInvariants,
                           const std::vector<unsigned int>& bondInvariants,
                           const ZQFPTypeValues& values, ZQFolder fold) {
                          TreeGenerator<unsigned int>(copy, atomInvariants, bondInvariants,
                                                      values.minDistance, values.maxDistance)
                              .ForEachTree(fold);
                        });
}

bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  const auto& [numbits, min, max, atype, btype] = treeKind.defaults;
  return ZQMakeTreeFP(fp, mol, numbits, min, max, atype, btype);
}

bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  if (!type || type->GetFPType() != ZQFPType::Tree) {
    ZQThrow.Error("%s ;invalid tree fingerprint type", "ZQMakeTreeFP");
    return false;
  }
  const auto [numbits, min, max, atype, btype] = ZQUnpackFPTypeID(zqTreeKind, type->GetID());
  if (!ZQMakeTreeFP(fp, mol, numbits, min, max, atype, btype)) return false;
  return ZQ_ASSERT(fp.GetFPTypeBase() == type);
}

unsigned int ZQTreeIdGenerator(std::vector<unsigned int>& ids, const ZQMolBase& mol,
                               const std::vector<unsigned int>& atomInvariants,
                               const std::vector<unsigned int>& bondInvariants,
                               unsigned int minbonds, unsigned int maxbonds, unsigned int /*atype*/,
                               unsigned int /*btype*/) {
  return GenerateIds(ids, mol, atomInvariants, bondInvariants, minbonds, maxbonds);
}

unsigned int ZQTreeIdGenerator(std::vector<std::string>& ids, const ZQMolBase& mol,
                               const std::vector<std::string>& atomInvariants,
                               const std::vector<std::string>& bondInvariants,
                               unsigned int minbonds, unsigned int maxbonds, unsigned int /*atype*/,
                               unsigned int /*btype*/) {
  return GenerateIds(ids, mol, atomInvariants, bondInvariants, minbonds, maxbonds);
}

}  // namespace ZQKorvex
