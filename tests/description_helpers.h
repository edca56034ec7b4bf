#pragma once

/// A description of a molecule by its atoms' map numbers, which must be distinct: two descriptions
/// are equal exactly if the molecules are the same, configurations included, regardless of the
/// numbering of atoms and bonds.

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "tests/mol_helpers.h"

/// The map numbers of an atom's neighbours in the order of its configuration, with 0 for the
/// hydrogen or lone pair.
inline std::vector<unsigned int> StereoOrder(const Quarnel::ZQAtomBase& atom) {
  std::vector<unsigned int> order;
  for (const auto* b = atom.NextBond(nullptr); b; b = atom.NextBond(b)) {
    order.push_back(b->GetNbr(&atom)->GetMapIdx());
  }
  if (order.size() == 3) order.insert(order.begin(), 0);
  return order;
}

inline bool IsOdd(const std::vector<unsigned int>& order) {
  bool odd = false;
  for (std::size_t i = 0; i < order.size(); ++i) {
    for (std::size_t j = i + 1; j < order.size(); ++j) odd ^= order[i] > order[j];
  }
  return odd;
}

/// The turn of the others by ascending number, seen from the neighbour of the lowest number: -1
/// counterclockwise, 1 clockwise, 0 if nothing is drawn.
inline int GetTurn(const Quarnel::ZQAtomBase& atom) {
  if (atom.GetStereo() == Quarnel::ZQAtomStereo::None) return 0;
  const bool clockwise = atom.GetStereo() == Quarnel::ZQAtomStereo::Clockwise;
  return clockwise != IsOdd(StereoOrder(atom)) ? 1 : -1;
}

/// For the neighbours of the lowest number on each side: 1 cis, -1 trans, 0 if nothing is drawn.
inline int GetSides(const Quarnel::ZQBondBase& bond) {
  if (bond.GetStereo() == Quarnel::ZQBondStereo::None) return 0;
  int sides = bond.GetStereo() == Quarnel::ZQBondStereo::Cis ? 1 : -1;
  for (const auto* end : {bond.GetBgn(), bond.GetEnd()}) {
    std::vector<unsigned int> others;
    for (const auto* b = end->NextBond(nullptr); b; b = end->NextBond(b)) {
      if (b != &bond) others.push_back(b->GetNbr(end)->GetMapIdx());
    }
    if (std::min_element(others.begin(), others.end()) != others.begin()) sides = -sides;
  }
  return sides;
}

inline std::vector<std::string> Told(const Quarnel::ZQMolBase& mol) {
  std::vector<std::string> lines;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    lines.push_back("atom " + std::to_string(atom->GetMapIdx()) + ": " +
                    std::to_string(atom->GetIsotope()) +
                    Quarnel::ZQGetAtomicSymbol(atom->GetAtomicNum()) + " H" +
                    std::to_string(atom->GetImplicitHCount()) + " charge " +
                    std::to_string(atom->GetFormalCharge()) + " turn " +
                    std::to_string(GetTurn(*atom)) + (atom->IsAromatic() ? " aromatic" : ""));
  }
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    const unsigned int a = bond->GetBgn()->GetMapIdx();
    const unsigned int b = bond->GetEnd()->GetMapIdx();
    lines.push_back("bond " + std::to_string(std::min(a, b)) + " " +
                    std::to_string(std::max(a, b)) + ": " +
                    (bond->IsAromatic() ? "aromatic" : std::to_string(bond->GetOrder())) +
                    " sides " + std::to_string(GetSides(*bond)));
  }
  std::sort(lines.begin(), lines.end());
  return lines;
}

inline void NumberAtoms(Quarnel::ZQMolBase& mol) {
  for (auto atom = mol.GetAtoms(); atom; ++atom) atom->SetMapIdx(atom->GetIdx() + 1);
}

/// `Shuffled`, with all configurations restated for the new order.
inline Quarnel::ZQMol ShuffledWithStereo(const Quarnel::ZQMolBase& mol, unsigned int seed) {
  using namespace Quarnel;
  ZQMol tagged(mol);
  NumberAtoms(tagged);
  ZQMol shuffled = Shuffled(tagged, seed);
  std::vector<ZQAtomBase*> copies(mol.GetMaxAtomIdx());
  for (auto atom = shuffled.GetAtoms(); atom; ++atom) copies[atom->GetMapIdx() - 1] = &*atom;
  for (auto atom = tagged.GetAtoms(); atom; ++atom) {
    ZQAtomBase* copy = copies[atom->GetIdx()];
    copy->SetStereo(atom->GetStereo());
    if (GetTurn(*copy) == GetTurn(*atom)) continue;
    copy->SetStereo(atom->GetStereo() == ZQAtomStereo::Clockwise ? ZQAtomStereo::CounterClockwise
                                                                 : ZQAtomStereo::Clockwise);
  }
  for (auto bond = tagged.GetBonds(); bond; ++bond) {
    const ZQAtomBase* bgn = copies[bond->GetBgn()->GetIdx()];
    auto copy = bgn->GetBonds();
    while (copy->GetNbr(bgn) != copies[bond->GetEnd()->GetIdx()]) ++copy;
    copy->SetStereo(bond->GetStereo());
    if (GetSides(*copy) == GetSides(*bond)) continue;
    copy->SetStereo(bond->GetStereo() == ZQBondStereo::Cis ? ZQBondStereo::Trans
                                                           : ZQBondStereo::Cis);
  }
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    copies[atom->GetIdx()]->SetMapIdx(atom->GetMapIdx());
  }
  return shuffled;
}
