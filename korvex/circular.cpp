#include "korvex/circular.h"

#include "korvex/circular_local.h"
#include "korvex/hashed_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

void FoldIds(const ZQMolBase& mol, std::vector<unsigned int>& atomInvariants,
             std::vector<unsigned int>& bondInvariants, const ZQFPTypeValues& values,
             ZQFolder fold) {
  CircularGenerator<unsigned int>(mol, atomInvariants, bondInvariants, values.minDistance,
                                  values.maxDistance)
      .ForEachCircular(fold);
}
constexpr ZQFillFP fill = ZQFillHashedFP<FoldIds>;

const ZQFPKind& Kind() { return ZQGetFPKind(ZQFPType::Circular); }

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
  return ZQMakeFP(fp, mol, Kind(), {numbits, minradius, maxradius, atype, btype}, fill);
}

bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol) {
  return ZQMakeFP(fp, mol, Kind(), Kind().defaults, fill);
}

bool ZQMakeCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeFP(fp, mol, Kind(), type, fill);
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
