#pragma once

/// Common code of the kinds' files: access to their row, and the making of a typed fingerprint from
/// a molecule.

#include "contract/quarnel/graphmol.h"
#include "korvex/fpkinds.h"

namespace ZQKorvex {

/// The row of a number that must be in the table.
inline const ZQFPKind& ZQGetFPKind(unsigned int number) { return *ZQFindFPKind(number); }

/// Sizes a fingerprint and sets its bits, for a valid molecule and parameters that need no repair.
/// Returns false after a message. May throw `std::bad_alloc`.
using ZQFillFP = bool (*)(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
                          const ZQFPTypeValues& values);

/// Makes a fingerprint with parameters; repairs illegal ones of a hashed kind with a warning each.
/// Returns false for an invalid molecule, whose fingerprint keeps its bits, and after an error if
/// memory runs out; the fingerprint then has no type.
bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind, ZQFPTypeValues values,
              ZQFillFP fill);
/// The same for a type, which becomes the fingerprint's. A type of another kind causes a message
/// and false. A type that `ZQCanMakeFP` rejects is repaired with warnings, and the assertion that
/// the fingerprint has this type then fails.
bool ZQMakeFP(ZQFingerPrint& fp, const ZQMolBase& mol, const ZQFPKind& kind,
              const ZQFPTypeBase* type, ZQFillFP fill);

/// A prepared copy of a molecule. Symmetry is perceived if the kind uses it and if this costs less
/// than it saves: symmetric atoms start equal paths.
ZQGraphMol ZQPreparedCopy(const ZQMolBase& mol, const ZQFPKind& kind, const ZQFPTypeValues& values);

}  // namespace ZQKorvex
