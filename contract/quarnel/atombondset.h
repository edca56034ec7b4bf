#pragma once

#include <cstddef>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// A set of atoms and bonds of one molecule, by pointer, in the order of addition; adding a member
/// again, or null, does nothing and returns false. The molecule must outlive the set.
class ZQ_EXPORT ZQAtomBondSet {
 public:
  ZQAtomBondSet() = default;
  ZQAtomBondSet(const ZQAtomBondSet&) = default;
  ZQAtomBondSet(ZQAtomBondSet&&) noexcept = default;
  /// The set that corresponds to `other` in a copy of its molecule: each atom and bond is replaced
  /// by the table's entry for its index. Those whose entry is null or missing are omitted.
  ZQAtomBondSet(const ZQAtomBondSet& other, const std::vector<ZQAtomBase*>& atoms,
                const std::vector<ZQBondBase*>& bonds);
  ZQAtomBondSet& operator=(const ZQAtomBondSet&) = default;
  ZQAtomBondSet& operator=(ZQAtomBondSet&&) noexcept = default;
  virtual ~ZQAtomBondSet() = default;
  /// Returns a new set of the same atoms and bonds, owned by the caller.
  virtual ZQAtomBondSet* CreateCopy() const { return new ZQAtomBondSet(*this); }

  /// Makes room for this many members.
  void Reserve(std::size_t atoms, std::size_t bonds) {
    atoms_.reserve(atoms);
    bonds_.reserve(bonds);
  }
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
