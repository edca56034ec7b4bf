#pragma once

/// The atoms and bonds of one enumerated fragment, with its molecule and identifier.

#include <utility>

#include "contract/quarnel/atombondset.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

/// T is the identifier's type, unsigned 32-bit or string. The molecule must outlive it; copying a
/// set without one is an assertion failure.
template <class T>
class ZQFPAtomBondSet : public ZQAtomBondSet {
 public:
  ZQFPAtomBondSet(const ZQMolBase* mol, T id) : mol_(mol), id_(std::move(id)) {}
  ZQFPAtomBondSet(const ZQFPAtomBondSet& other)
      : ZQAtomBondSet(other), mol_(other.mol_), id_(other.id_) {
    ZQ_ASSERT(mol_ != nullptr);
  }
  ZQFPAtomBondSet& operator=(const ZQFPAtomBondSet& other) {
    return *this = ZQFPAtomBondSet(other);
  }
  ZQFPAtomBondSet(ZQFPAtomBondSet&&) noexcept = default;
  ZQFPAtomBondSet& operator=(ZQFPAtomBondSet&&) noexcept = default;
  ~ZQFPAtomBondSet() override = default;
  ZQFPAtomBondSet* CreateCopy() const override { return new ZQFPAtomBondSet(*this); }
  const ZQMolBase* GetMol() const { return mol_; }
  const T& GetId() const { return id_; }

 private:
  const ZQMolBase* mol_;
  T id_;
};

}  // namespace ZQKorvex
