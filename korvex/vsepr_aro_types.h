#pragma once

/// VSEPR atom types: a number for each combination of element, charge, bonds to heavy atoms,
/// hydrogens and aromaticity that follows valence-shell electron-pair repulsion (R. J. Gillespie,
/// R. S. Nyholm, Q. Rev. Chem. Soc. 11, 339, 1957). The numbers never change: they are part of the
/// keys of `ZQVseprFingerprint`.
///
/// The types are the rows of a constant table. C, N, O, F, P, S, Cl, Br and I have types. In every
/// row the element's valence electrons, less charge, heavy valence and hydrogens, are twice the
/// lone pairs. A name spells out its row: "NH1+:SecondarySp2" is a nitrogen with a hydrogen, a
/// positive charge and two heavy neighbours. Types 147 to 164 are aromatic.
///
/// Functions that take a type report an error for one beyond the last row, such as
/// "VSEPRAroType::GetCharge : Invalid VSEPRAroType 165", and return 0. All are safe from many
/// threads while the molecule isn't edited.

#include <string>

#include "contract/bostrel/functions.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// Whether an atom is of a type, for the function that creates the predicate of a type.
template <ZQUnaryPredicate<ZQAtomBase>* (*createPredicate)(unsigned int type)>
class ZQIsVseprType final : public ZQUnaryPredicate<ZQAtomBase> {
 public:
  ZQIsVseprType() = default;
  explicit ZQIsVseprType(unsigned int type) : impl_(createPredicate(type)) {}
  bool operator()(const ZQAtomBase& atom) const override {
    return ZQ_ASSERT(impl_) && (*impl_)(atom);
  }
  ZQIsVseprType* CreateCopy() const override { return new ZQIsVseprType(*this); }

 private:
  ZQCopyPtr<ZQUnaryPredicate<ZQAtomBase>> impl_;
};

namespace VSEPRAroType {

/// The result for an atom or name that no row fits: one more than the last row.
inline constexpr unsigned int Unknown = 165;

ZQ_EXPORT unsigned int GetAtomicNumber(unsigned int type);
ZQ_EXPORT int GetCharge(unsigned int type);
/// Neighbours that aren't hydrogen.
ZQ_EXPORT unsigned int GetHeavyDegree(unsigned int type);
/// Sum of the bond orders to these neighbours.
ZQ_EXPORT unsigned int GetHeavyValence(unsigned int type);
/// Implicit and explicit hydrogens together.
ZQ_EXPORT unsigned int GetHydrogenCount(unsigned int type);
/// Lone electron pairs.
ZQ_EXPORT unsigned int GetLPCount(unsigned int type);
ZQ_EXPORT bool GetAromatic(unsigned int type);
/// Heavy degree plus hydrogens. An invalid type is reported for each of the two.
ZQ_EXPORT unsigned int GetDegree(unsigned int type);
/// Heavy valence plus hydrogens. An invalid type is reported for each of the two.
ZQ_EXPORT unsigned int GetValence(unsigned int type);
/// The name of the row, "INVALID" for a type beyond the last row, without a report.
ZQ_EXPORT std::string GetName(unsigned int type);

/// The type of this name; `Unknown` if there is none.
ZQ_EXPORT unsigned int GetType(const std::string& name);
/// The row with exactly the atom's element, charge, heavy degree, heavy valence, hydrogens and
/// aromatic flag, else `Unknown`. Reads the molecule as it is: perceive aromaticity first
/// (`ZQPrepareForVsepr`). Visits the bonds of the atom; the lookup takes constant time.
ZQ_EXPORT unsigned int GetType(const ZQAtomBase& atom);

/// A new predicate for atoms of the type, owned by the caller. For a type beyond the last row
/// reports the errors of the getters of its columns and returns null.
ZQ_EXPORT ZQUnaryPredicate<ZQAtomBase>* CreatePredicate(unsigned int type);

/// Whether an atom is of a type. An object without one (default constructed, or of a type beyond
/// the last row) must not be called (an assertion).
using ZQIsType = ZQIsVseprType<CreatePredicate>;

}  // namespace VSEPRAroType
}  // namespace ZQKorvex
