#include "platform/quarnel/depiction/mend_local.h"

#include <algorithm>
#include <cmath>

#include "platform/quarnel/depiction/coordgen_local.h"

namespace Quarnel {
namespace {

double Distance(const ZQPoint& a, const ZQPoint& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// Scales to bonds of median length 1. False if they have no length.
bool Normalize(const MolView& view, std::span<const std::uint32_t> atoms,
               std::vector<ZQPoint>& points) {
  std::vector<double> lengths;
  for (const std::uint32_t a : atoms) {
    for (const Edge& edge : view.Edges(a)) {
      if (edge.atom > a) lengths.push_back(Distance(points[a], points[edge.atom]));
    }
  }
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  if (!(*middle > 0)) return false;
  for (const std::uint32_t a : atoms) {
    points[a].x /= *middle;
    points[a].y /= *middle;
  }
  return true;
}

}  // namespace

void LayOut(const MolView& view, std::span<const std::uint32_t> atoms,
            std::vector<ZQPoint>& points) {
  if (!RunCoordGen(view, atoms, Effort::Standard, points)) return;
  Normalize(view, atoms, points);
}

}  // namespace Quarnel
