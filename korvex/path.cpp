#include "korvex/path.h"

#include "korvex/hashed_local.h"
#include "korvex/memory_local.h"
#include "korvex/path_local.h"

namespace ZQKorvex {

namespace {

void FoldIds(const ZQMolBase& mol, std::vector<unsigned int>& atomInvariants,
             std::vector<unsigned int>& bondInvariants, const ZQFPTypeValues& values,
             ZQFolder fold) {
  PathGenerator<unsigned int>(mol, atomInvariants, bondInvariants, values.minDistance,
                              values.maxDistance)
      .ForEachPath(fold);
}
constexpr ZQFillFP fill = ZQFillHashedFP<FoldIds>;

const ZQFPKind& Kind() { return ZQGetFPKind(ZQFPType::Path); }

// Adds the identifiers to a set or appends them to a vector.
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
  return ZQMakeFP(fp, mol, Kind(), {numbits, minbonds, maxbonds, atype, btype}, fill);
}

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  return ZQMakeFP(fp, mol, Kind(), Kind().defaults, fill);
}

bool ZQMakePathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeFP(fp, mol, Kind(), type, fill);
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
