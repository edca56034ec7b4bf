#include "contract/quarnel/graphmol.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <string>
#include <utility>
#include <vector>

// The storage of both molecules. Atoms and bonds are stored in blocks, so that pointers to them
// remain valid while the molecule grows; blocks are reused for the next molecule. The bonds of an
// atom form a linked list through the bonds themselves: no atom owns memory.

namespace Quarnel {

namespace {

constexpr unsigned int none = ~0U;

/// A set of perception steps.
using Steps = std::uint8_t;
constexpr unsigned int maxSteps = 8;
constexpr Steps SetOf(unsigned int step) { return static_cast<Steps>(1U << step); }

// The steps that read a property. Rings depend on the graph alone.
constexpr Steps readersOfIsotope = SetOf(ZQPerceived::Chirality) | SetOf(ZQPerceived::Symmetry);
constexpr Steps readersOfValence =
    readersOfIsotope | SetOf(ZQPerceived::Aromaticity) | SetOf(ZQPerceived::Hybridization);
constexpr Steps readersOfStereo = SetOf(ZQPerceived::Symmetry);
constexpr Steps allSteps = 0xFF;

}  // namespace

class ZQGraphAtom final : public ZQAtomBase {
 public:
  using ZQAtomBase::GetStereo;
  unsigned int GetIdx() const override { return idx; }
  ZQMolBase* GetParent() const override;
  unsigned int GetAtomicNum() const override { return atomicNum; }
  int GetFormalCharge() const override { return charge; }
  unsigned int GetIsotope() const override { return isotope; }
  unsigned int GetMapIdx() const override { return mapIdx; }
  unsigned int GetImplicitHCount() const override { return implicitH; }
  ZQAtomStereo GetStereo() const override { return stereo; }
  unsigned int GetHyb() const override { return hyb; }
  unsigned int GetSymmetryClass() const override { return symmetryClass; }
  bool IsAromatic() const override { return aromatic; }
  bool IsInRing() const override { return inRing; }
  bool IsChiral() const override { return chiral; }

  void SetFormalCharge(int value) override;
  void SetIsotope(unsigned int value) override;
  void SetMapIdx(unsigned int value) override { mapIdx = value; }
  void SetImplicitHCount(unsigned int value) override;
  void SetStereo(ZQAtomStereo value) override;
  void SetHyb(unsigned int value) override { hyb = static_cast<std::uint8_t>(value); }
  void SetSymmetryClass(unsigned int value) override { symmetryClass = value; }
  void SetAromatic(bool value) override { aromatic = value; }
  void SetInRing(bool value) override { inRing = value; }
  void SetChiral(bool value) override { chiral = value; }

  ZQBondBase* NextBond(const ZQBondBase* previous) const override;

  ZQGraph* graph = nullptr;
  unsigned int idx = none;  // none: a hole
  unsigned int firstBond = none;
  unsigned int lastBond = none;
  unsigned int atomicNum = 0;
  int charge = 0;
  unsigned int isotope = 0;
  unsigned int mapIdx = 0;
  unsigned int implicitH = 0;
  unsigned int symmetryClass = 0;
  ZQAtomStereo stereo = ZQAtomStereo::None;
  std::uint8_t hyb = 0;
  bool aromatic = false;
  bool inRing = false;
  bool chiral = false;
};

class ZQGraphBond final : public ZQBondBase {
 public:
  unsigned int GetIdx() const override { return idx; }
  ZQMolBase* GetParent() const override { return ends[0]->GetParent(); }
  ZQAtomBase* GetBgn() const override { return ends[0]; }
  ZQAtomBase* GetEnd() const override { return ends[1]; }
  unsigned int GetOrder() const override { return order; }
  ZQBondStereo GetStereo() const override { return stereo; }
  bool IsAromatic() const override { return aromatic; }
  bool IsInRing() const override { return inRing; }
  bool IsChiral() const override { return chiral; }

  void SetOrder(unsigned int value) override;
  void SetStereo(ZQBondStereo value) override;
  void SetAromatic(bool value) override { aromatic = value; }
  void SetInRing(bool value) override { inRing = value; }
  void SetChiral(bool value) override { chiral = value; }

  // The next bond in the list of `end`.
  unsigned int& Next(const ZQGraphAtom* end) { return next[end == ends[1]]; }
  unsigned int Next(const ZQGraphAtom* end) const { return next[end == ends[1]]; }

  unsigned int idx = none;
  std::array<ZQGraphAtom*, 2> ends{};
  std::array<unsigned int, 2> next{none, none};
  std::uint8_t order = 1;
  ZQBondStereo stereo = ZQBondStereo::None;
  bool aromatic = false;
  bool inRing = false;
  bool chiral = false;
};

namespace {

// A growing array whose elements never move. Shrinking keeps the blocks.
template <class T>
class Slots {
 public:
  unsigned int size() const { return size_; }
  T& operator[](unsigned int i) { return blocks_[i / blockSize][i % blockSize]; }
  const T& operator[](unsigned int i) const { return blocks_[i / blockSize][i % blockSize]; }
  /// Adds and returns a default-constructed element.
  T& Grow() {
    if (size_ == blocks_.size() * blockSize) blocks_.push_back(std::make_unique<T[]>(blockSize));
    T& item = (*this)[size_++];
    return item = T();
  }
  void Shrink(unsigned int size) { size_ = size; }

 private:
  static constexpr unsigned int blockSize = 64;  // a drug-like molecule fits in one
  std::vector<std::unique_ptr<T[]>> blocks_;
  unsigned int size_ = 0;
};

template <class T>
void TrimHoles(Slots<T>& slots) {
  unsigned int size = slots.size();
  while (size != 0 && slots[size - 1].idx == none) --size;
  slots.Shrink(size);
}

}  // namespace

class ZQGraph {
 public:
  explicit ZQGraph(ZQMolBase& mol) : parent(&mol) {}

  ZQGraphAtom& GrowAtom() {
    ZQGraphAtom& atom = atoms.Grow();
    atom.graph = this;
    return atom;
  }

  void Link(ZQGraphAtom* atom, ZQGraphBond& bond) {
    if (atom->lastBond == none) {
      atom->firstBond = bond.idx;
    } else {
      bonds[atom->lastBond].Next(atom) = bond.idx;
    }
    atom->lastBond = bond.idx;
  }

  void Unlink(ZQGraphAtom* atom, const ZQGraphBond& bond) {
    unsigned int previous = none;
    for (unsigned int at = atom->firstBond; at != bond.idx; at = bonds[at].Next(atom)) {
      previous = at;
    }
    const unsigned int after = bond.Next(atom);
    if (previous == none) {
      atom->firstBond = after;
    } else {
      bonds[previous].Next(atom) = after;
    }
    if (atom->lastBond == bond.idx) atom->lastBond = previous;
  }

  void Delete(ZQGraphBond& bond) {
    Unlink(bond.ends[0], bond);
    Unlink(bond.ends[1], bond);
    bond = ZQGraphBond();
    --numBonds;
  }

  // Iterates over the bonds of both at once: the cost is that of the atom with fewer.
  bool AreBonded(const ZQGraphAtom& a, const ZQGraphAtom& b) const {
    const ZQBondBase* ofA = a.NextBond(nullptr);
    const ZQBondBase* ofB = b.NextBond(nullptr);
    while (ofA && ofB) {
      if (ofA->GetNbr(&a) == &b || ofB->GetNbr(&b) == &a) return true;
      ofA = a.NextBond(ofA);
      ofB = b.NextBond(ofB);
    }
    return false;
  }

  ZQGraphAtom* Own(ZQAtomBase* atom) {
    if (!atom || atom->GetIdx() >= atoms.size()) return nullptr;
    ZQGraphAtom* own = &atoms[atom->GetIdx()];
    return own == atom ? own : nullptr;
  }

  // Resets the results of the steps. Steps that aren't perceived have none, except for the aromatic
  // marks of the input, which are kept.
  void Undo(Steps steps) {
    if ((steps & perceived) != 0) Forget(steps);
  }

  template <class T>
  void Change(T& property, T value, Steps readers) {
    if (property == value) return;
    property = value;
    Undo(readers);
  }

  void Clear() {
    atoms.Shrink(0);
    bonds.Shrink(0);
    numAtoms = 0;
    numBonds = 0;
    perceived = 0;
    title.clear();
    valid = true;
  }

  ZQMolBase* const parent;
  Slots<ZQGraphAtom> atoms;
  Slots<ZQGraphBond> bonds;
  unsigned int numAtoms = 0;
  unsigned int numBonds = 0;
  Steps perceived = 0;
  std::string title;
  bool valid = true;

 private:
  void Forget(Steps steps);
};

void ZQGraph::Forget(Steps steps) {
  steps &= perceived;
  perceived ^= steps;
  const bool rings = (steps & SetOf(ZQPerceived::Rings)) != 0;
  const bool aromaticity = (steps & SetOf(ZQPerceived::Aromaticity)) != 0;
  const bool hybridization = (steps & SetOf(ZQPerceived::Hybridization)) != 0;
  const bool chirality = (steps & SetOf(ZQPerceived::Chirality)) != 0;
  const bool symmetry = (steps & SetOf(ZQPerceived::Symmetry)) != 0;
  const auto forgetFlags = [&](auto& item) {
    if (rings) item.inRing = false;
    if (aromaticity) item.aromatic = false;
    if (chirality) item.chiral = false;
  };
  for (unsigned int i = 0; i < atoms.size(); ++i) {
    forgetFlags(atoms[i]);
    if (hybridization) atoms[i].hyb = 0;
    if (symmetry) atoms[i].symmetryClass = 0;
  }
  for (unsigned int i = 0; i < bonds.size(); ++i) forgetFlags(bonds[i]);
}

ZQMolBase* ZQGraphAtom::GetParent() const { return graph->parent; }
void ZQGraphAtom::SetFormalCharge(int value) { graph->Change(charge, value, readersOfValence); }
void ZQGraphAtom::SetIsotope(unsigned int value) {
  graph->Change(isotope, value, readersOfIsotope);
}
void ZQGraphAtom::SetImplicitHCount(unsigned int value) {
  graph->Change(implicitH, value, readersOfValence);
}
void ZQGraphAtom::SetStereo(ZQAtomStereo value) { graph->Change(stereo, value, readersOfStereo); }

void ZQGraphBond::SetOrder(unsigned int value) {
  ends[0]->graph->Change(order, static_cast<std::uint8_t>(value), readersOfValence);
}
void ZQGraphBond::SetStereo(ZQBondStereo value) {
  ends[0]->graph->Change(stereo, value, readersOfStereo);
}

ZQBondBase* ZQGraphAtom::NextBond(const ZQBondBase* previous) const {
  const unsigned int next =
      previous ? static_cast<const ZQGraphBond*>(previous)->Next(this) : firstBond;
  return next == none ? nullptr : &graph->bonds[next];
}

template <class Base>
ZQStoredMol<Base>::ZQStoredMol() : graph_(std::make_unique<ZQGraph>(*this)) {}

template <class Base>
ZQStoredMol<Base>::~ZQStoredMol() = default;

template <class Base>
ZQStoredMol<Base>::ZQStoredMol(const ZQStoredMol& other) : ZQStoredMol() {
  CopyFrom(other);
}

template <class Base>
ZQStoredMol<Base>& ZQStoredMol<Base>::operator=(const ZQStoredMol& other) {
  CopyFrom(other);
  return *this;
}

template <class Base>
bool ZQStoredMol<Base>::IsValid() const {
  return graph_->valid;
}

template <class Base>
void ZQStoredMol<Base>::SetValid(bool valid) {
  graph_->valid = valid;
}

template <class Base>
const std::string& ZQStoredMol<Base>::GetTitle() const {
  return graph_->title;
}

template <class Base>
void ZQStoredMol<Base>::SetTitle(const std::string& title) {
  graph_->title = title;
}

template <class Base>
unsigned int ZQStoredMol<Base>::NumAtoms() const {
  return graph_->numAtoms;
}

template <class Base>
unsigned int ZQStoredMol<Base>::NumBonds() const {
  return graph_->numBonds;
}

template <class Base>
unsigned int ZQStoredMol<Base>::GetMaxAtomIdx() const {
  return graph_->atoms.size();
}

template <class Base>
unsigned int ZQStoredMol<Base>::GetMaxBondIdx() const {
  return graph_->bonds.size();
}

template <class Base>
ZQAtomBase* ZQStoredMol<Base>::GetAtomAt(unsigned int idx) const {
  if (idx >= graph_->atoms.size() || graph_->atoms[idx].idx == none) return nullptr;
  return &graph_->atoms[idx];
}

template <class Base>
ZQBondBase* ZQStoredMol<Base>::GetBondAt(unsigned int idx) const {
  if (idx >= graph_->bonds.size() || graph_->bonds[idx].idx == none) return nullptr;
  return &graph_->bonds[idx];
}

template <class Base>
ZQAtomBase* ZQStoredMol<Base>::NewAtom(unsigned int atomicNum) {
  ZQGraphAtom& atom = graph_->GrowAtom();
  atom.idx = graph_->atoms.size() - 1;
  atom.atomicNum = atomicNum;
  ++graph_->numAtoms;
  graph_->Undo(allSteps);
  return &atom;
}

template <class Base>
ZQBondBase* ZQStoredMol<Base>::NewBond(ZQAtomBase* bgn, ZQAtomBase* end, unsigned int order) {
  ZQGraphAtom* ownBgn = graph_->Own(bgn);
  ZQGraphAtom* ownEnd = graph_->Own(end);
  if (!ownBgn || !ownEnd || ownBgn == ownEnd) return nullptr;
  if (graph_->AreBonded(*ownBgn, *ownEnd)) return nullptr;
  ZQGraphBond& bond = graph_->bonds.Grow();
  bond.idx = graph_->bonds.size() - 1;
  bond.ends = {ownBgn, ownEnd};
  bond.order = static_cast<std::uint8_t>(order);
  graph_->Link(ownBgn, bond);
  graph_->Link(ownEnd, bond);
  ++graph_->numBonds;
  graph_->Undo(allSteps);
  return &bond;
}

template <class Base>
bool ZQStoredMol<Base>::DeleteAtom(ZQAtomBase* atom) {
  ZQGraphAtom* own = graph_->Own(atom);
  if (!own) return false;
  while (own->firstBond != none) graph_->Delete(graph_->bonds[own->firstBond]);
  TrimHoles(graph_->bonds);
  *own = ZQGraphAtom();
  TrimHoles(graph_->atoms);
  --graph_->numAtoms;
  graph_->Undo(allSteps);
  return true;
}

template <class Base>
bool ZQStoredMol<Base>::DeleteBond(ZQBondBase* bond) {
  if (!bond || GetBondAt(bond->GetIdx()) != bond) return false;
  graph_->Delete(graph_->bonds[bond->GetIdx()]);
  TrimHoles(graph_->bonds);
  graph_->Undo(allSteps);
  return true;
}

template <class Base>
void ZQStoredMol<Base>::Clear() {
  graph_->Clear();
  this->ClearData();
}

template <class Base>
bool ZQStoredMol<Base>::IsPerceived(unsigned int step) const {
  return step < maxSteps && (graph_->perceived & SetOf(step)) != 0;
}

template <class Base>
void ZQStoredMol<Base>::SetPerceived(unsigned int step, bool done) {
  if (step >= maxSteps) return;
  if (done) {
    graph_->perceived |= SetOf(step);
  } else {
    graph_->Undo(SetOf(step));
  }
}

template <class Base>
void ZQStoredMol<Base>::CopyFrom(const ZQMolBase& other) {
  if (this == &other) return;
  Clear();
  this->CopyData(other);
  graph_->valid = other.IsValid();
  graph_->title = other.GetTitle();
  for (unsigned int step = 0; step < maxSteps; ++step) SetPerceived(step, other.IsPerceived(step));
  // Aromatic flags may be marks of the input, and chiral ones those of the configurations drawn.
  const bool hasRings = IsPerceived(ZQPerceived::Rings);
  const bool hasHyb = IsPerceived(ZQPerceived::Hybridization);
  const bool hasClasses = IsPerceived(ZQPerceived::Symmetry);
  for (unsigned int i = 0; i < other.GetMaxAtomIdx(); ++i) {
    ZQGraphAtom& atom = graph_->GrowAtom();
    const ZQAtomBase* from = other.GetAtomAt(i);
    if (!from) continue;
    ++graph_->numAtoms;
    atom.CopyData(*from);
    atom.idx = i;
    atom.atomicNum = from->GetAtomicNum();
    atom.charge = from->GetFormalCharge();
    atom.isotope = from->GetIsotope();
    atom.mapIdx = from->GetMapIdx();
    atom.implicitH = from->GetImplicitHCount();
    if (hasClasses) atom.symmetryClass = from->GetSymmetryClass();
    atom.stereo = from->GetStereo();
    if (hasHyb) atom.SetHyb(from->GetHyb());
    atom.aromatic = from->IsAromatic();
    atom.inRing = hasRings && from->IsInRing();
    atom.chiral = from->IsChiral();
  }
  for (unsigned int i = 0; i < other.GetMaxBondIdx(); ++i) {
    ZQGraphBond& bond = graph_->bonds.Grow();
    const ZQBondBase* from = other.GetBondAt(i);
    if (!from) continue;
    ++graph_->numBonds;
    bond.CopyData(*from);
    bond.idx = i;
    bond.ends = {&graph_->atoms[from->GetBgn()->GetIdx()],
                 &graph_->atoms[from->GetEnd()->GetIdx()]};
    bond.order = static_cast<std::uint8_t>(from->GetOrder());
    bond.stereo = from->GetStereo();
    bond.aromatic = from->IsAromatic();
    bond.inRing = hasRings && from->IsInRing();
    bond.chiral = from->IsChiral();
    graph_->Link(bond.ends[0], bond);
    graph_->Link(bond.ends[1], bond);
  }
}

template class ZQStoredMol<ZQMCMolBase>;
template class ZQStoredMol<ZQMolBase>;

}  // namespace Quarnel
