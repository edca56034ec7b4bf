#pragma once

/// The enumeration of connected sets for tree identifiers, as a template over the identifier's
/// type.

#include <span>
#include <vector>

#include "korvex/fragments_local.h"
#include "korvex/tree.h"

namespace ZQKorvex {

/// Enumerates connected sets of atoms; used for one call. T is unsigned 32-bit or string.
template <class T>
class TreeGenerator : FragmentGenerator<T> {
 public:
  TreeGenerator(const ZQMolBase& mol, const std::vector<T>& atomInvariants,
                const std::vector<T>& bondInvariants, unsigned int minbonds, unsigned int maxbonds,
                std::vector<ZQFPAtomBondSet<T>>* patterns = nullptr)
      : FragmentGenerator<T>(mol, atomInvariants, bondInvariants, patterns),
        minbonds_(minbonds),
        maxbonds_(maxbonds),
        listed_(mol.GetMaxAtomIdx()) {}

  /// Calls `sink` with the identifier of each set, depth first from each centre.
  template <class Sink>
  void ForEachTree(Sink sink) {
    this->ForEachFragment(minbonds_, maxbonds_, sink,
                          [&](unsigned int centre) { GrowFrom(centre, sink); });
  }

 private:
  using FragmentGenerator<T>::mol_;
  using FragmentGenerator<T>::atomInvariants_;
  using FragmentGenerator<T>::bondInvariants_;
  using FragmentGenerator<T>::connections_;
  using FragmentGenerator<T>::fragment_;

  // A set on the current branch: the next candidate to add to it, and the number of candidates
  // before its last atom added its own.
  struct Step {
    std::size_t next;
    std::size_t firstOwn;
  };

  // Each set of a centre is reached once: its atoms are added in the order in which they became
  // candidates, and a candidate that was skipped, or added by an earlier sibling, is excluded. The
  // centre itself is excluded from the sets of later ones.
  template <class Sink>
  void GrowFrom(unsigned int centre, Sink& sink) {
    listed_[centre] = 1;
    fragment_.Add(centre);
    candidates_.clear();
    steps_.clear();
    Push(0);
    while (!steps_.empty()) {
      Step& step = steps_.back();
      if (step.next == candidates_.size()) {
        for (std::size_t i = step.firstOwn; i < candidates_.size(); ++i) {
          listed_[candidates_[i]] = 0;
        }
        candidates_.resize(step.firstOwn);
        steps_.pop_back();
        fragment_.RemoveLast();
        continue;
      }
      fragment_.Add(candidates_[step.next++]);
      const std::size_t bonds = fragment_.NumAtoms() - 1;
      if (bonds >= minbonds_ && GetCanonicalTreeId(id_)) this->Record(sink, id_);
      if (bonds < maxbonds_) {
        Push(step.next);
      } else {
        fragment_.RemoveLast();
      }
    }
  }

  // Appends the new neighbours of the set's last atom to the remaining candidates.
  void Push(std::size_t next) {
    steps_.push_back({next, candidates_.size()});
    for (const auto& entry : connections_[fragment_.Atoms().back()]) {
      if (listed_[entry.atom]) continue;
      listed_[entry.atom] = 1;
      candidates_.push_back(entry.atom);
    }
  }

  // Pairs, the most frequent sets, have a closed formula.
  bool GetCanonicalTreeId(T& id) {
    const std::span<const unsigned int> atoms = fragment_.Atoms();
    if (atoms.size() > 2) return this->GetCanonicalID(id);
    const T& a = atomInvariants_[atoms[0]];
    const T& b = atomInvariants_[atoms[1]];
    const T& bond = bondInvariants_[fragment_.Bonds().front().idx];
    const T& greater = a < b ? b : a;
    const T& lesser = a < b ? a : b;
    if constexpr (FragmentGenerator<T>::isText) {
      id.assign(greater).append(bond).append(lesser);
    } else {
      id = greater * 947 + lesser * 1019 + bond * 983;
    }
    return true;
  }

  unsigned int minbonds_;
  unsigned int maxbonds_;
  std::vector<unsigned char> listed_;     // by atom index: in the set, a candidate, or excluded
  std::vector<unsigned int> candidates_;  // neighbours of the set, branch after branch
  std::vector<Step> steps_;
  T id_{};
};

}  // namespace ZQKorvex
