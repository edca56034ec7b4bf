#pragma once

/// Perception over any `ZQMolBase`. Each function reads the graph, computes on flat scratch and
/// writes its result back, marking the step as perceived. Calls on distinct molecules may run on
/// distinct threads. Cost is close to linear in atoms and bonds unless stated otherwise. The flags
/// depend neither on the order of atoms and bonds nor on the choice among equivalent Kekulé
/// structures.
///
/// The usual order is hydrogens, rings, aromaticity, and then any of the others, which read the
/// flags as set by the earlier ones.

#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

/// "C" for 6, "*" for 0; "?" above 118.
ZQ_EXPORT const char* ZQGetAtomicSymbol(unsigned int atomicNum);
/// The atomic number of a symbol in its proper case ("Cl"); 0 for "*" and for text that isn't a
/// symbol.
ZQ_EXPORT unsigned int ZQGetAtomicNum(const std::string& symbol);

/// The implicit hydrogens of an atom without an explicit count, by the usual valence model: they
/// fill up the lowest standard valence that is at least `bondOrderSum`. A charged atom has the
/// valences of the isoelectronic element. 0 for metals and noble gases.
ZQ_EXPORT unsigned int ZQDefaultHCount(unsigned int atomicNum, int charge,
                                       unsigned int bondOrderSum);

/// Assigns alternating orders 1 and 2 to the aromatic bonds of a molecule read with aromatic
/// symbols, by a perfect matching in a general graph, odd rings and charges included. Implicit
/// hydrogens must be counted already: an atom marked aromatic takes a double bond if its hydrogens,
/// charge and other bonds leave exactly one valence open by `ZQDefaultHCount`, and may take one if
/// they leave more (a radical or carbene) or if it is a dummy atom. Bonds marked aromatic that are
/// in no ring, or end at an unmarked atom, become single bonds and lose their mark.
///
/// Of several assignments, any may be chosen if all bonds in which they differ are aromatic by
/// `ZQAssignAromaticFlags`; otherwise the first by a canonical order of the atoms is chosen, so
/// that the order of the input makes no difference. In a molecule of more than 2,000 atoms any may
/// be chosen.
///
/// Returns false, with the index of an atom that can't be assigned in `*culprit`, if there is no
/// such assignment or a marked atom is in no ring; the molecule is then unchanged.
ZQ_EXPORT bool ZQKekulize(ZQMolBase& mol, unsigned int* culprit = nullptr);

/// Whether an atom of atomic number 1 is present.
ZQ_EXPORT bool ZQHasExplicitHydrogens(const ZQMolBase& mol);
/// Converts explicit hydrogens to counts on their neighbours. Hydrogens are kept if they are
/// charged, bridging, bonded to another hydrogen or to nothing, have a bond that isn't single, or
/// have implicit hydrogens. Those with an isotope, an atom class or a role in stereo are kept
/// unless the corresponding flag is set. A hydrogen has a role in stereo if a configuration can't
/// be described without it: it is the only other neighbour at the end of a double bond, or next to
/// a lone pair on a centre. Other configurations are restated for the new order of neighbours; one
/// that is lost with such a hydrogen is cleared.
ZQ_EXPORT void ZQSuppressHydrogens(ZQMolBase& mol, bool deleteIsotopes = false,
                                   bool deleteMapped = false, bool deleteStereo = false);

/// Deletes an atom of the molecule; does nothing for an atom of another molecule or null. With
/// `becomesHydrogen`, each of its neighbours gets one implicit hydrogen instead, and configurations
/// are restated as in `ZQSuppressHydrogens`; those that can't be described any more are cleared.
/// Without it, the atom isn't replaced, and the neighbours and their double bonds lose their
/// configurations.
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
/// No other atom takes part: none with a double bond outside of rings to carbon or any other
/// element, with two double bonds or with more neighbours than above, no sulfoxide, no P(V), no
/// metal, no dummy atom. The count depends on the atom alone, so that it is the same in every
/// Kekulé structure.
///
/// Within the atoms that take part, all shortest rings through each bond are tested. If some of
/// these rings aren't aromatic, the outlines of all sets of 2 to 6 rings fused by shared bonds, one
/// bond per pair, are tested too, as in azulene. The atoms and bonds of an aromatic cycle are
/// aromatic, and so are the shared bonds that link two atoms of an outline; a bond between two
/// aromatic cycles, as in biphenyl, isn't, and a triple bond never is, as in benzyne.
///
/// Limits far beyond known molecules bound the work: a bond with more than 64 shortest rings, or
/// whose search passes 256 branching atoms, contributes none. If a system has more than 1024
/// combinations of some number of rings, it is tested only up to the number before.
///
/// `clear` removes all flags first (false keeps those already set); `maxRing` from 1 to 23 lowers
/// the limit of 24. `prune` has no effect: systems that can't be aromatic are always skipped early,
/// which doesn't change the flags. Finds ring membership if it isn't perceived. Records the model
/// as generic data under `ZQAromaticityModelTag`, and undoes the steps that follow from aromaticity
/// if any flag changes. A model other than 2 warns and returns false.
ZQ_EXPORT bool ZQAssignAromaticFlags(ZQMolBase& mol, unsigned int model, bool clear,
                                     unsigned int maxRing, bool prune);

/// Hybridization of every atom, by its neighbours and lone pairs together (an odd electron counts
/// as a pair): 2 to 6 give sp to sp3d2, more give sp3d2, fewer none; in the d and f blocks only
/// neighbours count. Hydrogen and dummy atoms have none. An aromatic atom is sp2, and so is N or O
/// with a lone pair and a total of four, if it has a single bond to C, N or O with a double, triple
/// or aromatic bond. Sulfur and selenium remain sp3 there. Returns at once if the step is
/// perceived.
ZQ_EXPORT void ZQAssignHybridization(ZQMolBase& mol);

/// Finds the atoms and double bonds that could carry stereo, specified or not, by classes of
/// partition refinement. Explicit hydrogens without charge and isotope count like implicit ones.
///
/// An atom: four distinct neighbours, possibly one hydrogen among them, around C Si Ge Sn Pb,
/// B(-1), P As (+1, or 0 with one double bond) and S Se Te (two double bonds, or one positive
/// charge for each one missing); four distinct heavy neighbours around N(+1); three and a lone pair
/// around P As and S Se Te (0 with one double bond, +1 with none). Aromatic atoms and amines don't
/// count.
///
/// A double bond that isn't aromatic and is in no ring of fewer than eight atoms: C or N at each
/// end, with two distinct neighbours, where a hydrogen or a nitrogen's lone pair may be one, all by
/// single bonds.
///
/// `specifiedOnly` keeps only those with a configuration in the input; the step then doesn't count
/// as perceived. Without it, returns at once if the step is perceived.
ZQ_EXPORT void ZQPerceiveChiral(ZQMolBase& mol, bool specifiedOnly);

/// Clears drawn configurations that aren't real, as `ZQMolToCanonicalSmiles` omits them: those of
/// atoms and double bonds that can't have one, and those whose opposite gives the same molecule
/// because of equal neighbours, as in C[C@H](C)O. Keeps those where a bond of order 0 ends;
/// elsewhere neighbours that differ only by such bonds are equal. Costs about as much as a
/// canonical SMILES; nothing for a molecule without configurations. Faster if rings and aromaticity
/// are perceived, and without hydrogen atoms.
ZQ_EXPORT void ZQClearUnrealStereo(ZQMolBase& mol);

/// Symmetry classes from 1 up: two atoms share one only if an automorphism that preserves every
/// property read by an invariant maps one onto the other. Perceives hybridization and chirality
/// first if needed. `automorphisms` false stops at partition refinement, which is cheaper and may
/// merge more, such as a ring of six and two of three; the step then doesn't count as perceived.
/// `stereo` true also separates by drawn configuration; an atom whose configuration isn't
/// determined by the classes around it has a class of its own.
///
/// The search for automorphisms visits at most 50,000 bonds plus 1,000 per atom; if that isn't
/// enough, as for a star of thousands of neighbours, atoms keep classes of their own.
ZQ_EXPORT void ZQPerceiveSymmetry(ZQMolBase& mol, bool automorphisms, bool stereo);

/// Finds the connected components; `parts[idx]` is numbered from 1, 0 for a hole. Returns their
/// number.
ZQ_EXPORT unsigned int ZQDetermineComponents(const ZQMolBase& mol,
                                             std::vector<unsigned int>& parts);

/// Finds the aromatic ring systems: atoms connected by aromatic bonds, or by a triple bond between
/// aromatic atoms; biphenyl has two and naphthalene one. `systems[idx]` is numbered from 1, 0 for
/// an atom in none. Returns their number.
ZQ_EXPORT unsigned int ZQDetermineAromaticRingSystems(const ZQMolBase& mol,
                                                      std::vector<unsigned int>& systems);

}  // namespace Quarnel
