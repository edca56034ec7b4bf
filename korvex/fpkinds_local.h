#pragma once

/// What the files of the kinds have in common: their row, and the way from a molecule to a
/// fingerprint that has a type.

#include "contract/quarnel/graphmol.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

/// The row of a number that is in the table.
inline const ZQFPKind& ZQGetFPKind(unsigned int number) { return *ZQFindFPKind(number); }

/// Sizes a fingerprint and sets its bits, those of a valid molecule under parameters that need no
/// repair. False after a report. May throw `std::bad_alloc`.
using ZQFillFP = bool (*)(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                          const ZQFPTypeValues& values);

/// Makes a fingerprint under parameters, of which illegal ones of a hashed kind are repaired with a
/// warning each. False for a molecule that isn't valid, whose fingerprint keeps its bits, and after
/// an error where memory ends; the fingerprint then has no type.
bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind, ZQFPTypeValues values,
              ZQFillFP fill);
/// The same under a type, which the fingerprint then has. A type of another kind is reported; one
/// that `ZQCanMakeFP` refuses is reported and repaired, and the assertion that the fingerprint has
/// this very type then fails.
bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
              const ZQFPTypeBase* type, ZQFillFP fill);

/// A prepared copy of a molecule, with symmetry perceived where the kind has a use for it and
/// finding symmetric atoms, which start equal paths, costs less than it saves.
ZQGraphMol ZQPreparedCopy(const ZQMolBase& mol, const ZQFPKind& kind, const ZQFPTypeValues& values);

}  // namespace ZQKorvex
