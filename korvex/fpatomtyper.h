#pragma once

/// Atom and bond typing: the flags that select the properties in the invariant of an atom or bond,
/// the preparation of a working copy, and the invariants themselves, the only chemistry that a
/// generator uses. Thread safe for distinct molecules; the functions on names are thread safe.

#include <string>
#include <vector>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The properties in an atom's invariant. Flags combine; legal sets are below 8192. The
/// equivalences (the flags Eq...) apply only together with AtmNum.
namespace ZQFPAtomType {
inline constexpr unsigned int None = 0;
inline constexpr unsigned int AtmNum = 1;      ///< element
inline constexpr unsigned int Arom = 2;        ///< aromaticity
inline constexpr unsigned int Chiral = 4;      ///< possible stereocentre; not in strings
inline constexpr unsigned int FCharge = 8;     ///< formal charge
inline constexpr unsigned int HvyDeg = 16;     ///< number of heavy neighbours
inline constexpr unsigned int Hyb = 32;        ///< hybridization
inline constexpr unsigned int InRing = 64;     ///< ring membership
inline constexpr unsigned int EqHalo = 128;    ///< F, Cl, Br and I are equivalent
inline constexpr unsigned int EqArom = 256;    ///< aromatic atoms are equivalent
inline constexpr unsigned int EqHBAcc = 512;   ///< hydrogen bond acceptors are equivalent
inline constexpr unsigned int EqHBDon = 1024;  ///< hydrogen bond donors are equivalent
inline constexpr unsigned int HCount = 4096;   ///< number of hydrogens, implicit and explicit
inline constexpr unsigned int DefaultAtom = 191;
inline constexpr unsigned int DefaultPathAtom = 191;
inline constexpr unsigned int DefaultCircularAtom = 4239;
inline constexpr unsigned int DefaultTreeAtom = 63;
}  // namespace ZQFPAtomType

/// The properties in a bond's invariant. Flags combine; legal sets are below 256.
namespace ZQFPBondType {
inline constexpr unsigned int None = 0;
inline constexpr unsigned int Order = 1;   ///< bond order, aromatic bonds as one class
inline constexpr unsigned int Chiral = 2;  ///< possible stereo bond; not in strings
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
/// The set with this name; 0 for "None" and for an invalid name.
ZQ_EXPORT unsigned int ZQGetFPAtomType(const std::string& name);
ZQ_EXPORT unsigned int ZQGetFPBondType(const std::string& name);
/// The flags' names joined by "|", "None" for 0, "invalid" for a set with an undefined bit.
ZQ_EXPORT std::string ZQGetFPAtomType(unsigned int atype);
ZQ_EXPORT std::string ZQGetFPBondType(unsigned int btype);

/// Whether the molecule needs no preparation: rings and aromaticity (model 2) are perceived, there
/// are no explicit hydrogens, and the kind is MACCS-166 or Lingo. False for all other kinds, which
/// always prepare a copy.
ZQ_EXPORT bool ZQIsPreparedForFingerprinting(const ZQMolBase& mol, unsigned int fptype);
/// Prepares a working copy: converts every hydrogen to a count on its neighbour, removes dummy
/// atoms and their bonds, perceives rings and aromaticity (model 2). `fptype` has no effect.
/// Deleted atoms may leave holes in the indices.
ZQ_EXPORT void ZQPrepareForFingerprinting(ZQMolBase& mol, unsigned int fptype);

/// Computes the invariants of a prepared molecule, indexed by atom and by bond index. Resizes the
/// vectors to `GetMaxAtomIdx` and `GetMaxBondIdx`; doesn't change entries of holes. Perceives
/// hybridization and chirality if the flags need them. Integers are products of primes and wrap;
/// strings resemble SMARTS ("[#7;R0;D2]", "-!@").
ZQ_EXPORT void ZQGetFingerprintAtomTypes(std::vector<unsigned int>& atomInvariants,
                                         std::vector<unsigned int>& bondInvariants, ZQMolBase& mol,
                                         unsigned int atype, unsigned int btype);
ZQ_EXPORT void ZQGetFingerprintAtomTypes(std::vector<std::string>& atomInvariants,
                                         std::vector<std::string>& bondInvariants, ZQMolBase& mol,
                                         unsigned int atype, unsigned int btype);

}  // namespace ZQKorvex
