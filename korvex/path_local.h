#pragma once

/// The enumeration of paths, as a template over the identifier's type.

#include <algorithm>
#include <array>
#include <span>
#include <string>
#include <type_traits>
#include <vector>

#include "korvex/connectiontable_local.h"
#include "korvex/fpatombondset.h"
#include "korvex/path.h"
#include "korvex/primes_local.h"
#include "korvex/symmetryfilter_local.h"

namespace ZQKorvex {

/// Enumerates paths; used for one call. T is unsigned 32-bit or string.
template <class T>
class PathGenerator {
 public:
  /// `patterns`, if not null, also receives the atoms and bonds of each recorded path.
  PathGenerator(const ZQMolBase& mol, std::vector<T>& atomInvariants,
                std::vector<T>& bondInvariants, unsigned int minbonds, unsigned int maxbonds,
                std::vector<ZQFPAtomBondSet<T>>* patterns = nullptr)
      : mol_(mol),
        atomInvariants_(atomInvariants),
        bondInvariants_(bondInvariants),
        // No path has more bonds than there are atoms; this cap prevents overflow.
        minAtoms_(std::min(minbonds, mol.GetMaxAtomIdx()) + 1),
        maxAtoms_(std::min(maxbonds, mol.GetMaxAtomIdx()) + 1),
        patterns_(patterns) {}

  /// Calls `sink` with the identifier of each path, depth first from each start atom.
  template <class Sink>
  void ForEachPath(Sink sink) {
    if (!ZQ_ASSERT(atomInvariants_.size() == mol_.GetMaxAtomIdx()) ||
        !ZQ_ASSERT(bondInvariants_.size() == mol_.GetMaxBondIdx())) {
      return;
    }
    if constexpr (!isText) {
      if (!ZQ_ASSERT(2 * std::size_t{maxAtoms_} <= PATH_PRIMES.size())) return;
    }
    const SentinelEntries sentinels(atomInvariants_, bondInvariants_);
    const ZQConnectionTable connections(mol_, ZQConnectionTable::Hydrogens::Kept);
    visited_.assign(mol_.GetMaxAtomIdx(), 0);
    steps_.resize(maxAtoms_ + 1);
    ZQSymmetryFilter filter(mol_);
    for (unsigned int start = 0; start < mol_.GetMaxAtomIdx(); ++start) {
      const ZQAtomBase* atom = mol_.GetAtomAt(start);
      if (atom && ZQIsHeavy()(*atom) && filter.IsFirst(*atom)) {
        WalkFrom(start, connections, sink);
      }
    }
  }

 private:
  static constexpr bool isText = std::is_same_v<T, std::string>;
  using Entry = ZQConnectionTable::Entry;

  // One atom of the current path, the bond to it from the previous atom, and its untried
  // neighbours.
  struct Step {
    unsigned int atom;
    unsigned int bond;
    const Entry* next;
    const Entry* end;
    T id;  // of the path up to this atom
  };

  // An extra last entry of each vector, which a path's start reads as its bond.
  class SentinelEntries {
   public:
    SentinelEntries(std::vector<T>& atoms, std::vector<T>& bonds) : atoms_(atoms), bonds_(bonds) {
      atoms_.reserve(atoms_.size() + 1);
      bonds_.emplace_back();
      atoms_.emplace_back();
    }
    ~SentinelEntries() {
      atoms_.pop_back();
      bonds_.pop_back();
    }
    SentinelEntries(const SentinelEntries&) = delete;
    SentinelEntries& operator=(const SentinelEntries&) = delete;

   private:
    std::vector<T>& atoms_;
    std::vector<T>& bonds_;
  };

  // steps_[0] is the empty path, steps_[depth] the path of `depth` atoms.
  template <class Sink>
  void WalkFrom(unsigned int start, const ZQConnectionTable& connections, Sink& sink) {
    unsigned int depth = 0;
    Entry entry{start, mol_.GetMaxBondIdx()};
    do {
      if (!visited_[entry.atom]) {
        ++depth;
        Step& step = steps_[depth];
        step.atom = entry.atom;
        step.bond = entry.bond;
        Extend(step.id, steps_[depth - 1].id, depth - 1, entry);
        if (depth >= minAtoms_) {
          sink(static_cast<const T&>(step.id));
          if (patterns_) AddPattern(depth);
        }
        visited_[entry.atom] = 1;
        const std::span<const Entry> entries = connections[entry.atom];
        step.next = entries.data();
        step.end = depth < maxAtoms_ ? step.next + entries.size() : step.next;
      }
      while (depth != 0 && steps_[depth].next == steps_[depth].end) {
        visited_[steps_[depth--].atom] = 0;
      }
      if (depth != 0) entry = *steps_[depth].next++;
    } while (depth != 0);
  }

  void Extend(T& id, const T& prefix, unsigned int position, const Entry& entry) const {
    const T& bond = bondInvariants_[entry.bond];
    const T& atom = atomInvariants_[entry.atom];
    if constexpr (isText) {
      id.assign(prefix).append(bond).append(atom);
    } else {
      id = prefix + bond * PATH_PRIMES[2 * position] + atom * PATH_PRIMES[2 * position + 1];
    }
  }

  void AddPattern(unsigned int depth) {
    ZQFPAtomBondSet<T> pattern(&mol_, steps_[depth].id);
    pattern.Reserve(depth, depth - 1);
    for (unsigned int i = 1; i <= depth; ++i) {
      ZQAtomBase* atom = mol_.GetAtomAt(steps_[i].atom);
      if (ZQ_ASSERT(atom != nullptr)) pattern.AddAtom(atom);
      if (i == 1) continue;
      ZQBondBase* bond = mol_.GetBondAt(steps_[i].bond);
      if (ZQ_ASSERT(bond != nullptr)) pattern.AddBond(bond);
    }
    patterns_->push_back(std::move(pattern));
  }

  const ZQMolBase& mol_;
  std::vector<T>& atomInvariants_;
  std::vector<T>& bondInvariants_;
  unsigned int minAtoms_;
  unsigned int maxAtoms_;
  std::vector<ZQFPAtomBondSet<T>>* patterns_;

  std::vector<unsigned char> visited_;  // by atom index: on the current path
  std::vector<Step> steps_;
};

}  // namespace ZQKorvex
