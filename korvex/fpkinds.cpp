#include "korvex/fpkinds.h"

#include <string_view>
#include <type_traits>

#include "korvex/circular.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fppattern_local.h"
#include "korvex/fptypes.h"
#include "korvex/fpversion.h"
#include "korvex/lingo.h"
#include "korvex/maccs.h"
#include "korvex/path.h"
#include "korvex/tree.h"
#include "korvex/unhashed.h"

namespace ZQKorvex {

namespace {

// Only kinds with parameters have a type class of their own.
template <class T>
using Factory = std::conditional_t<std::is_same_v<T, ZQFPTypeOfKind<T::number>>,
                                   ZQFPTypeFactoryNoParams<T>, ZQFPTypeFactory<T>>;

// The factory of the process. Usable while other files are being initialised.
template <class T>
Factory<T>& FactoryOf() {
  static Factory<T> factory(ZQFindFPKind(T::number));
  return factory;
}

template <class T>
const ZQFPTypeBase* Intern(unsigned short version, std::uint64_t id) {
  if constexpr (std::is_same_v<Factory<T>, ZQFPTypeFactoryNoParams<T>>) {
    return FactoryOf<T>().GetFPType(version);
  } else {
    return FactoryOf<T>().GetFPType(version, id);
  }
}

constexpr unsigned int any = ~0U;

constexpr ZQFPKindFragments noFragments{nullptr, nullptr, nullptr, nullptr, false, zqNoFragments};

constexpr ZQFPKind rows[] = {
    {.number = ZQFPType::Path,
     .name = "Path",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::Bits,
     .isStorable = true,
     .sizeKey = "size",
     .distanceKey = "bonds",
     .defaults = {4096, 0, 5, ZQFPAtomType::DefaultPathAtom, ZQFPBondType::DefaultPathBond},
     .distanceLimit = 19,
     .largestUnrepaired = 20,
     .readsPreparedMolecules = false,
     .perceivesSymmetry = true,
     .make = ZQMakePathFP,
     .intern = Intern<ZQFPPathType>,
     .fragments = {ZQGetPathFPPatterns, ZQGetPathFPCoverage, ZQGetPathFPOverlap,
                   ZQCollectPathFragments, true, nullptr},
     .texts = {"ZQMakePathFP()", "ZQMakePathFP : invalid path fingerprint type!", false,
               "Unrecognised data in ZQFPPathType!", "path", "!", ""}},
    {.number = ZQFPType::Circular,
     .name = "Circular",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::Bits,
     .isStorable = true,
     .sizeKey = "size",
     .distanceKey = "radius",
     .defaults = {4096, 0, 5, ZQFPAtomType::DefaultCircularAtom, ZQFPBondType::DefaultCircularBond},
     .distanceLimit = 255,
     .largestUnrepaired = 10,
     .readsPreparedMolecules = false,
     .perceivesSymmetry = false,  // costs more than it saves on environments
     .make = ZQMakeCircularFP,
     .intern = Intern<ZQFPCircularType>,
     .fragments = {ZQGetCircularFPPatterns, ZQGetCircularFPCoverage, ZQGetCircularFPOverlap,
                   ZQCollectCircularFragments, false, nullptr},
     .texts = {"ZQMakeCircularFP()", "ZQMakeCircularFP : invalid circular fingerprint type", false,
               "Unrecognised data in ZQFPCircularType!", "circular", "", " 5"}},
    {.number = ZQFPType::Tree,
     .name = "Tree",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::Bits,
     .isStorable = true,
     .sizeKey = "size",
     .distanceKey = "bonds",
     .defaults = {4096, 0, 4, ZQFPAtomType::DefaultTreeAtom, ZQFPBondType::DefaultTreeBond},
     .distanceLimit = 19,
     .largestUnrepaired = 20,
     .readsPreparedMolecules = false,
     .perceivesSymmetry = true,
     .make = ZQMakeTreeFP,
     .intern = Intern<ZQFPTreeType>,
     .fragments = {ZQGetTreeFPPatterns, ZQGetTreeFPCoverage, ZQGetTreeFPOverlap,
                   ZQCollectTreeFragments, false, nullptr},
     .texts = {"ZQMakeTreeFP()", "ZQMakeTreeFP ;invalid tree fingerprint type", true,
               "Unrecognised data in ZQFPTreeType!", "tree", "", ""}},
    {.number = ZQFPType::UnhashedPath,
     .name = "UHPath",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::Tokens,
     .isStorable = false,
     .sizeKey = "numbits",
     .distanceKey = "bonds",
     .defaults = {0, 0, 5, ZQFPAtomType::DefaultPathAtom, ZQFPBondType::DefaultPathBond},
     .distanceLimit = 255,
     .largestUnrepaired = any,
     .readsPreparedMolecules = false,
     .perceivesSymmetry = true,
     .make = ZQMakeUnhashedPathFP,
     .intern = Intern<ZQFPUnhashedPathType>,
     .fragments = noFragments,
     .texts = {"ZQMakeUnhashedPathFP()", "Invalid path fingerprint type", true,
               "Unrecognised data!", nullptr, nullptr, nullptr}},
    {.number = ZQFPType::UnhashedCircular,
     .name = "UHCircular",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::Tokens,
     .isStorable = false,
     .sizeKey = "numbits",
     .distanceKey = "radius",
     .defaults = {0, 0, 5, ZQFPAtomType::DefaultCircularAtom, ZQFPBondType::DefaultCircularBond},
     .distanceLimit = 9,
     .largestUnrepaired = any,
     .readsPreparedMolecules = false,
     .perceivesSymmetry = false,
     .make = ZQMakeUnhashedCircularFP,
     .intern = Intern<ZQFPUnhashedCircularType>,
     .fragments = noFragments,
     .texts = {"ZQMakeUnhashedCircularFP()", "Invalid circular fingerprint type", true,
               "Unrecognised data!", nullptr, nullptr, nullptr}},
    {.number = ZQFPType::UnhashedTree,
     .name = "UHTree",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::TokensOrBits,
     .isStorable = false,
     .sizeKey = "numbits",
     .distanceKey = "bonds",
     .defaults = {0, 0, 4, ZQFPAtomType::DefaultTreeAtom, ZQFPBondType::DefaultTreeBond},
     .distanceLimit = 19,
     .largestUnrepaired = any,
     .readsPreparedMolecules = false,
     .perceivesSymmetry = true,
     .make = ZQMakeUnhashedTreeFP,
     .intern = Intern<ZQFPUnhashedTreeType>,
     .fragments = noFragments,
     .texts = {"ZQMakeUnhashedTreeFP()", "Invalid unhashed tree fingerprint type", true,
               "Unrecognised data!", nullptr, nullptr, nullptr}},
    {.number = ZQFPType::MACCS166,
     .name = "MACCS166",
     .version = ZQPackFingerPrintVersion(2, 2, 0),
     .measures = ZQFPMeasures::Bits,
     .isStorable = false,
     .sizeKey = nullptr,
     .distanceKey = nullptr,
     .defaults = {166, 0, 0, 0, 0},
     .distanceLimit = 0,
     .largestUnrepaired = 0,
     .readsPreparedMolecules = true,
     .perceivesSymmetry = false,
     .make = [](ZQFingerPrint& fp, const ZQMolBase& mol,
                const ZQFPTypeBase*) { return ZQMakeMACCS166FP(fp, mol); },
     .intern = Intern<ZQFPMACCS166Type>,
     .fragments = {nullptr, ZQGetMACCSFPCoverage, ZQGetMACCSFPOverlap, ZQCollectMACCSFragments,
                   false, "is not available for MACCS fingerprint!"},
     .texts = {"ZQMakeMACCS166FP()", nullptr, false, nullptr, nullptr, nullptr, nullptr}},
    {.number = ZQFPType::Lingo,
     .name = "Lingo",
     .version = ZQPackFingerPrintVersion(2, 0, 0),
     .measures = ZQFPMeasures::Lingos,
     .isStorable = false,
     .sizeKey = nullptr,
     .distanceKey = nullptr,
     .defaults = {0, 0, 0, 0, 0},
     .distanceLimit = 0,
     .largestUnrepaired = 0,
     .readsPreparedMolecules = true,
     .perceivesSymmetry = false,
     .make = [](ZQFingerPrint& fp, const ZQMolBase& mol,
                const ZQFPTypeBase*) { return ZQMakeLingoFP(fp, mol); },
     .intern = Intern<ZQFPLingoType>,
     .fragments = {nullptr, nullptr, nullptr, nullptr, false,
                   "is not available for Lingo fingerprint!"},
     .texts = {"ZQMakeLingoFP()", nullptr, false, nullptr, nullptr, nullptr, nullptr}},
};

// A type string's prefix determines its kind, independent of the order of the rows.
constexpr bool AreRowsDistinct() {
  for (const ZQFPKind& a : rows) {
    for (const ZQFPKind& b : rows) {
      if (&a == &b) continue;
      if (a.number == b.number || std::string_view(a.name).starts_with(b.name)) return false;
    }
  }
  return true;
}
static_assert(AreRowsDistinct());

}  // namespace

ZQFPTypeFactoryNoParams<ZQFPMACCS166Type>& maccs166TypeFactory = FactoryOf<ZQFPMACCS166Type>();
ZQFPTypeFactoryNoParams<ZQFPLingoType>& lingoTypeFactory = FactoryOf<ZQFPLingoType>();
ZQFPTypeFactory<ZQFPPathType>& pathTypeFactory = FactoryOf<ZQFPPathType>();
ZQFPTypeFactory<ZQFPCircularType>& circularTypeFactory = FactoryOf<ZQFPCircularType>();
ZQFPTypeFactory<ZQFPTreeType>& treeTypeFactory = FactoryOf<ZQFPTreeType>();
ZQFPTypeFactory<ZQFPUnhashedPathType>& uhpathTypeFactory = FactoryOf<ZQFPUnhashedPathType>();
ZQFPTypeFactory<ZQFPUnhashedCircularType>& uhcircularTypeFactory =
    FactoryOf<ZQFPUnhashedCircularType>();
ZQFPTypeFactory<ZQFPUnhashedTreeType>& uhtreeTypeFactory = FactoryOf<ZQFPUnhashedTreeType>();

std::span<const ZQFPKind> ZQGetFPKinds() { return rows; }

const ZQFPKind* ZQFindFPKind(unsigned int number) {
  const auto* found = std::ranges::find(rows, number, &ZQFPKind::number);
  return found == std::end(rows) ? nullptr : found;
}

const ZQFPKind* ZQFindFPKind(const std::string& typeString) {
  const auto* found = std::ranges::find_if(
      rows, [&typeString](const ZQFPKind& kind) { return typeString.starts_with(kind.name); });
  return found == std::end(rows) ? nullptr : found;
}

}  // namespace ZQKorvex
