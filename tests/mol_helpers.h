#pragma once

/// What several tests share: molecules as literals and in other guises, a molecule with values of
/// the test's choice, and a sink that keeps reports.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "contract/bostrel/throw.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/readers.h"

/// A molecule written as SMILES: "CC(=O)O"_mol.
inline Quarnel::ZQMol operator""_mol(const char* smiles, std::size_t length) {
  Quarnel::ZQMol mol;
  EXPECT_TRUE(Quarnel::ZQSmilesToMol(mol, std::string_view(smiles, length))) << smiles;
  return mol;
}

/// Keeps all reports while it lives, and lets Fatal go on.
class CapturedReports {
 public:
  struct Report {
    Bostrel::ZQErrorLevel level;
    std::string text;
  };

  CapturedReports()
      : before_(
            Bostrel::ZQThrow.SetSink([this](Bostrel::ZQErrorLevel level, const std::string& text) {
              reports_.push_back({level, text});
              return true;
            })) {}
  ~CapturedReports() { Bostrel::ZQThrow.SetSink(std::move(before_)); }
  CapturedReports(const CapturedReports&) = delete;
  CapturedReports& operator=(const CapturedReports&) = delete;

  /// The texts so far, which are then forgotten. Assertion reports are cut down to "Assertion",
  /// with the text in front of them if they have one.
  std::vector<std::string> Take() {
    std::vector<std::string> texts;
    for (const Report& report : std::exchange(reports_, {})) {
      texts.push_back(report.text.substr(0, report.text.find(" failed at line ")));
    }
    return texts;
  }
  std::size_t Count(Bostrel::ZQErrorLevel level) const {
    return static_cast<std::size_t>(
        std::count_if(reports_.begin(), reports_.end(),
                      [level](const Report& report) { return report.level == level; }));
  }
  const std::vector<Report>& Reports() const { return reports_; }

 private:
  std::vector<Report> reports_;
  Bostrel::ZQErrorSink before_;
};

using Texts = std::vector<std::string>;

/// The same molecule with atoms and bonds numbered at random. What was drawn of stereo is left
/// out; whether an atom or bond could carry it stays.
inline Quarnel::ZQMol Shuffled(const Quarnel::ZQMolBase& mol, unsigned int seed) {
  std::mt19937 random(seed);
  std::vector<Quarnel::ZQAtomBase*> atoms;
  std::vector<Quarnel::ZQBondBase*> bonds;
  for (auto atom = mol.GetAtoms(); atom; ++atom) atoms.push_back(&*atom);
  for (auto bond = mol.GetBonds(); bond; ++bond) bonds.push_back(&*bond);
  std::shuffle(atoms.begin(), atoms.end(), random);
  std::shuffle(bonds.begin(), bonds.end(), random);
  Quarnel::ZQMol shuffled;
  std::vector<Quarnel::ZQAtomBase*> copies(mol.GetMaxAtomIdx());
  for (const Quarnel::ZQAtomBase* atom : atoms) {
    Quarnel::ZQAtomBase* copy = shuffled.NewAtom(atom->GetAtomicNum());
    copy->SetFormalCharge(atom->GetFormalCharge());
    copy->SetIsotope(atom->GetIsotope());
    copy->SetMapIdx(atom->GetMapIdx());
    copy->SetImplicitHCount(atom->GetImplicitHCount());
    copy->SetAromatic(atom->IsAromatic());
    copies[atom->GetIdx()] = copy;
  }
  for (const Quarnel::ZQBondBase* bond : bonds) {
    Quarnel::ZQAtomBase* bgn = copies[bond->GetBgn()->GetIdx()];
    Quarnel::ZQAtomBase* end = copies[bond->GetEnd()->GetIdx()];
    if (random() % 2 != 0) std::swap(bgn, end);
    shuffled.NewBond(bgn, end, bond->GetOrder())->SetAromatic(bond->IsAromatic());
  }
  return shuffled;
}

/// The same molecule with each implicit hydrogen as an atom of its own.
inline Quarnel::ZQMol WithHydrogens(const Quarnel::ZQMolBase& mol) {
  Quarnel::ZQMol full(mol);
  const unsigned int heavy = full.GetMaxAtomIdx();
  for (unsigned int i = 0; i < heavy; ++i) {
    Quarnel::ZQAtomBase* atom = full.GetAtomAt(i);
    if (!atom) continue;
    for (; atom->GetImplicitHCount() != 0; atom->SetImplicitHCount(atom->GetImplicitHCount() - 1)) {
      full.NewBond(atom, full.NewAtom(1), 1);
    }
  }
  return full;
}

/// Molecules of many sorts: drugs, charges, salts, cages, stereo, symmetry, odd elements.
inline const std::vector<std::string>& SampleSmiles() {
  static const std::vector<std::string> smiles{
      "CC(=O)Oc1ccccc1C(=O)O",
      "CN1C=NC2=C1C(=O)N(C(=O)N2C)C",
      "CC(C)Cc1ccc(cc1)C(C)C(=O)O",
      "CN1CC[C@]23[C@@H]4[C@H]1CC5=C2C(=C(C=C5)O)O[C@H]3[C@H](C=C4)O",
      "CC1(C)S[C@@H]2[C@H](NC(=O)Cc3ccccc3)C(=O)N2[C@H]1C(=O)O",
      "C[C@]12CC[C@H]3[C@@H](CCC4=CC(=O)CC[C@]34C)[C@@H]1CC[C@@H]2O",
      "Clc1ccc2c(c1)C(=NCC(=O)N2C)c3ccccc3",
      "CCCc1nn(C)c2c1nc([nH]c2=O)-c1cc(ccc1OCC)S(=O)(=O)N1CCN(C)CC1",
      "C[N+](C)(C)CC(=O)[O-]",
      "[Na+].[O-]S(=O)(=O)c1ccccc1",
      "C12C3C4C1C5C2C3C45",
      "C1CC2CCC1CC2",
      "F/C=C/Cl",
      "OP(=O)(O)OC[C@H]1O[C@H](C[C@@H]1O)N1C=CC(N)=NC1=O",
      "FS(F)(F)(F)(F)F",
      "c1ccc2c(c1)c1ccccc1[nH]2",
      "O=[N+]([O-])c1cc[n+]([O-])cc1Br",
      "[2H]C([2H])([2H])O[SiH3]",
      "CC(C)(C)c1cc(cc(c1O)C(C)(C)C)CCC(=O)OCC(COC(=O)C)(COC(=O)C)COC(=O)C",
      "c1ccc(cc1)-c1c2ccc(n2)c(-c2ccccc2)c2ccc([nH]2)c(-c2ccccc2)c2nc(cc2)c(-c2ccccc2)c2ccc1[nH]2",
      "[Fe+2].c1cc[cH-]c1.c1cc[cH-]c1",
      "C#CC=C=CN=[N+]=[N-]",
  };
  return smiles;
}

/// A molecule of another toolkit: every value is what the test says, perception changes none, and
/// slots left out are holes.
class MockMol final : public Quarnel::ZQMolBase {
 public:
  struct Bond;
  struct Atom final : Quarnel::ZQAtomBase {
    unsigned int idx = 0, atomicNum = 6, implicitH = 0, hyb = 0, symmetryClass = 0;
    int charge = 0;
    bool aromatic = false, inRing = false, chiral = false;
    std::vector<Bond*> bonds;

    unsigned int GetIdx() const override { return idx; }
    unsigned int GetAtomicNum() const override { return atomicNum; }
    int GetFormalCharge() const override { return charge; }
    unsigned int GetIsotope() const override { return 0; }
    unsigned int GetMapIdx() const override { return 0; }
    unsigned int GetImplicitHCount() const override { return implicitH; }
    Quarnel::ZQAtomStereo GetStereo() const override { return {}; }
    unsigned int GetHyb() const override { return hyb; }
    unsigned int GetSymmetryClass() const override { return symmetryClass; }
    bool IsAromatic() const override { return aromatic; }
    bool IsInRing() const override { return inRing; }
    bool IsChiral() const override { return chiral; }
    void SetFormalCharge(int) override {}
    void SetIsotope(unsigned int) override {}
    void SetMapIdx(unsigned int) override {}
    void SetImplicitHCount(unsigned int) override {}
    void SetStereo(Quarnel::ZQAtomStereo) override {}
    void SetHyb(unsigned int) override {}
    void SetSymmetryClass(unsigned int) override {}
    void SetAromatic(bool) override {}
    void SetInRing(bool) override {}
    void SetChiral(bool) override {}
    Quarnel::ZQBondBase* NextBond(const Quarnel::ZQBondBase* previous) const override {
      auto at = bonds.begin();
      if (previous) at = std::find(bonds.begin(), bonds.end(), previous) + 1;
      return at == bonds.end() ? nullptr : *at;
    }
  };
  struct Bond final : Quarnel::ZQBondBase {
    unsigned int idx = 0, order = 1;
    Atom *bgn = nullptr, *end = nullptr;
    bool aromatic = false, inRing = false, chiral = false;

    unsigned int GetIdx() const override { return idx; }
    Quarnel::ZQAtomBase* GetBgn() const override { return bgn; }
    Quarnel::ZQAtomBase* GetEnd() const override { return end; }
    unsigned int GetOrder() const override { return order; }
    Quarnel::ZQBondStereo GetStereo() const override { return {}; }
    bool IsAromatic() const override { return aromatic; }
    bool IsInRing() const override { return inRing; }
    bool IsChiral() const override { return chiral; }
    void SetOrder(unsigned int) override {}
    void SetStereo(Quarnel::ZQBondStereo) override {}
    void SetAromatic(bool) override {}
    void SetInRing(bool) override {}
    void SetChiral(bool) override {}
  };

  /// An atom or bond at an index of the test's choice.
  Atom& AddAtom(unsigned int idx, unsigned int atomicNum) {
    atoms_.resize(std::max<std::size_t>(atoms_.size(), idx + 1));
    atoms_[idx] = std::make_unique<Atom>();
    atoms_[idx]->idx = idx;
    atoms_[idx]->atomicNum = atomicNum;
    return *atoms_[idx];
  }
  Bond& AddBond(unsigned int idx, Atom& bgn, Atom& end, unsigned int order) {
    bonds_.resize(std::max<std::size_t>(bonds_.size(), idx + 1));
    bonds_[idx] = std::make_unique<Bond>();
    Bond& bond = *bonds_[idx];
    bond.idx = idx;
    bond.order = order;
    bond.bgn = &bgn;
    bond.end = &end;
    bgn.bonds.push_back(&bond);
    end.bonds.push_back(&bond);
    return bond;
  }

  bool IsValid() const override { return true; }
  void SetValid(bool) override {}
  const std::string& GetTitle() const override { return title_; }
  void SetTitle(const std::string&) override {}
  unsigned int NumAtoms() const override {
    return static_cast<unsigned int>(
        std::count_if(atoms_.begin(), atoms_.end(), [](const auto& a) { return a != nullptr; }));
  }
  unsigned int NumBonds() const override {
    return static_cast<unsigned int>(
        std::count_if(bonds_.begin(), bonds_.end(), [](const auto& b) { return b != nullptr; }));
  }
  unsigned int GetMaxAtomIdx() const override { return static_cast<unsigned int>(atoms_.size()); }
  unsigned int GetMaxBondIdx() const override { return static_cast<unsigned int>(bonds_.size()); }
  Quarnel::ZQAtomBase* GetAtomAt(unsigned int idx) const override { return atoms_[idx].get(); }
  Quarnel::ZQBondBase* GetBondAt(unsigned int idx) const override { return bonds_[idx].get(); }
  Quarnel::ZQAtomBase* NewAtom(unsigned int) override { return nullptr; }
  Quarnel::ZQBondBase* NewBond(Quarnel::ZQAtomBase*, Quarnel::ZQAtomBase*, unsigned int) override {
    return nullptr;
  }
  bool DeleteAtom(Quarnel::ZQAtomBase*) override { return false; }
  bool DeleteBond(Quarnel::ZQBondBase*) override { return false; }
  void Clear() override {}
  bool IsPerceived(unsigned int) const override { return true; }
  void SetPerceived(unsigned int, bool) override {}

 private:
  std::vector<std::unique_ptr<Atom>> atoms_;
  std::vector<std::unique_ptr<Bond>> bonds_;
  std::string title_;
};
