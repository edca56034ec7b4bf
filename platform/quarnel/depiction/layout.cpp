#include <algorithm>
#include <cmath>

#include "contract/bostrel/throw.h"
#include "contract/quarnel/perception.h"
#include "platform/quarnel/depiction/coordgen_local.h"
#include "platform/quarnel/depiction/mend_local.h"

namespace Quarnel {
namespace {

struct Box {
  double left = 0;
  double right = 0;
  double bottom = 0;
  double top = 0;

  double Width() const { return right - left; }
  double Height() const { return top - bottom; }
};

using Component = std::vector<std::uint32_t>;

Box BoxOf(const Component& atoms, const std::vector<ZQPoint>& points) {
  Box box{points[atoms[0]].x, points[atoms[0]].x, points[atoms[0]].y, points[atoms[0]].y};
  for (const std::uint32_t a : atoms) {
    box.left = std::min(box.left, points[a].x);
    box.right = std::max(box.right, points[a].x);
    box.bottom = std::min(box.bottom, points[a].y);
    box.top = std::max(box.top, points[a].y);
  }
  return box;
}

// Largest components first, so that counterions come behind what they belong to.
std::vector<Component> ComponentsOf(const ZQMolBase& mol, const MolView& view) {
  std::vector<unsigned int> parts;
  std::vector<Component> components(ZQDetermineComponents(mol, parts));
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    components[parts[view.atoms[a].atom->GetIdx()] - 1].push_back(a);
  }
  std::ranges::stable_sort(components, std::ranges::greater(), &Component::size);
  return components;
}

// Puts the components side by side, in as many rows as make a landscape of them.
void Arrange(const std::vector<Component>& components, std::vector<ZQPoint>& points) {
  constexpr double gap = 2;       // for the labels at both sides
  constexpr double aspect = 2.2;  // an ion pair is one row
  double area = 0;
  double width = 0;
  std::vector<Box> boxes;
  for (const Component& atoms : components) {
    const Box box = boxes.emplace_back(BoxOf(atoms, points));
    area += (box.Width() + gap) * (box.Height() + gap);
    width = std::max(width, box.Width() + gap);
  }
  width = std::max(width, std::sqrt(area * aspect));
  double top = 0;
  for (std::size_t begin = 0, end = 0; begin < components.size(); begin = end) {
    double taken = 0;
    double height = 0;
    for (; end < components.size(); ++end) {
      const double needed = boxes[end].Width() + gap;
      if (end > begin && taken + needed > width) break;
      taken += needed;
      height = std::max(height, boxes[end].Height());
    }
    double left = 0;
    for (std::size_t c = begin; c < end; ++c) {
      const double dx = left - boxes[c].left;
      const double dy = top - height / 2 - (boxes[c].bottom + boxes[c].top) / 2;
      for (const std::uint32_t a : components[c]) {
        points[a].x += dx;
        points[a].y += dy;
      }
      left += boxes[c].Width() + gap;
    }
    top -= height + gap;
  }
}

}  // namespace

bool ZQGenerateLayout(std::vector<ZQPoint>& layout, const ZQMolBase& mol) {
  layout.assign(mol.GetMaxAtomIdx(), ZQPoint());
  if (mol.NumAtoms() > ZQMostLayoutAtoms) {
    Bostrel::ZQThrow.Warning("ZQGenerateLayout() : %u atoms are too many to lay out (at most %u)!",
                             mol.NumAtoms(), ZQMostLayoutAtoms);
    return false;
  }
  MolView view;
  view.Read(mol, MolView::Properties);
  view.FindRings();
  const std::vector<Component> components = ComponentsOf(mol, view);
  std::vector<ZQPoint> points(view.NumAtoms());
  for (const Component& atoms : components) {
    if (atoms.size() > 1) LayOut(view, atoms, points);
  }
  Arrange(components, points);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    layout[view.atoms[a].atom->GetIdx()] = points[a];
  }
  return true;
}

}  // namespace Quarnel
