#pragma once

#include <span>
#include <vector>

#include "korvex/siblings.h"

namespace ZQKorvex {

/// The bonds of each atom as one flat table of neighbour and bond indices, in the order of the
/// atom's bonds.
class ZQConnectionTable {
 public:
  struct Entry {
    unsigned int atom;
    unsigned int bond;
  };
  /// Whether bonds to hydrogens are in the table.
  enum class Hydrogens { Kept, LeftOut };

  ZQConnectionTable(const ZQMolBase& mol, Hydrogens hydrogens);

  std::span<const Entry> operator[](unsigned int atom) const {
    return {entries_.data() + first_[atom], entries_.data() + first_[atom + 1]};
  }
  unsigned int NumAtomSlots() const { return static_cast<unsigned int>(first_.size() - 1); }

 private:
  std::vector<unsigned int> first_;
  std::vector<Entry> entries_;
};

}  // namespace ZQKorvex
