#pragma once

/// The code shared by the unhashed kinds: making a text from a prepared molecule.

#include <string>
#include <unordered_set>
#include <vector>

#include "korvex/fpkinds_local.h"

namespace ZQKorvex {

/// The format of a kind's text.
struct ZQTextForm {
  unsigned int extraBytes;  ///< after the text
  bool isReadBack;          ///< checks that the bits contain the identifiers
};

/// Collects distinct identifiers.
struct ZQAddText {
  std::unordered_set<std::string>& texts;
  void operator()(const std::string& text) const { texts.insert(text); }
};

/// Calls `add` with each identifier of a prepared molecule with the given strings. False after
/// reporting an error.
using ZQAddIds = bool (*)(const ZQMolBase& mol, std::vector<std::string>& atomIds,
                          std::vector<std::string>& bondIds, const ZQFPTypeValues& values,
                          ZQAddText add);

/// A `ZQFillFP` with two more arguments.
bool ZQFillUnhashedFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                      const ZQFPTypeValues& values, ZQTextForm form, ZQAddIds addIds);

}  // namespace ZQKorvex
