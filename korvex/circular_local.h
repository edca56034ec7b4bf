#pragma once

/// Grows the environments of all circular identifiers, as a template over the identifier's type.

#include "korvex/circular.h"
#include "korvex/fragments_local.h"

namespace ZQKorvex {

/// Enumerates environments; created for one call. T is unsigned 32-bit or string.
template <class T>
class CircularGenerator : FragmentGenerator<T> {
 public:
  CircularGenerator(const ZQMolBase& mol, const std::vector<T>& atomInvariants,
                    const std::vector<T>& bondInvariants, unsigned int minradius,
                    unsigned int maxradius, std::vector<ZQFPAtomBondSet<T>>* patterns = nullptr)
      : FragmentGenerator<T>(mol, atomInvariants, bondInvariants, patterns),
        minradius_(minradius),
        maxradius_(maxradius),
        componentOf_(mol.GetMaxAtomIdx()) {}

  /// Calls `sink` with the identifier of each environment, all radii of one centre in sequence.
  template <class Sink>
  void ForEachCircular(Sink sink) {
    if (!ZQ_ASSERT(minradius_ <= maxradius_)) return;
    this->ForEachFragment(minradius_, maxradius_, sink,
                          [&](unsigned int centre) { GrowFrom(centre, sink); });
  }

 private:
  using FragmentGenerator<T>::mol_;
  using FragmentGenerator<T>::atomInvariants_;
  using FragmentGenerator<T>::connections_;
  using FragmentGenerator<T>::fragment_;

  struct Component {
    std::size_t numAtoms;
    T id;
  };

  // An environment that no longer grows is reported once more, at the first radius without new
  // atoms.
  template <class Sink>
  void GrowFrom(unsigned int centre, Sink& sink) {
    fragment_.Add(centre);
    id_ = atomInvariants_[centre];
    bool isNamed = true;  // whether id_ is that of the current environment
    std::size_t layer = 0;
    for (unsigned int radius = 1; radius <= maxradius_; ++radius) {
      const std::size_t layerEnd = fragment_.NumAtoms();
      for (; layer < layerEnd; ++layer) {
        for (const auto& entry : connections_[fragment_.Atoms()[layer]]) {
          if (!fragment_.Has(entry.atom)) fragment_.Add(entry.atom);
        }
      }
      const bool grew = fragment_.NumAtoms() != layerEnd;
      isNamed = isNamed && !grew;
      if (radius >= minradius_) {
        if (!isNamed) isNamed = FindComponent(centre) || this->GetCanonicalID(id_);
        if (isNamed) this->Record(sink, id_);
      }
      if (!grew) {
        if (isNamed) KeepComponent(centre);
        break;
      }
    }
    fragment_.Clear();
  }

  // An environment that covers a connected component is the same set from every centre: its
  // identifier is kept when the first one stops growing. Texts may depend on the order of atoms, so
  // they are computed for each centre.
  void KeepComponent(unsigned int centre) {
    if (FragmentGenerator<T>::isText || componentOf_[centre] != 0) return;
    components_.push_back({fragment_.NumAtoms(), id_});
    for (const unsigned int atom : fragment_.Atoms()) {
      componentOf_[atom] = static_cast<unsigned int>(components_.size());
    }
  }

  bool FindComponent(unsigned int centre) {
    if (componentOf_[centre] == 0) return false;
    const Component& component = components_[componentOf_[centre] - 1];
    if (component.numAtoms != fragment_.NumAtoms()) return false;
    id_ = component.id;
    return true;
  }

  unsigned int minradius_;
  unsigned int maxradius_;
  T id_{};
  std::vector<unsigned int> componentOf_;  // by atom index: from 1, 0 while unknown
  std::vector<Component> components_;
};

}  // namespace ZQKorvex
