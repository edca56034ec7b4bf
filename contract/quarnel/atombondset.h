#pragma once

#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// A set of atoms and bonds of one molecule, by pointer, in the order of addition; a second
/// addition of the same one, or of null, does nothing and answers false. The molecule must outlive
/// it.
class ZQ_EXPORT ZQAtomBondSet {
 public:
  virtual ~ZQAtomBondSet() = default;

  bool AddAtom(ZQAtomBase* atom);
  bool AddBond(ZQBondBase* bond);
  unsigned int NumAtoms() const { return static_cast<unsigned int>(atoms_.size()); }
  unsigned int NumBonds() const { return static_cast<unsigned int>(bonds_.size()); }
  const std::vector<ZQAtomBase*>& GetAtoms() const { return atoms_; }
  const std::vector<ZQBondBase*>& GetBonds() const { return bonds_; }
  void Clear() {
    atoms_.clear();
    bonds_.clear();
  }

 private:
  std::vector<ZQAtomBase*> atoms_;
  std::vector<ZQBondBase*> bonds_;
};

}  // namespace Quarnel
