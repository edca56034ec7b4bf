#pragma once

#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// A set of atoms and bonds of one molecule, by pointer, in the order of addition; a second
/// addition of the same one, or of null, does nothing and returns false. The molecule must outlive
/// it.
class ZQ_EXPORT ZQAtomBondSet {
 public:
  ZQAtomBondSet() = default;
  ZQAtomBondSet(const ZQAtomBondSet&) = default;
  /// The set of what the atoms and bonds of `other` became in a copy of its molecule: each is
  /// replaced by the entry of its index in the table. One whose entry is null or missing is left
  /// out.
  ZQAtomBondSet(const ZQAtomBondSet& other, const std::vector<ZQAtomBase*>& atoms,
                const std::vector<ZQBondBase*>& bonds);
  ZQAtomBondSet& operator=(const ZQAtomBondSet&) = default;
  virtual ~ZQAtomBondSet() = default;
  /// A new set of the same atoms and bonds, owned by the caller.
  virtual ZQAtomBondSet* CreateCopy() const { return new ZQAtomBondSet(*this); }

  bool AddAtom(ZQAtomBase* atom);
  bool AddBond(ZQBondBase* bond);
  unsigned int NumAtoms() const { return static_cast<unsigned int>(atoms_.size()); }
  unsigned int NumBonds() const { return static_cast<unsigned int>(bonds_.size()); }
  const std::vector<ZQAtomBase*>& GetAtoms() const { return atoms_; }
  const std::vector<ZQBondBase*>& GetBonds() const { return bonds_; }
  void ClearAtoms() { atoms_.clear(); }
  void ClearBonds() { bonds_.clear(); }
  void ClearAtomsAndBonds() {
    ClearAtoms();
    ClearBonds();
  }
  void Clear() { ClearAtomsAndBonds(); }

 private:
  std::vector<ZQAtomBase*> atoms_;
  std::vector<ZQBondBase*> bonds_;
};

}  // namespace Quarnel
