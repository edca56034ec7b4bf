#pragma once

/// The bonds of each atom as ranges of one flat table, for any records of atoms and bonds numbered
/// from 0.

#include <cstdint>
#include <span>
#include <vector>

namespace Quarnel {

struct Edge {
  std::uint32_t atom;  // the far end
  std::uint32_t bond;
};

/// Fills the table from the bonds' `bgn` and `end`; each atom's `degree` must already be its number
/// of bonds. The edges of an atom ascend by bond.
template <class Atom, class Bond>
void LinkBonds(std::vector<Atom>& atoms, const std::vector<Bond>& bonds, std::vector<Edge>& edges) {
  std::uint32_t total = 0;
  for (Atom& atom : atoms) {
    atom.firstEdge = total;
    total += atom.degree;
    atom.degree = 0;
  }
  edges.resize(total);
  for (std::uint32_t b = 0; b < bonds.size(); ++b) {
    Atom& bgn = atoms[bonds[b].bgn];
    Atom& end = atoms[bonds[b].end];
    edges[bgn.firstEdge + bgn.degree++] = {bonds[b].end, b};
    edges[end.firstEdge + end.degree++] = {bonds[b].bgn, b};
  }
}

template <class Atom>
std::span<const Edge> EdgesOf(const Atom& atom, const std::vector<Edge>& edges) {
  return {edges.data() + atom.firstEdge, atom.degree};
}

}  // namespace Quarnel
