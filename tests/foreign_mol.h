#pragma once

/// A molecule of another toolkit that implements the abstract classes. Its atoms have external
/// labels ("N7", never reused) and own their bonds; an index is only a key of a map, which has
/// holes after deletions.

#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <initializer_list>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

class ForeignMol;

/// The common members of atoms and bonds.
template <class Base, class Stereo>
class ForeignItem : public Base {
 public:
  ForeignItem(ForeignMol& owner, unsigned int idx) : mol(owner), index(idx) {}
  using Base::GetStereo;
  unsigned int GetIdx() const override { return index; }
  Quarnel::ZQMolBase* GetParent() const override;
  Stereo GetStereo() const override { return stereo; }
  bool IsAromatic() const override { return flags.count('a') != 0; }
  bool IsInRing() const override { return flags.count('r') != 0; }
  bool IsChiral() const override { return flags.count('c') != 0; }
  void SetAromatic(bool value) override { SetFlag('a', value); }
  void SetInRing(bool value) override { SetFlag('r', value); }
  void SetChiral(bool value) override { SetFlag('c', value); }
  void SetStereo(Stereo value) override { Change(stereo, value, {Quarnel::ZQPerceived::Symmetry}); }

  void SetFlag(char flag, bool value) {
    if (value) {
      flags.insert(flag);
    } else {
      flags.erase(flag);
    }
  }
  template <class T>
  void Change(T& property, T value, std::initializer_list<unsigned int> readers);

  ForeignMol& mol;
  const unsigned int index;
  Stereo stereo = Stereo::None;
  std::set<char> flags;
};

/// The steps that read properties from which valences follow.
inline constexpr std::initializer_list<unsigned int> foreignReadersOfValence = {
    Quarnel::ZQPerceived::Aromaticity, Quarnel::ZQPerceived::Hybridization,
    Quarnel::ZQPerceived::Chirality, Quarnel::ZQPerceived::Symmetry};

class ForeignBond final : public ForeignItem<Quarnel::ZQBondBase, Quarnel::ZQBondStereo> {
 public:
  using ForeignItem::ForeignItem;
  Quarnel::ZQAtomBase* GetBgn() const override { return bgn; }
  Quarnel::ZQAtomBase* GetEnd() const override { return end; }
  unsigned int GetOrder() const override { return order; }
  void SetOrder(unsigned int value) override { Change(order, value, foreignReadersOfValence); }

  Quarnel::ZQAtomBase* bgn = nullptr;
  Quarnel::ZQAtomBase* end = nullptr;
  unsigned int order = 1;
};

class ForeignAtom final : public ForeignItem<Quarnel::ZQAtomBase, Quarnel::ZQAtomStereo> {
 public:
  using ForeignItem::ForeignItem;
  unsigned int GetAtomicNum() const override { return element; }
  int GetFormalCharge() const override { return charge; }
  unsigned int GetIsotope() const override { return isotope; }
  unsigned int GetMapIdx() const override { return mapIdx; }
  unsigned int GetImplicitHCount() const override { return hydrogens; }
  unsigned int GetHyb() const override { return hyb; }
  using ForeignItem::GetStereo;
  unsigned int GetStereo(const std::vector<Quarnel::ZQAtomBase*>& neighbours,
                         unsigned int stereoClass) const override {
    return ownStereo ? ownStereo(neighbours, stereoClass)
                     : ZQAtomBase::GetStereo(neighbours, stereoClass);
  }
  unsigned int GetSymmetryClass() const override { return symmetryClass; }
  void SetFormalCharge(int value) override { Change(charge, value, foreignReadersOfValence); }
  void SetIsotope(unsigned int value) override {
    Change(isotope, value, {Quarnel::ZQPerceived::Chirality, Quarnel::ZQPerceived::Symmetry});
  }
  void SetMapIdx(unsigned int value) override { mapIdx = value; }
  void SetImplicitHCount(unsigned int value) override {
    Change(hydrogens, value, foreignReadersOfValence);
  }
  void SetHyb(unsigned int value) override { hyb = value; }
  void SetSymmetryClass(unsigned int value) override { symmetryClass = value; }
  Quarnel::ZQBondBase* NextBond(const Quarnel::ZQBondBase* previous) const override {
    const auto next = previous ? bonds.upper_bound(previous->GetIdx()) : bonds.begin();
    return next == bonds.end() ? nullptr : next->second.get();
  }

  std::map<unsigned int, std::shared_ptr<ForeignBond>> bonds;  // shared by the two ends
  /// The answer of another toolkit's own perception.
  std::function<unsigned int(const std::vector<Quarnel::ZQAtomBase*>&, unsigned int)> ownStereo;
  unsigned int element = 0;
  int charge = 0;
  unsigned int isotope = 0;
  unsigned int mapIdx = 0;
  unsigned int hydrogens = 0;
  unsigned int hyb = 0;
  unsigned int symmetryClass = 0;
};

class ForeignMol final : public Quarnel::ZQMolBase {
 public:
  bool IsValid() const override { return valid_; }
  void SetValid(bool valid) override { valid_ = valid; }
  const std::string& GetTitle() const override { return title_; }
  void SetTitle(const std::string& title) override { title_ = title; }
  unsigned int NumAtoms() const override { return static_cast<unsigned int>(labels_.size()); }
  unsigned int NumBonds() const override { return static_cast<unsigned int>(bonds_.size()); }
  unsigned int GetMaxAtomIdx() const override { return End(labels_); }
  unsigned int GetMaxBondIdx() const override { return End(bonds_); }
  Quarnel::ZQAtomBase* GetAtomAt(unsigned int idx) const override {
    const auto label = labels_.find(idx);
    return label == labels_.end() ? nullptr : atoms_.at(label->second).get();
  }
  Quarnel::ZQBondBase* GetBondAt(unsigned int idx) const override {
    const auto bond = bonds_.find(idx);
    return bond == bonds_.end() ? nullptr : bond->second;
  }

  Quarnel::ZQAtomBase* NewAtom(unsigned int atomicNum) override {
    auto atom = std::make_unique<ForeignAtom>(*this, GetMaxAtomIdx());
    atom->element = atomicNum;
    const std::string label = std::to_string(atomicNum) + "-" + std::to_string(++lastLabel_);
    labels_[atom->index] = label;
    UndoAll();
    return (atoms_[label] = std::move(atom)).get();
  }
  Quarnel::ZQBondBase* NewBond(Quarnel::ZQAtomBase* bgn, Quarnel::ZQAtomBase* end,
                               unsigned int order) override {
    ForeignAtom* first = Own(bgn);
    ForeignAtom* second = Own(end);
    if (!first || !second || first == second) return nullptr;
    for (const auto& [idx, bond] : first->bonds) {
      if (bond->GetNbr(first) == second) return nullptr;
    }
    const auto bond = std::make_shared<ForeignBond>(*this, GetMaxBondIdx());
    bond->bgn = first;
    bond->end = second;
    bond->order = order;
    first->bonds[bond->index] = second->bonds[bond->index] = bond;
    bonds_[bond->index] = bond.get();
    UndoAll();
    return bond.get();
  }
  bool DeleteAtom(Quarnel::ZQAtomBase* atom) override {
    ForeignAtom* own = Own(atom);
    if (!own) return false;
    while (!own->bonds.empty()) DeleteBond(own->bonds.begin()->second.get());
    const auto label = labels_.find(own->index);
    atoms_.erase(label->second);
    labels_.erase(label);
    UndoAll();
    return true;
  }
  bool DeleteBond(Quarnel::ZQBondBase* bond) override {
    if (!bond || GetBondAt(bond->GetIdx()) != bond) return false;
    const unsigned int idx = bond->GetIdx();
    ForeignAtom* const bgn = Own(bond->GetBgn());
    Own(bond->GetEnd())->bonds.erase(idx);
    bgn->bonds.erase(idx);
    bonds_.erase(idx);
    UndoAll();
    return true;
  }
  void Clear() override {
    bonds_.clear();
    labels_.clear();
    atoms_.clear();
    done_.clear();
    title_.clear();
    valid_ = true;
    ClearData();
  }

  bool IsPerceived(unsigned int step) const override { return done_.count(step) != 0; }
  void SetPerceived(unsigned int step, bool done) override {
    if (!done) {
      Undo(step);
    } else if (step <= Quarnel::ZQPerceived::Symmetry) {
      done_.insert(step);
    }
  }

  /// Resets the results of a step.
  void Undo(unsigned int step) {
    if (done_.erase(step) == 0) return;
    const std::map<unsigned int, char> flags = {{Quarnel::ZQPerceived::Rings, 'r'},
                                                {Quarnel::ZQPerceived::Aromaticity, 'a'},
                                                {Quarnel::ZQPerceived::Chirality, 'c'}};
    const auto flag = flags.find(step);
    for (const auto& [label, atom] : atoms_) {
      if (flag != flags.end()) atom->SetFlag(flag->second, false);
      if (step == Quarnel::ZQPerceived::Hybridization) atom->hyb = 0;
      if (step == Quarnel::ZQPerceived::Symmetry) atom->symmetryClass = 0;
    }
    if (flag == flags.end()) return;
    for (const auto& [idx, bond] : bonds_) bond->SetFlag(flag->second, false);
  }

 private:
  template <class Map>
  static unsigned int End(const Map& map) {
    return map.empty() ? 0 : map.rbegin()->first + 1;
  }
  ForeignAtom* Own(Quarnel::ZQAtomBase* atom) const {
    return atom && GetAtomAt(atom->GetIdx()) == atom ? static_cast<ForeignAtom*>(atom) : nullptr;
  }
  void UndoAll() {
    while (!done_.empty()) Undo(*done_.begin());
  }

  std::map<std::string, std::unique_ptr<ForeignAtom>> atoms_;  // by label
  std::map<unsigned int, std::string> labels_;                 // by index
  std::map<unsigned int, ForeignBond*> bonds_;                 // by index
  std::set<unsigned int> done_;
  unsigned int lastLabel_ = 0;
  std::string title_;
  bool valid_ = true;
};

template <class Base, class Stereo>
Quarnel::ZQMolBase* ForeignItem<Base, Stereo>::GetParent() const {
  return &mol;
}

template <class Base, class Stereo>
template <class T>
void ForeignItem<Base, Stereo>::Change(T& property, T value,
                                       std::initializer_list<unsigned int> readers) {
  if (property == value) return;
  property = value;
  for (const unsigned int step : readers) mol.Undo(step);
}

/// Copies a molecule through the abstract operations. With holes, every second atom and bond is
/// preceded by one that is deleted at the end.
inline void Fill(Quarnel::ZQMolBase& mol, const Quarnel::ZQMolBase& from, bool holes) {
  mol.Clear();
  mol.BeginEdit();
  mol.SetTitle(from.GetTitle());
  std::vector<Quarnel::ZQAtomBase*> extra;
  std::map<const Quarnel::ZQAtomBase*, Quarnel::ZQAtomBase*> copies;
  for (auto atom = from.GetAtoms(); atom; ++atom) {
    if (holes && atom->GetIdx() % 2 == 0) extra.push_back(mol.NewAtom(0));
    Quarnel::ZQAtomBase* copy = copies[&*atom] = mol.NewAtom(atom->GetAtomicNum());
    copy->SetFormalCharge(atom->GetFormalCharge());
    copy->SetIsotope(atom->GetIsotope());
    copy->SetMapIdx(atom->GetMapIdx());
    copy->SetImplicitHCount(atom->GetImplicitHCount());
    copy->SetStereo(atom->GetStereo());
    copy->SetAromatic(atom->IsAromatic());
    copy->SetChiral(atom->IsChiral());
  }
  for (auto bond = from.GetBonds(); bond; ++bond) {
    Quarnel::ZQAtomBase* bgn = copies[bond->GetBgn()];
    Quarnel::ZQAtomBase* end = copies[bond->GetEnd()];
    if (holes && bond->GetIdx() % 2 == 0) mol.NewBond(extra[bond->GetIdx() % extra.size()], bgn, 1);
    Quarnel::ZQBondBase* copy = mol.NewBond(bgn, end, bond->GetOrder());
    copy->SetStereo(bond->GetStereo());
    copy->SetAromatic(bond->IsAromatic());
    copy->SetChiral(bond->IsChiral());
  }
  for (Quarnel::ZQAtomBase* atom : extra) EXPECT_TRUE(mol.DeleteAtom(atom));
  mol.EndEdit();
}
