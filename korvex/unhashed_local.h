#pragma once

/// What the unhashed kinds have in common: the way from a prepared molecule to a text.

#include <string>
#include <unordered_set>
#include <vector>

#include "korvex/fpkinds_local.h"

namespace ZQKorvex {

/// How a kind stores its text.
struct ZQTextForm {
  unsigned int extraBytes;  ///< behind the text
  bool isReadBack;          ///< the bits are checked to hold the identifiers
};

/// Collects identifiers, each once.
struct ZQAddText {
  std::unordered_set<std::string>& texts;
  void operator()(const std::string& text) const { texts.insert(text); }
};

/// Calls `add` with each identifier of a prepared molecule, whose strings come with it. False after
/// a report.
using ZQAddIds = bool (*)(const ZQMolBase& mol, std::vector<std::string>& atomIds,
                          std::vector<std::string>& bondIds, const ZQFPTypeValues& values,
                          ZQAddText add);

/// A `ZQFillFP` but for its last two arguments.
bool ZQFillUnhashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                      const ZQFPTypeValues& values, ZQTextForm form, ZQAddIds addIds);

}  // namespace ZQKorvex
