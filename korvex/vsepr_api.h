#pragma once

/// VSEPR fingerprints that are stored with their molecule, atom or bond, so that repeated
/// comparisons don't make them again.

#include "korvex/vsepr_fingerprint.h"

namespace ZQKorvex {

/// Stores the fingerprint of the object as its generic data with the tag "ZQVseprFingerprint", in
/// place of an earlier one. It remains until it is replaced: an edit of the molecule doesn't change
/// it. Needs exclusive access to the object.
ZQ_EXPORT void ZQPrepVsepr(ZQMolBase& mol, ZQVseprOptions options);
ZQ_EXPORT void ZQPrepVsepr(ZQAtomBase& atom, ZQVseprOptions options);
ZQ_EXPORT void ZQPrepVsepr(ZQBondBase& bond, ZQVseprOptions options);

/// The Tanimoto of two stored fingerprints; `defaultValue` if an object has none, or if their
/// options aren't comparable. Never makes a fingerprint.
ZQ_EXPORT double ZQGetVseprTanimoto(const ZQMolBase& a, const ZQMolBase& b, double defaultValue);
ZQ_EXPORT double ZQGetVseprTanimoto(const ZQAtomBase& a, const ZQAtomBase& b, double defaultValue);
ZQ_EXPORT double ZQGetVseprTanimoto(const ZQBondBase& a, const ZQBondBase& b, double defaultValue);

}  // namespace ZQKorvex
