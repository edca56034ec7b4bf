#pragma once

/// How a molecule is seen by the fingerprints: the flags that choose what enters the invariant of
/// an atom or bond, the preparation of a working copy, and the invariants themselves, which are
/// all that a generator knows of chemistry. Calls on distinct molecules may run on distinct
/// threads; the names may be asked for from any thread.

#include <string>
#include <vector>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// What enters an atom's invariant. Flags combine; legal sets are below 8192. The equivalences
/// (EqArom and what follows it in name) act only together with AtmNum.
namespace ZQFPAtomType {
inline constexpr unsigned int None = 0;
inline constexpr unsigned int AtmNum = 1;      ///< element
inline constexpr unsigned int Arom = 2;        ///< aromatic or not
inline constexpr unsigned int Chiral = 4;      ///< could be a stereo centre or not; not in strings
inline constexpr unsigned int FCharge = 8;     ///< formal charge
inline constexpr unsigned int HvyDeg = 16;     ///< number of heavy neighbours
inline constexpr unsigned int Hyb = 32;        ///< hybridization
inline constexpr unsigned int InRing = 64;     ///< ring membership
inline constexpr unsigned int EqHalo = 128;    ///< F, Cl, Br and I are equal
inline constexpr unsigned int EqArom = 256;    ///< aromatic atoms are equal
inline constexpr unsigned int EqHBAcc = 512;   ///< hydrogen bond acceptors are equal
inline constexpr unsigned int EqHBDon = 1024;  ///< hydrogen bond donors are equal
inline constexpr unsigned int HCount = 4096;   ///< hydrogens, implicit and explicit
inline constexpr unsigned int DefaultAtom = 191;
inline constexpr unsigned int DefaultPathAtom = 191;
inline constexpr unsigned int DefaultCircularAtom = 4239;
inline constexpr unsigned int DefaultTreeAtom = 63;
}  // namespace ZQFPAtomType

/// What enters a bond's invariant. Flags combine; legal sets are below 256.
namespace ZQFPBondType {
inline constexpr unsigned int None = 0;
inline constexpr unsigned int Order = 1;   ///< bond order, aromatic bonds as one class
inline constexpr unsigned int Chiral = 2;  ///< could carry stereo or not; not in strings
inline constexpr unsigned int InRing = 4;  ///< ring membership
inline constexpr unsigned int DefaultBond = 3;
inline constexpr unsigned int DefaultPathBond = 3;
inline constexpr unsigned int DefaultCircularBond = 1;
inline constexpr unsigned int DefaultTreeBond = 1;
}  // namespace ZQFPBondType

/// Whether the text is the name of a set of flags: "None", a composite such as "DefaultPathAtom",
/// or names of flags joined by "|" in any order. Composites don't combine.
ZQ_EXPORT bool ZQIsValidFPAtomType(const std::string& name);
ZQ_EXPORT bool ZQIsValidFPBondType(const std::string& name);
/// The set that a text names; 0 for "None" and for a text that isn't valid.
ZQ_EXPORT unsigned int ZQGetFPAtomType(const std::string& name);
ZQ_EXPORT unsigned int ZQGetFPBondType(const std::string& name);
/// The flags' names joined by "|", "None" for 0, "invalid" for a set with a bit that has no name.
ZQ_EXPORT std::string ZQGetFPAtomType(unsigned int atype);
ZQ_EXPORT std::string ZQGetFPBondType(unsigned int btype);

/// Whether the molecule can be fingerprinted as it stands: rings and aromaticity (model 2)
/// perceived, no explicit hydrogens, and a kind that takes molecules as they stand, MACCS-166 or
/// Lingo. False for all other kinds: those always prepare a copy of their own.
ZQ_EXPORT bool ZQIsPreparedForFingerprinting(const ZQMolBase& mol, unsigned int fptype);
/// Makes a working copy ready: every hydrogen becomes a count on its neighbour, dummy atoms and
/// their bonds go, rings and aromaticity (model 2) are perceived. The kind makes no difference.
/// Deleted atoms may leave holes in the indices.
ZQ_EXPORT void ZQPrepareForFingerprinting(ZQMolBase& mol, unsigned int fptype);

/// The invariants of a prepared molecule, indexed by atom and by bond index; the vectors are
/// resized to `GetMaxAtomIdx` and `GetMaxBondIdx`, entries of holes are left alone. Perceives
/// hybridization and chirality where the flags ask for them. Integers are products of primes and
/// wrap; strings read like SMARTS ("[#7;R0;D2]", "-!@").
ZQ_EXPORT void ZQGetFingerprintAtomTypes(std::vector<unsigned int>& atomInvariants,
                                         std::vector<unsigned int>& bondInvariants, ZQMolBase& mol,
                                         unsigned int atype, unsigned int btype);
ZQ_EXPORT void ZQGetFingerprintAtomTypes(std::vector<std::string>& atomInvariants,
                                         std::vector<std::string>& bondInvariants, ZQMolBase& mol,
                                         unsigned int atype, unsigned int btype);

}  // namespace ZQKorvex
