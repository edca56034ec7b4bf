#pragma once

/// Perception over any `ZQMolBase`. Each function reads the graph, computes on flat scratch and
/// writes its result back, marking the step as perceived. Calls on distinct molecules may run on
/// distinct threads. Cost is close to linear in atoms and bonds unless stated.

#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// "C" for 6, "*" for 0; "?" above 118.
ZQ_EXPORT const char* ZQGetAtomicSymbol(unsigned int atomicNum);
/// The atomic number of a symbol in its proper case ("Cl"); 0 for "*" and for what is no element.
ZQ_EXPORT unsigned int ZQGetAtomicNum(const std::string& symbol);

/// Hydrogens that the usual valence model adds to an atom which doesn't tell its own: the lowest
/// of the element's standard valences, moved by the charge, that holds `bondOrderSum`.
ZQ_EXPORT unsigned int ZQDefaultHCount(unsigned int atomicNum, int charge,
                                       unsigned int bondOrderSum);

/// Gives the bonds between atoms marked aromatic alternating orders 1 and 2. False, with the
/// index of an atom that can't be served in `*culprit`, if there is no such assignment; the
/// orders are then as before.
ZQ_EXPORT bool ZQKekulize(ZQMolBase& mol, unsigned int* culprit = nullptr);

/// Whether an atom of atomic number 1 is present.
ZQ_EXPORT bool ZQHasExplicitHydrogens(const ZQMolBase& mol);
/// Turns explicit hydrogens into counts on their neighbours. Kept are hydrogens that are charged,
/// bridging, bonded to another hydrogen or to nothing, and those with an isotope, an atom class
/// or a role in stereo, unless the flag of each says otherwise.
ZQ_EXPORT void ZQSuppressHydrogens(ZQMolBase& mol, bool deleteIsotopes = false,
                                   bool deleteMapped = false, bool deleteStereo = false);

/// Ring membership of atoms and bonds, in linear time: a bond is in a ring if it isn't a bridge.
ZQ_EXPORT void ZQFindRingAtomsAndBonds(ZQMolBase& mol);

/// Tag of the aromaticity model that was applied, an int.
inline constexpr unsigned int ZQAromaticityModelTag = 58;

/// Aromaticity, model 2 (the only one). The remaining arguments keep the call's usual form:
/// `clear` starts from no flags at all (false keeps those already set), `maxRing` above 0 limits
/// the ring size, `prune` skips systems that can't be aromatic early. The flags found never
/// depend on `prune`. Records the model as generic data under `ZQAromaticityModelTag`. A model
/// other than 2 warns and answers false.
ZQ_EXPORT bool ZQAssignAromaticFlags(ZQMolBase& mol, unsigned int model, bool clear,
                                     unsigned int maxRing, bool prune);

/// Hybridization of every atom.
ZQ_EXPORT void ZQAssignHybridization(ZQMolBase& mol);

/// Which atoms and double bonds could carry stereo: four distinct neighbours by symmetry class
/// around an atom, two and two around a double bond. `specifiedOnly` keeps only those that the
/// input gave a configuration.
ZQ_EXPORT void ZQPerceiveChiral(ZQMolBase& mol, bool specifiedOnly);

/// Symmetry classes from 1 up: two atoms share one only if an automorphism of the molecule that
/// keeps everything that an invariant can read maps one onto the other. `automorphisms` false
/// stops at partition refinement, which is cheaper and may merge more. `stereo` true also
/// separates by the configuration drawn.
ZQ_EXPORT void ZQPerceiveSymmetry(ZQMolBase& mol, bool automorphisms, bool stereo);

/// Connected components; `parts[idx]` is 1 and up, 0 for a hole. Returns their number.
ZQ_EXPORT unsigned int ZQDetermineComponents(const ZQMolBase& mol,
                                             std::vector<unsigned int>& parts);

}  // namespace Quarnel
