#pragma once

/// Perception over any `ZQMolBase`. Each function reads the graph, computes on flat scratch and
/// writes its result back, marking the step as perceived. Calls on distinct molecules may run on
/// distinct threads. Cost is close to linear in atoms and bonds unless stated. The flags found
/// depend neither on the order of atoms and bonds nor on the choice among equivalent Kekulé
/// structures.
///
/// The usual order is hydrogens, rings, aromaticity, and then any of the others, which read the
/// flags of those before them as they find them.

#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// "C" for 6, "*" for 0; "?" above 118.
ZQ_EXPORT const char* ZQGetAtomicSymbol(unsigned int atomicNum);
/// The atomic number of a symbol in its proper case ("Cl"); 0 for "*" and for what is no element.
ZQ_EXPORT unsigned int ZQGetAtomicNum(const std::string& symbol);

/// Hydrogens that the usual valence model adds to an atom without a count of its own: the lowest
/// of the element's standard valences, moved by the charge to those of the element with as many
/// electrons, that holds `bondOrderSum`. 0 for metals and noble gases.
ZQ_EXPORT unsigned int ZQDefaultHCount(unsigned int atomicNum, int charge,
                                       unsigned int bondOrderSum);

/// Gives the aromatic bonds of a molecule read with aromatic symbols alternating orders 1 and 2,
/// by a perfect matching over general graphs, odd rings and charges included. Implicit hydrogens
/// must be counted already: an atom marked aromatic takes a double bond if its hydrogens, charge
/// and other bonds leave exactly one valence open by `ZQDefaultHCount`, and may take one if they
/// leave more (a radical or carbene) or if it is a dummy atom. Bonds marked aromatic that lie in
/// no ring, or end at an atom that isn't marked, become single bonds and lose their mark.
///
/// Of several assignments, any may be taken where all that differ between them are aromatic by
/// `ZQAssignAromaticFlags` anyway; else it is the first by a canonical order of the atoms, so that
/// the order in which they come makes no difference. In a molecule of more than 2,000 atoms any may
/// be taken.
///
/// False, with the index of an atom that can't be served in `*culprit`, if there is no such
/// assignment or a marked atom is in no ring; the molecule is then as before.
ZQ_EXPORT bool ZQKekulize(ZQMolBase& mol, unsigned int* culprit = nullptr);

/// Whether an atom of atomic number 1 is present.
ZQ_EXPORT bool ZQHasExplicitHydrogens(const ZQMolBase& mol);
/// Turns explicit hydrogens into counts on their neighbours. Kept are hydrogens that are charged,
/// bridging, bonded to another hydrogen, to nothing or by other than a single bond, or hold
/// hydrogens themselves, and those with an isotope, an atom class or a role in stereo, unless the
/// flag of each allows it. A role in stereo means that a configuration can't be described without
/// the hydrogen: it is the only other neighbour at the end of a double bond, or beside a lone pair
/// on a centre. Other configurations are restated for the new order of neighbours; one that is lost
/// with a hydrogen of a role is cleared.
ZQ_EXPORT void ZQSuppressHydrogens(ZQMolBase& mol, bool deleteIsotopes = false,
                                   bool deleteMapped = false, bool deleteStereo = false);

/// Deletes an atom of the molecule; does nothing for another's, or null. With `becomesHydrogen`
/// each of its neighbours gets one implicit hydrogen in its place, and configurations are restated
/// as for `ZQSuppressHydrogens`; those that can't be described any more are cleared. Without it
/// nothing takes the place, and the neighbours and their double bonds lose their configurations.
ZQ_EXPORT void ZQRemoveAtom(ZQMolBase& mol, ZQAtomBase* atom, bool becomesHydrogen);

/// Ring membership of atoms and bonds, in linear time: a bond is in a ring if it isn't a bridge
/// (R. E. Tarjan, Inf. Process. Lett. 2, 160, 1974). If it wasn't perceived, undoes the steps that
/// read the flags.
ZQ_EXPORT void ZQFindRingAtomsAndBonds(ZQMolBase& mol);

/// Tag of the aromaticity model that was applied, an int.
inline constexpr unsigned int ZQAromaticityModelTag = 58;

/// Aromaticity, model 2 (the only one): Hückel's rule in the Daylight tradition. A cycle of 3 to 24
/// atoms that all take part is aromatic if their electrons number 2, 6, 10 and so on. An atom in a
/// ring takes part, counting implicit hydrogens and Kekulé orders, with
///
///     1 electron   by one double bond, itself a ring bond: C (charge 0, or -1 without a further
///                  neighbour), Si, N P As (0, +1), O S Se Te (+1), B (0, -1); likewise N drawn
///                  as N(=O), and C by a triple bond
///     2 electrons  by a lone pair, all bonds single: N P As (0 with three neighbours, -1 with
///                  two), O (0), S Se Te (0, +1), C (-1 with three neighbours)
///     0 electrons  by an empty orbital, all bonds single: B (0), C (+1), each with three
///                  neighbours; and by a double bond outside of rings that takes the electron
///                  away: C to an element of groups 15 to 17, N (+1) to O
///
/// and nothing else takes part: no atom with a double bond outside of rings to carbon or any other
/// element, with two double bonds, with more neighbours than above, no sulfoxide, no P(V), no
/// metal, no dummy atom. The count belongs to the atom, so that it is the same in every Kekulé
/// structure.
///
/// Tested are, within the atoms that take part, the shortest rings through each bond, all of them
/// where several are equally short; and, where rings remain that aren't aromatic, the outline of
/// each 2 to 6 rings joined by shared bonds, one bond a pair, as in azulene. The atoms and bonds of
/// an aromatic cycle are aromatic, and so are the shared bonds that link two atoms of an outline; a
/// bond between two aromatic cycles, as in biphenyl, isn't, nor is a triple bond ever, as in
/// benzyne.
///
/// Work is bounded by limits far beyond known molecules: a bond with more than 64 shortest rings,
/// or whose search passes 256 branching atoms, contributes none, and a system of which a number of
/// rings has more than 1024 combinations is tested up to the number before.
///
/// `clear` starts from no flags at all (false keeps those already set); `maxRing` from 1 to 23
/// lowers the limit of 24. `prune` is for the call's usual form: systems that can't be aromatic are
/// always skipped early, without effect on the flags. Finds ring membership if that isn't
/// perceived. Records the model as generic data under `ZQAromaticityModelTag`, and undoes the steps
/// that follow from aromaticity if any flag changes. A model other than 2 warns and returns false.
ZQ_EXPORT bool ZQAssignAromaticFlags(ZQMolBase& mol, unsigned int model, bool clear,
                                     unsigned int maxRing, bool prune);

/// Hybridization of every atom, by its neighbours and lone pairs together (an odd electron counts
/// as a pair): 2 to 6 give sp to sp3d2, more the last, fewer none; in the d and f blocks by the
/// neighbours alone. Hydrogen and dummy atoms have none. An aromatic atom is sp2, and so is N or O
/// with a lone pair and four in all, if a single bond leads to C, N or O with a double, triple or
/// aromatic bond. A sulfur or selenium there stays sp3. Returns at once if the step is perceived.
ZQ_EXPORT void ZQAssignHybridization(ZQMolBase& mol);

/// Which atoms and double bonds could carry stereo, specified or not, by classes of partition
/// refinement. Explicit hydrogens without charge and isotope count like implicit ones.
///
/// An atom: four distinct neighbours, a hydrogen among them or not, around C Si Ge Sn Pb, B(-1), P
/// As (+1, or 0 with one double bond) and S Se Te (two double bonds, or a positive charge for each
/// one less); four distinct heavy neighbours around N(+1); three and a lone pair around P As and S
/// Se Te (0 with one double bond, +1 with none). Aromatic atoms and amines don't count.
///
/// A double bond that isn't aromatic and in no ring of fewer than eight atoms: C or N at either
/// end, with two distinct neighbours, a hydrogen or a nitrogen's lone pair among them, all by
/// single bonds.
///
/// `specifiedOnly` keeps only those that the input gave a configuration; the step then doesn't
/// count as perceived. Without it, returns at once if the step is perceived.
ZQ_EXPORT void ZQPerceiveChiral(ZQMolBase& mol, bool specifiedOnly);

/// Symmetry classes from 1 up: two atoms share one only if an automorphism of the molecule that
/// keeps everything that an invariant can read maps one onto the other. Hybridization and what
/// could carry stereo are perceived on the way, where they aren't perceived already.
/// `automorphisms` false stops at partition refinement, which is cheaper and may merge more, such
/// as a ring of six and two of three; the step then doesn't count as perceived. `stereo` true also
/// separates by the configuration drawn; an atom whose configuration the classes around it don't
/// determine has a class of its own.
///
/// The search for automorphisms may look at 50,000 bonds and 1,000 more an atom; where that isn't
/// enough, as for a star of thousands of neighbours, atoms keep classes of their own.
ZQ_EXPORT void ZQPerceiveSymmetry(ZQMolBase& mol, bool automorphisms, bool stereo);

/// Connected components; `parts[idx]` is 1 and up, 0 for a hole. Returns their number.
ZQ_EXPORT unsigned int ZQDetermineComponents(const ZQMolBase& mol,
                                             std::vector<unsigned int>& parts);

/// Aromatic ring systems: atoms connected by aromatic bonds, or by a triple bond between aromatic
/// atoms, so that biphenyl has two and naphthalene one. `systems[idx]` is 1 and up, 0 for an atom
/// in none. Returns their number.
ZQ_EXPORT unsigned int ZQDetermineAromaticRingSystems(const ZQMolBase& mol,
                                                      std::vector<unsigned int>& systems);

}  // namespace Quarnel
