#pragma once

/// The built-in molecules. `ZQMol` is what files are read into; `ZQGraphMol` is the working copy
/// that every generator makes: flat, cheap to copy and to throw away.

#include <memory>

#include "contract/quarnel/mol.h"

namespace Quarnel {

class ZQGraph;  // the store of atoms and bonds that both molecules share

/// Everything of a molecule over the flat store, for a base class of either kind.
template <class Base>
class ZQ_EXPORT ZQStoredMol : public Base {
 public:
  ZQStoredMol();
  ~ZQStoredMol() override;
  ZQStoredMol(const ZQStoredMol& other);
  ZQStoredMol& operator=(const ZQStoredMol& other);

  bool IsValid() const override;
  void SetValid(bool valid) override;
  const std::string& GetTitle() const override;
  void SetTitle(const std::string& title) override;
  unsigned int NumAtoms() const override;
  unsigned int NumBonds() const override;
  unsigned int GetMaxAtomIdx() const override;
  unsigned int GetMaxBondIdx() const override;
  ZQAtomBase* GetAtomAt(unsigned int idx) const override;
  ZQBondBase* GetBondAt(unsigned int idx) const override;
  ZQAtomBase* NewAtom(unsigned int atomicNum) override;
  ZQBondBase* NewBond(ZQAtomBase* bgn, ZQAtomBase* end, unsigned int order) override;
  bool DeleteAtom(ZQAtomBase* atom) override;
  bool DeleteBond(ZQBondBase* bond) override;
  void Clear() override;
  bool IsPerceived(unsigned int step) const override;
  void SetPerceived(unsigned int step, bool done) override;

 protected:
  /// Indices, holes, perceived properties and generic data alike.
  void CopyFrom(const ZQMolBase& other);

  std::unique_ptr<ZQGraph> graph_;
};

class ZQ_EXPORT ZQMol final : public ZQStoredMol<ZQMCMolBase> {
 public:
  ZQMol() = default;
  explicit ZQMol(const ZQMolBase& other) { CopyFrom(other); }
  ZQMol& operator=(const ZQMolBase& other) {
    CopyFrom(other);
    return *this;
  }
};

class ZQ_EXPORT ZQGraphMol final : public ZQStoredMol<ZQMolBase> {
 public:
  ZQGraphMol() = default;
  explicit ZQGraphMol(const ZQMolBase& other) { CopyFrom(other); }
  ZQGraphMol& operator=(const ZQMolBase& other) {
    CopyFrom(other);
    return *this;
  }
};

}  // namespace Quarnel
