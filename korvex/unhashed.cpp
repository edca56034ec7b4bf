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
#include "korvex/fpatomtyper.h"
#include "korvex/path_local.h"
#include "korvex/tree_local.h"
#include "korvex/unhashed_local.h"

namespace ZQKorvex {

namespace {

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
  fp.SetSize(static_cast<unsigned int>(std::min(numbits, most)));  // reports too large a size
  if (fp.GetSize() == numbits) std::memcpy(fp.Words(), text.data(), text.size());
}

/// Whether the bits decode to the identifiers.
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

bool AddPaths(const ZQMolBase& mol, std::vector<std::string>& atomIds,
              std::vector<std::string>& bondIds, const ZQFPTypeValues& values, ZQAddText add) {
  PathGenerator<std::string>(mol, atomIds, bondIds, values.minDistance, values.maxDistance)
      .ForEachPath(add);
  return true;
}

bool FillPaths(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
               const ZQFPTypeValues& values) {
  return ZQFillUnhashedFP(fp, mol, kind, values, {.extraBytes = 1, .isReadBack = false}, AddPaths);
}

bool AddEnvironments(const ZQMolBase& mol, std::vector<std::string>& atomIds,
                     std::vector<std::string>& bondIds, const ZQFPTypeValues& values,
                     ZQAddText add) {
  const char* const operation = ZQGetFPKind(ZQFPType::UnhashedCircular).texts.operation;
  if (values.maxDistance != 0 && !ZQHasNameableEnvironments(mol, operation)) return false;
  if (values.minDistance > values.maxDistance) return true;  // no environment has such a radius
  CircularGenerator<std::string>(mol, atomIds, bondIds, values.minDistance, values.maxDistance)
      .ForEachCircular(add);
  return true;
}

bool FillEnvironments(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                      const ZQFPTypeValues& values) {
  return ZQFillUnhashedFP(fp, mol, kind, values, {.extraBytes = 0, .isReadBack = true},
                          AddEnvironments);
}

bool AddTrees(const ZQMolBase& mol, std::vector<std::string>& atomIds,
              std::vector<std::string>& bondIds, const ZQFPTypeValues& values, ZQAddText add) {
  TreeGenerator<std::string>(mol, atomIds, bondIds, values.minDistance, values.maxDistance)
      .ForEachTree(add);
  return true;
}

bool FillTrees(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
               const ZQFPTypeValues& values) {
  return ZQFillUnhashedFP(fp, mol, kind, values, {.extraBytes = 0, .isReadBack = true}, AddTrees);
}

}  // namespace

bool ZQFillUnhashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                      const ZQFPTypeValues& values, ZQTextForm form, ZQAddIds addIds) {
  fp.ClearBits();
  ZQGraphMol copy = ZQPreparedCopy(mol, kind, values);
  std::vector<std::string> atomIds;
  std::vector<std::string> bondIds;
  ZQGetFingerprintAtomTypes(atomIds, bondIds, copy, values.atype, values.btype);
  // Most identifiers of a molecule are repeats, which a hash set drops without sorting.
  std::unordered_set<std::string> distinct;
  if (!addIds(copy, atomIds, bondIds, values, {distinct})) return false;
  Ids ids(distinct.begin(), distinct.end());
  std::ranges::sort(ids);
  Store(fp, TextOf(ids), form.extraBytes);
  return !form.isReadBack || ZQ_ASSERT(HoldsIds(fp, ids));
}

bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                          unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return ZQMakeFP(fp, mol, ZQGetFPKind(ZQFPType::UnhashedPath),
                  {0, minbonds, maxbonds, atype, btype}, FillPaths);
}

bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minradius,
                              unsigned int maxradius, unsigned int atype, unsigned int btype) {
  return ZQMakeFP(fp, mol, ZQGetFPKind(ZQFPType::UnhashedCircular),
                  {0, minradius, maxradius, atype, btype}, FillEnvironments);
}

bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, unsigned int minbonds,
                          unsigned int maxbonds, unsigned int atype, unsigned int btype) {
  return ZQMakeFP(fp, mol, ZQGetFPKind(ZQFPType::UnhashedTree),
                  {0, minbonds, maxbonds, atype, btype}, FillTrees);
}

bool ZQMakeUnhashedPathFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeFP(fp, mol, ZQGetFPKind(ZQFPType::UnhashedPath), type, FillPaths);
}

bool ZQMakeUnhashedCircularFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeFP(fp, mol, ZQGetFPKind(ZQFPType::UnhashedCircular), type, FillEnvironments);
}

bool ZQMakeUnhashedTreeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPTypeBase* type) {
  return ZQMakeFP(fp, mol, ZQGetFPKind(ZQFPType::UnhashedTree), type, FillTrees);
}

}  // namespace ZQKorvex
