#include "korvex/fpkinds.h"

#include <string_view>

#include "korvex/circular.h"
#include "korvex/fpatomtyper.h"
#include "korvex/fptypes.h"
#include "korvex/fpversion.h"
#include "korvex/lingo.h"
#include "korvex/maccs.h"
#include "korvex/path.h"
#include "korvex/tree.h"
#include "korvex/unhashed.h"

namespace ZQKorvex {

namespace {

template <class Type>
ZQFPTypeBase* NewType(unsigned short version, std::uint64_t id) {
  return new Type(version, id);
}

constexpr unsigned int any = ~0U;

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
     .newType = NewType<ZQFPPathType>,
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
     .newType = NewType<ZQFPCircularType>,
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
     .newType = NewType<ZQFPTreeType>,
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
     .newType = NewType<ZQFPUnhashedPathType>,
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
     .newType = NewType<ZQFPUnhashedCircularType>,
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
     .newType = NewType<ZQFPUnhashedTreeType>,
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
     .newType = NewType<ZQFPMACCS166Type>,
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
     .newType = NewType<ZQFPLingoType>,
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
