#include "korvex/connectiontable_local.h"

namespace ZQKorvex {

ZQConnectionTable::ZQConnectionTable(const ZQMolBase& mol, Hydrogens hydrogens)
    : first_(mol.GetMaxAtomIdx() + 1) {
  struct Bond {
    unsigned int idx, bgn, end;
  };
  std::vector<Bond> bonds;
  bonds.reserve(mol.GetMaxBondIdx());
  for (unsigned int i = 0; i < mol.GetMaxBondIdx(); ++i) {
    const ZQBondBase* bond = mol.GetBondAt(i);
    if (!bond) continue;
    const ZQAtomBase* bgn = bond->GetBgn();
    const ZQAtomBase* end = bond->GetEnd();
    if (hydrogens == Hydrogens::LeftOut && (bgn->IsHydrogen() || end->IsHydrogen())) continue;
    bonds.push_back({i, bgn->GetIdx(), end->GetIdx()});
    ++first_[bonds.back().bgn];
    ++first_[bonds.back().end];
  }
  // Counts become end offsets, which filling backwards decrements to begin offsets.
  unsigned int sum = 0;
  for (unsigned int& entry : first_) entry = sum += entry;
  entries_.resize(sum);
  for (auto bond = bonds.rbegin(); bond != bonds.rend(); ++bond) {
    entries_[--first_[bond->bgn]] = {bond->end, bond->idx};
    entries_[--first_[bond->end]] = {bond->bgn, bond->idx};
  }
}

}  // namespace ZQKorvex
