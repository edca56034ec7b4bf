#include "korvex/unhashed.h"

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <limits>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "korvex/circular_local.h"
#include "korvex/hashed_local.h"
#include "korvex/path_local.h"
#include "korvex/tree_local.h"

namespace ZQKorvex {

namespace {

/// How one unhashed kind differs from the others.
struct UnhashedKind {
  const ZQFPKind& kind;
  const char* makeName;   ///< of the operation in messages
  const char* wrongType;  ///< the message on a type of another kind
  bool perceivesSymmetry;
  unsigned int extraBytes;  ///< behind the text
  bool isReadBack;          ///< the bits are checked to hold the identifiers
  bool hasBalls;            ///< which hold all neighbours of an atom
};

constexpr UnhashedKind pathKind{zqUnhashedPathKind,
                                "ZQMakeUnhashedPathFP()",
                                "Invalid path fingerprint type",
                                true,
                                1,
                                false,
                                false};
constexpr UnhashedKind circularKind{zqUnhashedCircularKind,
                                    "ZQMakeUnhashedCircularFP()",
                                    "Invalid circular fingerprint type",
                                    false,
                                    0,
                                    true,
                                    true};
constexpr UnhashedKind treeKind{zqUnhashedTreeKind,
                                "ZQMakeUnhashedTreeFP()",
                                "Invalid unhashed tree fingerprint type",
                                true,
                                0,
                                true,
                                false};

using Ids = std::vector<std::string_view>;

std::string TextOf(const Ids& ids) {
  std::size_t size = 0;
  for (const std::string_view id : ids) size += id.size() + 1;
  std::string text;
  text.reserve((size + 7) / 8 * 8);
  for (const std::string_view id : ids) text.append(id).append(1, ' ');
  text.resize((size + 7) / 8 * 8, ' ');
  if (!text.empty()) text.back() = '\0';
  return text;
}

void Store(ZQFingerPrint& fp, const std::string& text, unsigned int extraBytes) {
  const std::size_t numbits = text.empty() ? 0 : 8 * (text.size() + extraBytes);
  constexpr std::size_t most = std::numeric_limits<unsigned int>::max();
  fp.SetSize(static_cast<unsigned int>(std::min(numbits, most)));  // reports what is too large
  if (fp.GetSize() == numbits) std::memcpy(fp.Words(), text.data(), text.size());
}

/// Whether the bits read as the identifiers.
bool HoldsIds(const ZQFingerPrint& fp, const Ids& ids) {
  if (fp.GetSize() == 0) return ids.empty();
  const auto* bytes = reinterpret_cast<const char*>(fp.Words());
  std::string_view rest(bytes, strnlen(bytes, fp.GetSize() / 8));
  for (const std::string_view id : ids) {
    rest.remove_prefix(std::min(rest.find_first_not_of(' '), rest.size()));
    if (rest.substr(0, rest.find(' ')) != id) return false;
    rest.remove_prefix(id.size());
  }
  return rest.find_first_not_of(' ') == std::string_view::npos;
}

// Whether an atom has more neighbours than the text of a ball can order. False after an error.
bool HasNameableBalls(const ZQMolBase& mol, const char* makeName) {
  constexpr unsigned int most = std::numeric_limits<std::int8_t>::max();
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    const unsigned int neighbours = atom->GetHvyDegree();
    if (neighbours <= most) continue;
    ZQThrow.Error("%s : an atom with %u neighbours (at most %u can be told apart in a text)",
                  makeName, neighbours, most);
    return false;
  }
  return true;
}

/// Makes the fingerprint. `generate` gets the working copy, its strings, and a function to call
/// with each identifier.
template <class Generate>
bool MakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const UnhashedKind& kind,
            const ZQFPTypeValues& values, Generate generate) {
  if (!mol.IsValid()) {
    fp.SetFPTypeBase(nullptr);
    return false;
  }
  fp.ClearBits();
  const bool done = ZQGuardMemory(kind.makeName, [&] {
    ZQGraphMol copy(mol);
    ZQPrepareForFingerprinting(copy, kind.kind.number);
    if (kind.perceivesSymmetry && ZQIsSymmetryWorthwhile(mol, values.maxDistance)) {
      ZQPerceiveSymmetry(copy, true, false);
    }
    if (kind.hasBalls && values.maxDistance != 0 && !HasNameableBalls(copy, kind.makeName)) {
      return false;
    }
    std::vector<std::string> atomIds;
    std::vector<std::string> bondIds;
    ZQGetFingerprintAtomTypes(atomIds, bondIds, copy, values.atype, values.btype);
    // Most identifiers of a molecule are repeats, which a hash set drops without sorting them.
    std::unordered_set<std::string> distinct;
    generate(copy, atomIds, bondIds, [&distinct](const std::string& id) { distinct.insert(id); });
    Ids ids(distinct.begin(), distinct.end());
    std::ranges::sort(ids);
    Store(fp, TextOf(ids), kind.extraBytes);
    return !kind.isReadBack || ZQ_ASSERT(HoldsIds(fp, ids));
  });
  fp.SetFPTypeBase(done ? ZQGetFPType(kind.kind, values) : nullptr);
  return static_cast<bool>(fp);
}

using MakeOperation = bool (*)(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int min,
                               unsigned int max, unsigned int atype, unsigned int btype);

bool MakeFPOfType(ZQFingerPrint& fp, const ZQMolBase& mol, const UnhashedKind& kind,
                  const ZQFPTypeBase* type, MakeOperation make) {
  if (!type || type->GetFPType() != kind.kind.number) {
    ZQThrow.Error("%s", kind.wrongType);
    return false;
  }
  const ZQFPTypeValues values = ZQUnpackFPTypeID(kind.kind, type->GetID());
  return make(fp, mol, values.minDistance, values.maxDistance, values.atype, values.btype) &&
         ZQ_ASSERT(fp.GetFPTypeBase() == type);
}

}  // namespace

bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                          unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return MakeFP(
      fp, mol, pathKind, {0, minbonds, maxbonds, atype, btype},
      [=](const ZQMolBase& copy, std::vector<std::string>& atomIds,
          std::vector<std::string>& bondIds, auto sink) {
        PathGenerator<std::string>(copy, atomIds, bondIds, minbonds, maxbonds).ForEachPath(sink);
      });
}

bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minradius,
                              unsigned int maxradius, unsigned int atype, unsigned int btype) {
  return MakeFP(fp, mol, circularKind, {0, minradius, maxradius, atype, btype},
                [=](const ZQMolBase& copy, const std::vector<std::string>& atomIds,
                    const std::vector<std::string>& bondIds, auto sink) {
                  if (minradius > maxradius) return;  // no ball has such a radius
                  CircularGenerator<std::string>(copy, atomIds, bondIds, minradius, maxradius)
                      .ForEachCircular(sink);
                });
}

bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                          unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return MakeFP(
      fp, mol, treeKind, {0, minbonds, maxbonds, atype, btype},
      [=](const ZQMolBase& copy, const std::vector<std::string>& atomIds,
          const std::vector<std::string>& bondIds, auto sink) {
        TreeGenerator<std::string>(copy, atomIds, bondIds, minbonds, maxbonds).ForEachTree(sink);
      });
}

bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return MakeFPOfType(fp, mol, pathKind, type, ZQMakeUnhashedPathFP);
}

bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return MakeFPOfType(fp, mol, circularKind, type, ZQMakeUnhashedCircularFP);
}

bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return MakeFPOfType(fp, mol, treeKind, type, ZQMakeUnhashedTreeFP);
}

}  // namespace ZQKorvex
