#pragma once

/// Partition refinement: the coarsest grouping of atoms into cells in which two atoms of one cell
/// have equal properties and, for each kind of bond, equal numbers of neighbours in every cell.

#include <cstdint>
#include <span>
#include <vector>

#include "platform/quarnel/molecule/molgraph_view_local.h"

namespace Quarnel {

class Partition {
 public:
  struct Keyed {
    std::uint64_t key;
    std::uint32_t atom;
  };

  /// Groups by element, charge, isotope, hydrogens, degree, valence, aromaticity and ring
  /// membership. Plain explicit hydrogens (`IsFolded`) count as implicit ones and are in no cell,
  /// so that both forms are equivalent. Large values are clamped at limits beyond those
  /// distinguished by any invariant.
  void Build(const MolView& view);
  /// Groups by the properties that a SMILES writes of an atom in brackets except its class, by
  /// degree, aromaticity and ring membership; bonds by their written properties. Every atom is in a
  /// cell. `parts` has a number from 1 for each atom index; atoms of one number are consecutive, in
  /// the order of numbers. `NumHydrogens` and `Degree` mustn't be used after this.
  void BuildForSmiles(const MolView& view, std::span<const unsigned int> parts);
  /// Splits cells by another property of each atom, and refines.
  void Split(const MolView& view, std::span<const std::uint32_t> property);
  /// Splits by a nonzero property of the listed atoms, and refines.
  void Split(const MolView& view, std::span<const Keyed> listed);
  /// Moves an atom to a cell of its own, and refines.
  void SetApart(const MolView& view, std::uint32_t atom);
  /// Sets a kind of 0 to 3 that also distinguishes bonds, and refines.
  void SplitBonds(const MolView& view, std::span<const std::uint8_t> kinds);

  bool IsFolded(std::uint32_t atom) const { return cellOf_[atom] == MolView::none; }
  /// The number of the atom's cell; `MolView::none` for folded hydrogens.
  std::uint32_t CellOf(std::uint32_t atom) const { return cellOf_[atom]; }
  /// Hydrogens of an atom, implicit or folded.
  std::uint32_t NumHydrogens(std::uint32_t atom) const { return hydrogens_[atom]; }
  /// Neighbours that aren't folded.
  std::uint32_t Degree(std::uint32_t atom) const { return degree_[atom]; }
  std::uint32_t ColourOf(std::uint32_t bond) const { return colours_[bond]; }
  std::uint32_t NumCells() const { return numCells_; }
  /// The atoms in order of their cells. A cell's number is the position of its first atom.
  std::span<const std::uint32_t> Atoms() const { return atoms_; }
  std::span<const std::uint32_t> Cell(std::uint32_t cell) const {
    return {atoms_.data() + cell, size_[cell]};
  }

 private:
  void Fold(const MolView& view);
  void Start(const MolView& view);
  void SplitCell(std::uint32_t cell, std::span<const Keyed> byKey);
  void SplitKeyed();
  void Push(std::uint32_t cell);
  void Refine(const MolView& view);

  std::vector<std::uint32_t> atoms_;
  std::vector<std::uint32_t> place_;   // by atom, in atoms_
  std::vector<std::uint32_t> cellOf_;  // by atom
  std::vector<std::uint32_t> size_;    // by cell
  std::vector<std::uint32_t> hydrogens_;
  std::vector<std::uint32_t> degree_;
  std::vector<std::uint32_t> colours_;  // by bond
  std::uint32_t numCells_ = 0;
  std::vector<Keyed> keyed_;
  std::vector<std::uint32_t> queue_;
  std::vector<char> queued_;           // by cell
  std::vector<std::uint64_t> counts_;  // by atom, all 0 between splitters
  std::vector<std::uint32_t> splitter_;
};

}  // namespace Quarnel
