#pragma once

/// The built-in molecules. `ZQMol` is for reading files; `ZQGraphMol` is the working copy made by
/// every generator: flat, cheap to copy and to destroy.

#include <memory>

#include "contract/quarnel/mol.h"

namespace Quarnel {

class ZQGraph;  // the storage of atoms and bonds used by both molecules

/// Implements a molecule over the flat storage, for a base class of either kind.
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
  /// Copies indices, holes, perceived properties and generic data.
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
