#pragma once

/// Shared by several tests: molecules as literals and in equivalent forms, a sink that keeps
/// reports, and work on several threads.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "contract/bostrel/throw.h"
#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/readers.h"

/// A molecule written as SMILES: "CC(=O)O"_mol.
inline Quarnel::ZQMol ReadSmiles(std::string_view smiles) {
  Quarnel::ZQMol mol;
  EXPECT_TRUE(Quarnel::ZQSmilesToMol(mol, smiles)) << smiles;
  return mol;
}
inline Quarnel::ZQMol operator""_mol(const char* smiles, std::size_t length) {
  return ReadSmiles({smiles, length});
}

inline std::string Repeated(std::string_view text, std::size_t times) {
  std::string all;
  for (; times > 0; --times) all += text;
  return all;
}

/// A parser's error text: "3: found "X", expected a Y".
inline std::string Finding(int place, std::string_view found, std::string_view expected) {
  return std::to_string(place)
      .append(": found ")
      .append(found)
      .append(", expected ")
      .append(expected);
}

/// Runs `work(t)` for t = 0 to `count` - 1, each on its own thread.
template <class Work>
void OnThreads(unsigned int count, Work work) {
  std::vector<std::thread> threads;
  for (unsigned int t = 0; t < count; ++t) threads.emplace_back(work, t);
  for (std::thread& thread : threads) thread.join();
}

/// Collects all reports during its lifetime, and continues after Fatal.
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

  /// Returns and clears the texts so far. Assertion reports are shortened to "Assertion", preceded
  /// by their message if they have one.
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

/// The same molecule with atoms and bonds numbered at random. Drawn configurations are omitted;
/// whether an atom or bond could carry stereo is kept.
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

/// The same molecule with all hydrogens explicit.
inline Quarnel::ZQMol WithHydrogens(const Quarnel::ZQMolBase& mol) {
  Quarnel::ZQMol full(mol);
  const unsigned int heavy = full.GetMaxAtomIdx();
  for (unsigned int i = 0; i < heavy; ++i) {
    Quarnel::ZQAtomBase* atom = full.GetAtomAt(i);
    if (!atom) continue;
    // The hydrogen of a centre moves from the first place to the last.
    const bool isTurned = atom->GetImplicitHCount() == 1 && atom->GetDegree() == 4;
    if (isTurned && atom->GetStereo() != Quarnel::ZQAtomStereo::None) {
      atom->SetStereo(atom->GetStereo() == Quarnel::ZQAtomStereo::Clockwise
                          ? Quarnel::ZQAtomStereo::CounterClockwise
                          : Quarnel::ZQAtomStereo::Clockwise);
    }
    for (; atom->GetImplicitHCount() != 0; atom->SetImplicitHCount(atom->GetImplicitHCount() - 1)) {
      full.NewBond(atom, full.NewAtom(1), 1);
    }
  }
  return full;
}

/// Molecules of many kinds: drugs, charges, salts, cages, stereo, symmetry, odd elements.
inline const std::vector<std::string>& SampleSmiles() {
  static const std::vector<std::string> smiles = [] {
    std::istringstream text(R"t(
        CC(=O)Oc1ccccc1C(=O)O   CN1C=NC2=C1C(=O)N(C(=O)N2C)C   CC(C)Cc1ccc(cc1)C(C)C(=O)O
        CN1CC[C@]23[C@@H]4[C@H]1CC5=C2C(=C(C=C5)O)O[C@H]3[C@H](C=C4)O
        CC1(C)S[C@@H]2[C@H](NC(=O)Cc3ccccc3)C(=O)N2[C@H]1C(=O)O
        C[C@]12CC[C@H]3[C@@H](CCC4=CC(=O)CC[C@]34C)[C@@H]1CC[C@@H]2O
        Clc1ccc2c(c1)C(=NCC(=O)N2C)c3ccccc3
        CCCc1nn(C)c2c1nc([nH]c2=O)-c1cc(ccc1OCC)S(=O)(=O)N1CCN(C)CC1   C[N+](C)(C)CC(=O)[O-]
        [Na+].[O-]S(=O)(=O)c1ccccc1   C12C3C4C1C5C2C3C45   C1CC2CCC1CC2   F/C=C/Cl
        OP(=O)(O)OC[C@H]1O[C@H](C[C@@H]1O)N1C=CC(N)=NC1=O   FS(F)(F)(F)(F)F
        c1ccc2c(c1)c1ccccc1[nH]2   O=[N+]([O-])c1cc[n+]([O-])cc1Br   [2H]C([2H])([2H])O[SiH3]
        CC(C)(C)c1cc(cc(c1O)C(C)(C)C)CCC(=O)OCC(COC(=O)C)(COC(=O)C)COC(=O)C
        c1ccc(cc1)-c1c2ccc(n2)c(-c2ccccc2)c2ccc([nH]2)c(-c2ccccc2)c2nc(cc2)c(-c2ccccc2)c2ccc1[nH]2
        [Fe+2].c1cc[cH-]c1.c1cc[cH-]c1   C#CC=C=CN=[N+]=[N-])t");
    return std::vector<std::string>(std::istream_iterator<std::string>(text), {});
  }();
  return smiles;
}
