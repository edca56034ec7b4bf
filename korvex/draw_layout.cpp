#include <algorithm>
#include <cmath>

#include "korvex/draw_local.h"

namespace ZQKorvex {
namespace {

double Distance(const ZQPoint& a, const ZQPoint& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// Whether two of the atoms are closer than `least`. By a sweep along x.
bool AnyCloser(const ZQMolBase& mol, const ZQLayout& points, double least) {
  std::vector<ZQPoint> sorted;
  for (auto atom = mol.GetAtoms(); atom; ++atom) sorted.push_back(points[atom->GetIdx()]);
  std::ranges::sort(sorted, {}, &ZQPoint::x);
  for (std::size_t i = 0; i < sorted.size(); ++i) {
    for (std::size_t j = i + 1; j < sorted.size() && sorted[j].x - sorted[i].x < least; ++j) {
      if (Distance(sorted[i], sorted[j]) < least) return true;
    }
  }
  return false;
}

// Reads the molecule's own coordinates with bonds of median length 1. False if they can't be drawn.
bool GetOwnLayout(ZQLayout& layout, const ZQMolBase& mol) {
  constexpr double longest = 3;
  constexpr double closest = 1.0 / 3;
  if (!mol.FindData(ZQCoordinatesTag) || !mol.GetData(ZQCoordinatesTag, layout)) return false;
  layout.resize(std::max<std::size_t>(layout.size(), mol.GetMaxAtomIdx()), ZQPoint{0, 0, NAN});
  const auto first = mol.GetAtoms();
  if (!first) return false;
  const double depth = layout[first->GetIdx()].z;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    const ZQPoint& at = layout[atom->GetIdx()];
    if (at.z != depth || !std::isfinite(at.x) || !std::isfinite(at.y)) return false;
  }
  std::vector<double> lengths;
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    lengths.push_back(Distance(layout[bond->GetBgn()->GetIdx()], layout[bond->GetEnd()->GetIdx()]));
  }
  if (lengths.empty()) return false;
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::ranges::nth_element(lengths, middle);
  const double length = *middle;
  if (!(length > 0) || std::ranges::max(lengths) > longest * length) return false;
  if (AnyCloser(mol, layout, closest * length) || !ZQHasBondStereo(mol, layout)) return false;
  layout.resize(mol.GetMaxAtomIdx());
  for (ZQPoint& at : layout) at = {at.x / length, at.y / length, 0};
  return true;
}

}  // namespace

bool ZQMakeLayout(ZQLayout& layout, const ZQMolBase& mol) {
  return GetOwnLayout(layout, mol) || ZQGenerateLayout(layout, mol);
}

}  // namespace ZQKorvex
