#pragma once

#include <span>
#include <vector>

#include "korvex/connectiontable_local.h"

namespace ZQKorvex {

/// A set of atoms of one molecule, used as a stack, and the bonds between them.
class ZQSubgraph {
 public:
  /// A bond between the atoms at two places in the set.
  struct Bond {
    unsigned int place;
    unsigned int earlierPlace;
    unsigned int idx;
  };

  explicit ZQSubgraph(const ZQConnectionTable& connections)
      : connections_(connections), places_(connections.NumAtomSlots(), none) {}

  /// Adds an atom that isn't in the set.
  void Add(unsigned int atom) {
    const auto place = static_cast<unsigned int>(atoms_.size());
    places_[atom] = place;
    atoms_.push_back(atom);
    firstBonds_.push_back(bonds_.size());
    for (const auto& entry : connections_[atom]) {
      const unsigned int other = places_[entry.atom];
      if (other != none) bonds_.push_back({place, other, entry.bond});
    }
  }
  void RemoveLast() {
    places_[atoms_.back()] = none;
    bonds_.resize(firstBonds_.back());
    firstBonds_.pop_back();
    atoms_.pop_back();
  }
  void Clear() {
    for (const unsigned int atom : atoms_) places_[atom] = none;
    atoms_.clear();
    firstBonds_.clear();
    bonds_.clear();
  }

  bool Has(unsigned int atom) const { return places_[atom] != none; }
  std::size_t NumAtoms() const { return atoms_.size(); }
  /// In the order of addition.
  std::span<const unsigned int> Atoms() const { return atoms_; }
  /// In ascending order of place.
  std::span<const Bond> Bonds() const { return bonds_; }
  /// The bonds from the atom at a place to earlier atoms.
  std::span<const Bond> BondsToEarlier(std::size_t place) const {
    const std::size_t end =
        place + 1 == firstBonds_.size() ? bonds_.size() : firstBonds_[place + 1];
    return Bonds().subspan(firstBonds_[place], end - firstBonds_[place]);
  }

 private:
  static constexpr unsigned int none = ~0U;

  const ZQConnectionTable& connections_;
  std::vector<unsigned int> places_;  // by atom index
  std::vector<unsigned int> atoms_;
  std::vector<std::size_t> firstBonds_;  // by place: bonds before those of its atom
  std::vector<Bond> bonds_;
};

}  // namespace ZQKorvex
