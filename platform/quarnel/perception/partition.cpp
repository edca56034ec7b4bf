#include "platform/quarnel/perception/partition_local.h"

#include <algorithm>
#include <array>

#include "platform/quarnel/molecule/mix_local.h"

namespace Quarnel {
namespace {

bool IsPlainHydrogen(const MolView& view, std::uint32_t a) {
  const MolView::Atom& atom = view.atoms[a];
  if (atom.element != 1 || atom.charge != 0 || atom.isotope != 0 || atom.implicitH != 0 ||
      atom.degree != 1) {
    return false;
  }
  const MolView::Edge& edge = view.edges[atom.firstEdge];
  return view.atoms[edge.atom].element != 1 && view.bonds[edge.bond].order == 1;
}

/// Aromatic bonds are one kind, regardless of their Kekulé order.
std::uint32_t BaseColour(const MolView::Bond& bond) {
  const std::uint32_t order = bond.aromatic ? 5 : std::min(bond.order, 4U);
  return order * 2 + (bond.inRing ? 1 : 0);
}

/// Appends a field of `bits` bits to a key; larger values are clamped to its maximum.
std::uint64_t Append(std::uint64_t key, std::uint64_t value, unsigned int bits) {
  const std::uint64_t highest = (std::uint64_t{1} << bits) - 1;
  return (key << bits) | std::min(value, highest);
}

/// The first sort key of an atom. Ends of chains come first: a SMILES that starts with them has
/// short branches.
std::uint64_t KeyOf(std::uint64_t part, const MolView::Atom& atom, unsigned int hydrogens,
                    unsigned int degree, unsigned int valence) {
  std::uint64_t key = Append(0, part, 18);
  key = Append(key, degree, 6);
  key = Append(key, atom.element, 8);
  const auto charge = static_cast<unsigned int>(100 + std::clamp(atom.charge, -100, 100));
  key = Append(key, charge, 8);
  key = Append(key, atom.isotope, 10);
  key = Append(key, hydrogens, 5);
  key = Append(key, valence, 7);
  key = Append(key, atom.aromatic, 1);
  return Append(key, atom.inRing, 1);
}

/// A random number for each bond colour.
constexpr auto spread = [] {
  std::array<std::uint64_t, 64> table{};
  std::uint64_t state = 0;
  for (std::uint64_t& entry : table) {
    state += 0x9E3779B97F4A7C15U;
    entry = Mix(state);
  }
  return table;
}();

}  // namespace

void Partition::Fold(const MolView& view) {
  const std::uint32_t n = view.NumAtoms();
  cellOf_.assign(n, 0);
  hydrogens_.resize(n);
  degree_.resize(n);
  for (std::uint32_t a = 0; a < n; ++a) {
    hydrogens_[a] = view.atoms[a].implicitH;
    degree_[a] = view.atoms[a].degree;
  }
  for (std::uint32_t a = 0; a < n; ++a) {
    if (view.atoms[a].element != 1 || !IsPlainHydrogen(view, a)) continue;
    const std::uint32_t parent = view.edges[view.atoms[a].firstEdge].atom;
    cellOf_[a] = MolView::none;
    ++hydrogens_[parent];
    --degree_[parent];
  }
}

void Partition::Build(const MolView& view) {
  Fold(view);
  colours_.resize(view.bonds.size());
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) colours_[b] = BaseColour(view.bonds[b]);
  keyed_.clear();
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    if (IsFolded(a)) continue;
    unsigned int valence = view.atoms[a].implicitH;
    for (const MolView::Edge& edge : view.Edges(a)) valence += view.bonds[edge.bond].order;
    keyed_.push_back({KeyOf(0, view.atoms[a], hydrogens_[a], degree_[a], valence), a});
  }
  Start(view);
}

void Partition::BuildForSmiles(const MolView& view, std::span<const unsigned int> parts) {
  cellOf_.assign(view.atoms.size(), 0);
  colours_.resize(view.bonds.size());
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    const std::uint32_t written = bond.aromatic && bond.order <= 2 ? 0 : std::min(bond.order, 31U);
    colours_[b] = written * 2 + (bond.inRing ? 1 : 0);
  }
  keyed_.clear();
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    const MolView::Atom& atom = view.atoms[a];
    keyed_.push_back({KeyOf(parts[atom.atom->GetIdx()], atom, atom.implicitH, atom.degree, 0), a});
  }
  Start(view);
}

// Makes the first cells from the atoms in keyed_.
void Partition::Start(const MolView& view) {
  const std::uint32_t n = view.NumAtoms();
  atoms_.clear();
  place_.resize(n);
  for (const Keyed& keyed : keyed_) {
    place_[keyed.atom] = static_cast<std::uint32_t>(atoms_.size());
    atoms_.push_back(keyed.atom);
  }
  size_.assign(atoms_.size(), 0);
  queued_.assign(atoms_.size(), 0);
  counts_.assign(n, 0);
  queue_.clear();
  numCells_ = 0;
  if (atoms_.empty()) return;
  size_[0] = static_cast<std::uint32_t>(atoms_.size());
  numCells_ = 1;
  Push(0);
  std::ranges::sort(keyed_, {}, &Keyed::key);
  SplitCell(0, keyed_);
  Refine(view);
}

void Partition::Split(const MolView& view, std::span<const std::uint32_t> property) {
  for (std::uint32_t cell = 0; cell < atoms_.size();) {
    const std::uint32_t size = size_[cell];
    keyed_.clear();
    for (const std::uint32_t a : Cell(cell)) keyed_.push_back({property[a], a});
    std::ranges::sort(keyed_, {}, &Keyed::key);
    SplitCell(cell, keyed_);
    cell += size;
  }
  Refine(view);
}

void Partition::Split(const MolView& view, std::span<const Keyed> listed) {
  keyed_.assign(listed.begin(), listed.end());
  SplitKeyed();
  Refine(view);
}

void Partition::SetApart(const MolView& view, std::uint32_t atom) {
  const Keyed single{0, atom};
  SplitCell(cellOf_[atom], {&single, 1});
  Refine(view);
}

void Partition::SplitBonds(const MolView& view, std::span<const std::uint8_t> kinds) {
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    colours_[b] = BaseColour(view.bonds[b]) + 16U * kinds[b];
  }
  for (std::uint32_t cell = 0; cell < atoms_.size(); cell += size_[cell]) Push(cell);
  Refine(view);
}

void Partition::Push(std::uint32_t cell) {
  if (queued_[cell]) return;
  queued_[cell] = 1;
  queue_.push_back(cell);
}

// Moves the atoms of `byKey`, which ascend by key, to the end of the cell, a new cell for each key.
// Atoms that aren't listed remain as the first part; if all are listed, those of the lowest key
// remain. All parts are queued as splitters; if the cell itself was already used, the largest one
// needn't be (Hopcroft 1971).
void Partition::SplitCell(std::uint32_t cell, std::span<const Keyed> byKey) {
  if (byKey.size() == size_[cell] && byKey.front().key == byKey.back().key) return;
  const std::uint32_t end = cell + size_[cell];
  std::uint32_t first = end;
  std::uint32_t largest = cell;
  const bool wasQueued = queued_[cell] != 0;
  std::size_t i = byKey.size();
  while (i > 0) {
    const std::uint64_t key = byKey[i - 1].key;
    const std::uint32_t partEnd = first;
    while (i > 0 && byKey[i - 1].key == key) {
      const std::uint32_t a = byKey[--i].atom;
      const std::uint32_t other = atoms_[--first];
      place_[other] = place_[a];
      atoms_[place_[a]] = other;
      place_[a] = first;
      atoms_[first] = a;
    }
    size_[first] = partEnd - first;
    if (first == cell) break;
    ++numCells_;
    for (std::uint32_t p = first; p < partEnd; ++p) cellOf_[atoms_[p]] = first;
  }
  if (first != cell) size_[cell] = first - cell;
  for (std::uint32_t part = cell; part < end; part += size_[part]) {
    if (size_[part] > size_[largest]) largest = part;
  }
  for (std::uint32_t part = cell; part < end; part += size_[part]) {
    if (wasQueued || part != largest) Push(part);
  }
}

// Splits each cell that has atoms in keyed_.
void Partition::SplitKeyed() {
  std::ranges::sort(keyed_, [this](const Keyed& a, const Keyed& b) {
    const std::uint32_t cellA = cellOf_[a.atom];
    const std::uint32_t cellB = cellOf_[b.atom];
    return cellA != cellB ? cellA < cellB : a.key < b.key;
  });
  const std::span<const Keyed> all = keyed_;
  for (std::size_t i = 0; i < all.size();) {
    const std::uint32_t touchedCell = cellOf_[all[i].atom];
    std::size_t j = i + 1;
    while (j < all.size() && cellOf_[all[j].atom] == touchedCell) ++j;
    SplitCell(touchedCell, all.subspan(i, j - i));
    i = j;
  }
}

void Partition::Refine(const MolView& view) {
  for (std::size_t head = 0; head < queue_.size() && numCells_ < atoms_.size(); ++head) {
    const std::uint32_t cell = queue_[head];
    queued_[cell] = 0;
    const std::span<const std::uint32_t> members = Cell(cell);
    splitter_.assign(members.begin(), members.end());
    keyed_.clear();
    for (const std::uint32_t a : splitter_) {
      for (const MolView::Edge& edge : view.Edges(a)) {
        const std::uint32_t neighbour = edge.atom;
        if (IsFolded(neighbour) || size_[cellOf_[neighbour]] == 1) continue;
        if (counts_[neighbour] == 0) keyed_.push_back({0, neighbour});
        counts_[neighbour] += spread[colours_[edge.bond]];
      }
    }
    for (Keyed& touched : keyed_) {
      touched.key = counts_[touched.atom];
      counts_[touched.atom] = 0;
    }
    SplitKeyed();
  }
  for (const std::uint32_t cell : queue_) queued_[cell] = 0;
  queue_.clear();
}

}  // namespace Quarnel
