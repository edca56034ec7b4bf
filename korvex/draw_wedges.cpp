#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "korvex/draw_local.h"

namespace ZQKorvex {
namespace {

constexpr unsigned int none = ~0U;

ZQPoint Direction(const ZQPoint& from, const ZQPoint& to) {
  const double length = std::hypot(to.x - from.x, to.y - from.y);
  return length > 0 ? ZQPoint{(to.x - from.x) / length, (to.y - from.y) / length, 0} : ZQPoint();
}

// Bonds by how well they carry a centre's wedge; `volume` is that of the four neighbours with this
// one in front, whose sign is the configuration.
struct Candidate {
  const ZQBondBase* bond;
  double volume;
  double cost;
};

struct Centre {
  const ZQAtomBase* atom;
  std::vector<Candidate> candidates;  // best first
};

double VolumeOf(const std::array<ZQPoint, 4>& p) {
  const auto minus = [&](std::size_t i) {
    return ZQPoint{p[i].x - p[0].x, p[i].y - p[0].y, p[i].z - p[0].z};
  };
  const ZQPoint a = minus(1);
  const ZQPoint b = minus(2);
  const ZQPoint c = minus(3);
  return a.x * (b.y * c.z - b.z * c.y) + a.y * (b.z * c.x - b.x * c.z) +
         a.z * (b.x * c.y - b.y * c.x);
}

// Atoms on the far side of a bond, as many as matter.
unsigned int BranchSize(const ZQAtomBase* near, const ZQAtomBase* far) {
  constexpr std::size_t most = 12;
  std::vector<const ZQAtomBase*> found{near, far};
  for (std::size_t i = 1; i < found.size() && found.size() < most; ++i) {
    for (const ZQBondBase* bond = nullptr; (bond = found[i]->NextBond(bond)) != nullptr;) {
      const ZQAtomBase* next = bond->GetNbr(found[i]);
      if (std::ranges::find(found, next) == found.end()) found.push_back(next);
    }
  }
  return static_cast<unsigned int>(found.size() - 1);
}

// A wedge is read most easily on a bond to a small substituent, and misread at another centre.
Centre CentreOf(const ZQAtomBase& atom, const ZQLayout& layout) {
  std::array<ZQPoint, 4> around{};
  std::array<const ZQBondBase*, 4> bonds{};
  unsigned int degree = 0;
  for (const ZQBondBase* bond = nullptr; (bond = atom.NextBond(bond)) != nullptr; ++degree) {
    if (degree == 4 || bond->GetNbr(&atom)->GetIdx() >= layout.size()) return {&atom, {}};
    bonds[degree] = bond;
    around[degree] = Direction(layout[atom.GetIdx()], layout[bond->GetNbr(&atom)->GetIdx()]);
  }
  if (degree < 3) return {&atom, {}};
  if (degree == 3) {
    // The neighbour that isn't drawn is the first. It stands at the centre, slightly away from the
    // other three, so that it is opposite the middle one if they lie in a half-plane.
    constexpr double trace = 1e-4;
    ZQPoint opposite;
    for (std::size_t i = 0; i < 3; ++i) {
      opposite.x -= around[i].x * trace;
      opposite.y -= around[i].y * trace;
    }
    std::rotate(around.begin(), around.end() - 1, around.end());
    std::rotate(bonds.begin(), bonds.end() - 1, bonds.end());
    around[0] = opposite;
    bonds[0] = nullptr;
  }
  Centre centre{&atom, {}};
  for (std::size_t i = 0; i < 4; ++i) {
    if (!bonds[i] || bonds[i]->GetOrder() != 1) continue;
    const ZQAtomBase* far = bonds[i]->GetNbr(&atom);
    auto raised = around;
    raised[i].z = 1;
    Candidate candidate{bonds[i], VolumeOf(raised), 0};
    constexpr double clear = 0.3;  // less, and two of the others are nearly in line
    candidate.cost = BranchSize(&atom, far) + (far->GetStereo() != ZQAtomStereo::None ? 100 : 0) +
                     (bonds[i]->IsInRing() ? 50 : 0) + (far->IsHydrogen() ? -1 : 0) +
                     (std::abs(candidate.volume) < clear ? 200 : 0);
    if (candidate.volume != 0) centre.candidates.push_back(candidate);
  }
  std::ranges::stable_sort(centre.candidates, {}, &Candidate::cost);
  return centre;
}

// Matches each centre to a bond of its own, along augmenting paths: the best bond that is free or
// that its owner can do without.
class Matching {
 public:
  Matching(const std::vector<Centre>& centres, unsigned int numBonds)
      : centres_(centres), owners_(numBonds, none), tried_(numBonds, none) {}

  bool Add(unsigned int centre) { return Add(centre, centre); }
  unsigned int OwnerOf(const ZQBondBase* bond) const { return owners_[bond->GetIdx()]; }

 private:
  bool Add(unsigned int centre, unsigned int round) {
    for (const bool mayMove : {false, true}) {
      for (const Candidate& candidate : centres_[centre].candidates) {
        const unsigned int bond = candidate.bond->GetIdx();
        if (owners_[bond] == none) {
          owners_[bond] = centre;
          return true;
        }
        if (!mayMove || owners_[bond] == centre || tried_[bond] == round) continue;
        tried_[bond] = round;
        if (Add(owners_[bond], round)) {
          owners_[bond] = centre;
          return true;
        }
      }
    }
    return false;
  }

  const std::vector<Centre>& centres_;
  std::vector<unsigned int> owners_;  // by bond index
  std::vector<unsigned int> tried_;   // the round in which a bond was last asked for
};

}  // namespace

std::vector<ZQWedge> ZQChooseWedges(const ZQMolBase& mol, const ZQLayout& layout) {
  std::vector<Centre> centres;
  for (auto atom = mol.GetAtoms(); atom; ++atom) {
    if (atom->GetStereo() != ZQAtomStereo::None && atom->GetIdx() < layout.size()) {
      centres.push_back(CentreOf(*atom, layout));
    }
  }
  // Those with the worst best bond choose first.
  const auto cost = [](const Centre& centre) {
    return centre.candidates.empty() ? std::numeric_limits<double>::max()
                                     : centre.candidates.front().cost;
  };
  std::ranges::stable_sort(centres, std::ranges::greater(), cost);
  Matching matching(centres, mol.GetMaxBondIdx());
  for (unsigned int c = 0; c < centres.size(); ++c) matching.Add(c);
  std::vector<ZQWedge> wedges(mol.GetMaxBondIdx());
  for (unsigned int c = 0; c < centres.size(); ++c) {
    for (const Candidate& candidate : centres[c].candidates) {
      if (matching.OwnerOf(candidate.bond) != c) continue;
      const bool isCounterClockwise =
          centres[c].atom->GetStereo() == ZQAtomStereo::CounterClockwise;
      wedges[candidate.bond->GetIdx()] = {centres[c].atom,
                                          (candidate.volume < 0) == isCounterClockwise};
    }
  }
  return wedges;
}

bool ZQHasBondStereo(const ZQMolBase& mol, const ZQLayout& layout) {
  // On which side of the bond the reference neighbour of an end is.
  const auto side = [&](const ZQBondBase& bond, const ZQAtomBase* near) {
    const ZQBondBase* next = near->NextBond(nullptr);
    if (next == &bond) next = near->NextBond(next);
    if (!next) return 0.0;
    const ZQPoint& bgn = layout[bond.GetBgn()->GetIdx()];
    const ZQPoint& end = layout[bond.GetEnd()->GetIdx()];
    const ZQPoint& reference = layout[next->GetNbr(near)->GetIdx()];
    return (end.x - bgn.x) * (reference.y - bgn.y) - (end.y - bgn.y) * (reference.x - bgn.x);
  };
  for (auto bond = mol.GetBonds(); bond; ++bond) {
    if (bond->GetOrder() != 2 || bond->GetStereo() == ZQBondStereo::None) continue;
    const double agreement = side(*bond, bond->GetBgn()) * side(*bond, bond->GetEnd());
    if (bond->GetStereo() == ZQBondStereo::Cis ? !(agreement > 0) : !(agreement < 0)) return false;
  }
  return true;
}

}  // namespace ZQKorvex
