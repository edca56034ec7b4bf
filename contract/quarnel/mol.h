#pragma once

/// The molecule interface: three abstract classes that any toolkit's molecule can implement.
/// `ZQMol` and `ZQGraphMol` (graphmol.h) are the built-in implementations.
///
/// Indices are small non-negative integers, stable while the molecule isn't edited; deletion leaves
/// holes, so that access by index may return null. The molecule owns its atoms and bonds; pointers
/// are valid until the atom or bond is deleted or the molecule is cleared. Many threads may read a
/// molecule at once; perception and edits need exclusive access.

#include <cstdint>
#include <string>
#include <vector>

#include "contract/bostrel/base.h"
#include "contract/bostrel/export.h"
#include "contract/bostrel/functions.h"
#include "contract/bostrel/iter.h"

namespace Quarnel {

class ZQBondBase;
class ZQMolBase;

/// The configuration of a tetrahedral centre as drawn. Seen from the first neighbour, the others
/// turn counterclockwise ("@") or clockwise ("@@"). The order of neighbours: an implicit hydrogen
/// or lone pair first, then the atom's bonds by ascending bond index.
enum class ZQAtomStereo : std::uint8_t { None, CounterClockwise, Clockwise };

/// The configuration of a double bond as drawn, of two reference atoms: at each end the neighbour
/// (other than the opposite end) whose bond has the lowest index.
enum class ZQBondStereo : std::uint8_t { None, Cis, Trans };

/// The classes of configurations that `ZQAtomBase::GetStereo` knows, and its results.
namespace ZQStereoClass {
inline constexpr unsigned int Tetrahedral = 57;
}  // namespace ZQStereoClass
namespace ZQTetrahedralStereo {
inline constexpr unsigned int None = 0;
inline constexpr unsigned int Clockwise = 2;         ///< "R", if the order is that of priorities
inline constexpr unsigned int CounterClockwise = 3;  ///< "S"
}  // namespace ZQTetrahedralStereo

class ZQ_EXPORT ZQAtomBase : public Bostrel::ZQBase {
 public:
  virtual unsigned int GetIdx() const = 0;
  /// The molecule that owns this atom.
  virtual ZQMolBase* GetParent() const = 0;
  /// 0 for a dummy atom.
  virtual unsigned int GetAtomicNum() const = 0;
  virtual int GetFormalCharge() const = 0;
  /// Mass number, 0 if unspecified.
  virtual unsigned int GetIsotope() const = 0;
  /// Atom class of a SMILES, atom map number of a molfile; 0 for none.
  virtual unsigned int GetMapIdx() const = 0;
  /// Hydrogens stored as a count on the atom.
  virtual unsigned int GetImplicitHCount() const = 0;
  virtual ZQAtomStereo GetStereo() const = 0;

  /// 1 to 5 for sp, sp2, sp3, sp3d, sp3d2; 0 if none or not perceived.
  virtual unsigned int GetHyb() const = 0;
  /// Topological symmetry class, 0 if not perceived.
  virtual unsigned int GetSymmetryClass() const = 0;
  virtual bool IsAromatic() const = 0;
  virtual bool IsInRing() const = 0;
  /// Whether the atom could carry stereo, specified or not.
  virtual bool IsChiral() const = 0;

  virtual void SetFormalCharge(int charge) = 0;
  virtual void SetIsotope(unsigned int massNumber) = 0;
  virtual void SetMapIdx(unsigned int mapIdx) = 0;
  virtual void SetImplicitHCount(unsigned int count) = 0;
  virtual void SetStereo(ZQAtomStereo stereo) = 0;
  virtual void SetHyb(unsigned int hyb) = 0;
  virtual void SetSymmetryClass(unsigned int symmetryClass) = 0;
  virtual void SetAromatic(bool aromatic) = 0;
  virtual void SetInRing(bool inRing) = 0;
  virtual void SetChiral(bool chiral) = 0;

  /// Iterates over the incident bonds by ascending bond index: returns the bond after `previous`,
  /// or the first for null; null at the end. Doesn't allocate.
  virtual ZQBondBase* NextBond(const ZQBondBase* previous) const = 0;

  // Derived from the operations above.

  /// The configuration as drawn, for the neighbours in any order: seen from the first one, the
  /// others turn clockwise (`ZQTetrahedralStereo::Clockwise`) or counterclockwise. A ligand that
  /// isn't listed (an implicit hydrogen, a lone pair, or one neighbour left out) is the last.
  /// `None` if no configuration is drawn, for another class than `ZQStereoClass::Tetrahedral`, and
  /// unless the list has three or four neighbours, each once. A toolkit with more classes overrides
  /// it. A class that overrides only `GetStereo()` needs `using ZQAtomBase::GetStereo;`, or it
  /// hides this one (-Woverloaded-virtual).
  virtual unsigned int GetStereo(const std::vector<ZQAtomBase*>& neighbours,
                                 unsigned int stereoClass) const;
  /// Implicit and explicit hydrogens together.
  unsigned int GetTotalHCount() const;
  /// Neighbours that aren't hydrogen.
  unsigned int GetHvyDegree() const;
  /// Sum of the bond orders to these neighbours.
  unsigned int GetHvyValence() const;
  /// Connections, implicit hydrogens included.
  unsigned int GetDegree() const;
  /// Sum of the bond orders, implicit hydrogens included. Aromatic bonds count with their
  /// Kekulé orders.
  unsigned int GetValence() const;
  bool IsHydrogen() const { return GetAtomicNum() == 1; }
  bool IsCarbon() const { return GetAtomicNum() == 6; }
  bool IsNitrogen() const { return GetAtomicNum() == 7; }
  bool IsSulfur() const { return GetAtomicNum() == 16; }
  bool IsHalogen() const;

  /// Neighbour atoms, and incident bonds.
  Bostrel::ZQIter<ZQAtomBase> GetAtoms() const;
  Bostrel::ZQIter<ZQAtomBase> GetAtoms(
      const Bostrel::ZQUnaryPredicate<ZQAtomBase>& predicate) const;
  Bostrel::ZQIter<ZQBondBase> GetBonds() const;
};

class ZQ_EXPORT ZQBondBase : public Bostrel::ZQBase {
 public:
  virtual unsigned int GetIdx() const = 0;
  /// The molecule that owns this bond.
  virtual ZQMolBase* GetParent() const = 0;
  virtual ZQAtomBase* GetBgn() const = 0;
  virtual ZQAtomBase* GetEnd() const = 0;
  /// 1 to 4; an aromatic bond has its Kekulé order. 0 for a bond of no order (coordination).
  virtual unsigned int GetOrder() const = 0;
  virtual ZQBondStereo GetStereo() const = 0;
  virtual bool IsAromatic() const = 0;
  virtual bool IsInRing() const = 0;
  /// Whether the double bond could carry stereo, specified or not.
  virtual bool IsChiral() const = 0;

  virtual void SetOrder(unsigned int order) = 0;
  virtual void SetStereo(ZQBondStereo stereo) = 0;
  virtual void SetAromatic(bool aromatic) = 0;
  virtual void SetInRing(bool inRing) = 0;
  virtual void SetChiral(bool chiral) = 0;

  /// The other end; null if `atom` isn't an end of this bond.
  ZQAtomBase* GetNbr(const ZQAtomBase* atom) const {
    ZQAtomBase* bgn = GetBgn();
    ZQAtomBase* end = GetEnd();
    return atom == bgn ? end : atom == end ? bgn : nullptr;
  }
};

/// Perception steps, as `IsPerceived` numbers them.
namespace ZQPerceived {
inline constexpr unsigned int Rings = 1;          ///< ring membership
inline constexpr unsigned int Aromaticity = 2;    ///< aromaticity
inline constexpr unsigned int Hybridization = 3;  ///< hybridization
inline constexpr unsigned int Chirality = 4;      ///< atoms and bonds that could carry stereo
inline constexpr unsigned int Symmetry = 5;       ///< symmetry classes
}  // namespace ZQPerceived

class ZQ_EXPORT ZQMolBase : public Bostrel::ZQBase {
 public:
  /// Whether the molecule is usable: false after a failed read, true again after `Clear`. A
  /// molecule without atoms is valid.
  virtual bool IsValid() const = 0;
  virtual void SetValid(bool valid) = 0;
  /// Valid and not empty.
  explicit operator bool() const { return IsValid() && NumAtoms() != 0; }

  virtual const std::string& GetTitle() const = 0;
  virtual void SetTitle(const std::string& title) = 0;

  virtual unsigned int NumAtoms() const = 0;
  virtual unsigned int NumBonds() const = 0;
  /// One more than the largest index in use.
  virtual unsigned int GetMaxAtomIdx() const = 0;
  virtual unsigned int GetMaxBondIdx() const = 0;
  /// The atom or bond with an index below `GetMaxAtomIdx` or `GetMaxBondIdx`; null for a hole.
  virtual ZQAtomBase* GetAtomAt(unsigned int idx) const = 0;
  virtual ZQBondBase* GetBondAt(unsigned int idx) const = 0;

  /// Adds an atom or bond with the next index. Returns null for a bond from an atom to itself, a
  /// second bond between two atoms, or an atom of another molecule.
  virtual ZQAtomBase* NewAtom(unsigned int atomicNum) = 0;
  virtual ZQBondBase* NewBond(ZQAtomBase* bgn, ZQAtomBase* end, unsigned int order) = 0;
  /// Removes the atom and its bonds; false if it isn't this molecule's.
  virtual bool DeleteAtom(ZQAtomBase* atom) = 0;
  virtual bool DeleteBond(ZQBondBase* bond) = 0;
  /// Valid, no atoms, no title, no data.
  virtual void Clear() = 0;

  /// Whether a step of `ZQPerceived` is done. Adding or deleting an atom or bond undoes all steps;
  /// a change of an order, charge, isotope, hydrogen count or configuration undoes those that read
  /// it. Undoing a step, by a change or by `SetPerceived`, resets its results to 0 or false. Values
  /// set while their step isn't done are kept: aromatic flags are then marks of the input, chiral
  /// ones those of drawn configurations.
  virtual bool IsPerceived(unsigned int step) const = 0;
  virtual void SetPerceived(unsigned int step, bool done) = 0;

  /// Called before and after a run of edits, so that a toolkit can defer its own bookkeeping.
  virtual void BeginEdit() {}
  virtual void EndEdit() {}

  // Derived from the operations above.

  Bostrel::ZQIter<ZQAtomBase> GetAtoms() const;
  Bostrel::ZQIter<ZQAtomBase> GetAtoms(
      const Bostrel::ZQUnaryPredicate<ZQAtomBase>& predicate) const;
  Bostrel::ZQIter<ZQBondBase> GetBonds() const;
  /// The first that satisfies the predicate, or null.
  ZQAtomBase* GetAtom(const Bostrel::ZQUnaryPredicate<ZQAtomBase>& predicate) const;
  ZQBondBase* GetBond(const Bostrel::ZQUnaryPredicate<ZQBondBase>& predicate) const;
};

/// A molecule that can hold several conformations, used for reading files.
class ZQ_EXPORT ZQMCMolBase : public ZQMolBase {};

template <class T>
class ZQHasIdx final : public Bostrel::ZQUnaryPredicate<T> {
 public:
  explicit ZQHasIdx(unsigned int idx) : idx_(idx) {}
  bool operator()(const T& item) const override { return item.GetIdx() == idx_; }
  ZQHasIdx* CreateCopy() const override { return new ZQHasIdx(*this); }

 private:
  unsigned int idx_;
};

/// Any atom except hydrogen.
class ZQIsHeavy final : public Bostrel::ZQUnaryPredicate<ZQAtomBase> {
 public:
  bool operator()(const ZQAtomBase& atom) const override { return !atom.IsHydrogen(); }
  ZQIsHeavy* CreateCopy() const override { return new ZQIsHeavy(*this); }
};

class ZQIsHydrogen final : public Bostrel::ZQUnaryPredicate<ZQAtomBase> {
 public:
  bool operator()(const ZQAtomBase& atom) const override { return atom.IsHydrogen(); }
  ZQIsHydrogen* CreateCopy() const override { return new ZQIsHydrogen(*this); }
};

class ZQHasAtomicNum final : public Bostrel::ZQUnaryPredicate<ZQAtomBase> {
 public:
  explicit ZQHasAtomicNum(unsigned int atomicNum) : atomicNum_(atomicNum) {}
  bool operator()(const ZQAtomBase& atom) const override {
    return atom.GetAtomicNum() == atomicNum_;
  }
  ZQHasAtomicNum* CreateCopy() const override { return new ZQHasAtomicNum(*this); }

 private:
  unsigned int atomicNum_;
};

/// A neighbour carbon (alpha) has another neighbour carbon (beta) with a multiple bond or, if
/// `orAromatic` is set, an aromatic one.
class ZQ_EXPORT ZQHasAlphaBetaUnsat final : public Bostrel::ZQUnaryPredicate<ZQAtomBase> {
 public:
  explicit ZQHasAlphaBetaUnsat(bool orAromatic = true) : orAromatic_(orAromatic) {}
  bool operator()(const ZQAtomBase& atom) const override;
  ZQHasAlphaBetaUnsat* CreateCopy() const override { return new ZQHasAlphaBetaUnsat(*this); }

 private:
  bool orAromatic_;
};

}  // namespace Quarnel
