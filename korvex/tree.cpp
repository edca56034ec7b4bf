#include "korvex/tree.h"

#include "korvex/hashed_local.h"
#include "korvex/memory_local.h"
#include "korvex/tree_local.h"

namespace ZQKorvex {

namespace {

void FoldIds(const ZQMolBase& mol, std::vector<unsigned int>& atomInvariants,
             std::vector<unsigned int>& bondInvariants, const ZQFPTypeValues& values,
             ZQFolder fold) {
  TreeGenerator<unsigned int>(mol, atomInvariants, bondInvariants, values.minDistance,
                              values.maxDistance)
      .ForEachTree(fold);
}
constexpr ZQFillFP fill = ZQFillHashedFP<FoldIds>;

const ZQFPKind& Kind() { return ZQGetFPKind(ZQFPType::Tree); }

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
  return ZQMakeFP(fp, mol, Kind(), {numbits, minbonds, maxbonds, atype, btype}, fill);
}

bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  return ZQMakeFP(fp, mol, Kind(), Kind().defaults, fill);
}

bool ZQMakeTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeFP(fp, mol, Kind(), type, fill);
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
