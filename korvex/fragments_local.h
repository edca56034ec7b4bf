#pragma once

/// The common base of the circular and the tree generator: fragments are connected sets of atoms,
/// and only the order of enumeration differs.

#include <algorithm>
#include <optional>
#include <string>
#include <type_traits>
#include <utility>
#include <vector>

#include "korvex/canonicalset_local.h"
#include "korvex/canonicalset_unhashed_local.h"
#include "korvex/fpatombondset.h"
#include "korvex/subgraph_local.h"
#include "korvex/symmetryfilter_local.h"

namespace ZQKorvex {

/// Computes the identifiers of fragments; used for one call. T is unsigned 32-bit or string.
template <class T>
class FragmentGenerator {
 public:
  /// `patterns`, if not null, receives the atoms and bonds of each fragment as well.
  FragmentGenerator(const ZQMolBase& mol, const std::vector<T>& atomInvariants,
                    const std::vector<T>& bondInvariants, std::vector<ZQFPAtomBondSet<T>>* patterns)
      : mol_(mol),
        atomInvariants_(atomInvariants),
        bondInvariants_(bondInvariants),
        connections_(mol, ZQConnectionTable::Hydrogens::LeftOut),
        patterns_(patterns) {}

 protected:
  static constexpr bool isText = std::is_same_v<T, std::string>;

  /// Records every atom, heavy or not, if sizes begin at 0, and calls `growFrom` for larger
  /// fragments, if any, with each heavy atom as centre: of symmetric atoms only the first.
  template <class Sink, class GrowFrom>
  void ForEachFragment(unsigned int minSize, unsigned int maxSize, Sink& sink, GrowFrom growFrom) {
    const bool atoms = ZQ_ASSERT(atomInvariants_.size() == mol_.GetMaxAtomIdx());
    const bool bonds = ZQ_ASSERT(bondInvariants_.size() == mol_.GetMaxBondIdx());
    if (!atoms || !bonds) return;
    for (unsigned int idx = 0; minSize == 0 && idx < mol_.GetMaxAtomIdx(); ++idx) {
      if (!mol_.GetAtomAt(idx)) continue;
      fragment_.Add(idx);
      Record(sink, atomInvariants_[idx]);
      fragment_.Clear();
    }
    ZQSymmetryFilter filter(mol_);
    for (unsigned int idx = 0; maxSize != 0 && idx < mol_.GetMaxAtomIdx(); ++idx) {
      const ZQAtomBase* atom = mol_.GetAtomAt(idx);
      if (atom && ZQIsHeavy()(*atom) && filter.IsFirst(*atom)) growFrom(idx);
    }
  }

  /// Computes the identifier of the current fragment of two atoms or more.
  bool GetCanonicalID(T& id) {
    if constexpr (isText) {
      if (!canonical_) canonical_.emplace(mol_, connections_, atomInvariants_, bondInvariants_);
      return canonical_->GetCanonicalID(id, fragment_.Atoms());
    } else {
      if (!canonical_) canonical_.emplace(atomInvariants_, bondInvariants_);
      return canonical_->GetCanonicalID(id, fragment_);
    }
  }

  /// Passes the current fragment to `sink`.
  template <class Sink>
  void Record(Sink& sink, const T& id) {
    sink(id);
    if (patterns_) patterns_->push_back(MakePattern(id));
  }

  const ZQMolBase& mol_;
  const std::vector<T>& atomInvariants_;
  const std::vector<T>& bondInvariants_;
  const ZQConnectionTable connections_;
  ZQSubgraph fragment_{connections_};

 private:
  using CanonicalIdGenerator =
      std::conditional_t<isText, ZQUnHashedCanonicalIdGenerator, ZQHashedCanonicalIdGenerator>;

  // Each atom with its bond to the earliest fragment atom bonded to it: a spanning tree.
  ZQFPAtomBondSet<T> MakePattern(const T& id) const {
    ZQFPAtomBondSet<T> pattern(&mol_, id);
    pattern.Reserve(fragment_.NumAtoms(), fragment_.NumAtoms() - 1);
    for (std::size_t place = 0; place < fragment_.NumAtoms(); ++place) {
      ZQAtomBase* atom = mol_.GetAtomAt(fragment_.Atoms()[place]);
      if (ZQ_ASSERT(atom != nullptr)) pattern.AddAtom(atom);
      const auto bonds = fragment_.BondsToEarlier(place);
      const auto first = std::ranges::min_element(bonds, {}, &ZQSubgraph::Bond::earlierPlace);
      if (first != bonds.end()) pattern.AddBond(mol_.GetBondAt(first->idx));
    }
    ZQ_ASSERT(pattern.NumAtoms() == pattern.NumBonds() + 1);
    return pattern;
  }

  std::vector<ZQFPAtomBondSet<T>>* patterns_;
  std::optional<CanonicalIdGenerator> canonical_;
};

}  // namespace ZQKorvex
