#include "platform/quarnel/perception/configuration_local.h"

#include <array>

namespace Quarnel {

namespace {

constexpr std::uint32_t none = MolView::none;

}  // namespace

Configuration ConfigurationOf(const MolView& view, const Partition& partition, std::uint32_t a) {
  const ZQAtomStereo stereo = view.atoms[a].atom->GetStereo();
  if (stereo == ZQAtomStereo::None) return NoStereo;
  // A hydrogen or lone pair counts as the cell none; where implicit it comes first.
  std::array<std::uint32_t, 4> cells{};
  std::size_t count = 0;
  if (view.atoms[a].degree < 4) cells[count++] = none;
  for (const MolView::Edge& edge : view.Edges(a)) {
    if (count == 4) return Untold;
    cells[count++] = partition.CellOf(edge.atom);
  }
  bool odd = stereo == ZQAtomStereo::Clockwise;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = i + 1; j < count; ++j) {
      if (cells[i] == cells[j]) return Untold;
      odd ^= cells[i] > cells[j];
    }
  }
  return odd ? Odd : Even;
}

Configuration ConfigurationOf(const MolView& view, const Partition& partition,
                              const MolView::Bond& bond) {
  const ZQBondStereo stereo = bond.bond->GetStereo();
  if (stereo == ZQBondStereo::None) return NoStereo;
  bool odd = stereo == ZQBondStereo::Trans;
  for (const std::uint32_t end : {bond.bgn, bond.end}) {
    std::uint32_t first = none;  // the cell of the reference atom, once it is known
    bool known = false;
    for (const MolView::Edge& edge : view.Edges(end)) {
      if (edge.atom == bond.Other(end)) continue;
      const std::uint32_t cell = partition.CellOf(edge.atom);
      if (known && cell == first) return Untold;
      if (known) odd ^= first > cell;
      if (!known) first = cell;
      known = true;
    }
  }
  return odd ? Odd : Even;
}

}  // namespace Quarnel
