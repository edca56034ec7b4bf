#include "platform/quarnel/depiction/mend_local.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "platform/quarnel/depiction/coordgen_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {
namespace {

constexpr std::uint32_t none = MolView::none;
constexpr double clash = 0.5;    // closer atoms can't be told apart
constexpr double comfort = 0.8;  // the distance beyond which atoms don't disturb each other

double Distance(const ZQPoint& a, const ZQPoint& b) { return std::hypot(a.x - b.x, a.y - b.y); }

// On which side of the line from a to b a point is: positive for the left.
double SideOf(const ZQPoint& a, const ZQPoint& b, const ZQPoint& point) {
  return (b.x - a.x) * (point.y - a.y) - (b.y - a.y) * (point.x - a.x);
}

class Mender {
 public:
  Mender(const MolView& view, std::span<const std::uint32_t> atoms, std::vector<ZQPoint>& points)
      : view_(view), atoms_(atoms), points_(points), isMoved_(view.NumAtoms()) {
    for (const std::uint32_t a : atoms_) {
      for (const Edge& edge : view_.Edges(a)) {
        if (edge.atom > a) bonds_.push_back(edge.bond);
      }
    }
  }

  bool HasFreeMacrocycle() const;
  bool Normalize();
  void PlaceByStress();
  void MendBondStereo();
  void MendClashes();

 private:
  struct Move {
    std::uint32_t bond = none;
    std::uint32_t end = none;  // the end whose side moves
    double angle = 0;          // by which it turns around the other end; 0 mirrors it at the bond
  };

  bool IsWrong(const MolView::Bond& bond) const;
  bool AnyWrong() const {
    return std::ranges::any_of(bonds_, [this](std::uint32_t b) { return IsWrong(view_.bonds[b]); });
  }
  bool Select(const Move& move);
  void Apply(const Move& move);
  double Strain() const;
  double StrainOf(std::uint32_t a, std::uint32_t b) const;
  bool FindClash(std::uint32_t& a, std::uint32_t& b) const;
  std::vector<std::uint32_t> PathBetween(std::uint32_t a, std::uint32_t b) const;
  bool Untangle(std::uint32_t a, std::uint32_t b);
  void Relax();

  const MolView& view_;
  std::span<const std::uint32_t> atoms_;
  std::vector<ZQPoint>& points_;
  std::vector<std::uint32_t> bonds_;
  std::vector<char> isMoved_;         // by atom: on the side that a move moves
  std::vector<std::uint32_t> moved_;  // the same as a list
};

// Scales to bonds of median length 1. False if they have no length.
bool Mender::Normalize() {
  std::vector<double> lengths;
  for (const std::uint32_t b : bonds_) {
    lengths.push_back(Distance(points_[view_.bonds[b].bgn], points_[view_.bonds[b].end]));
  }
  const auto middle = lengths.begin() + static_cast<std::ptrdiff_t>(lengths.size() / 2);
  std::nth_element(lengths.begin(), middle, lengths.end());
  const double length = *middle;
  if (!(length > 0)) return false;
  for (const std::uint32_t a : atoms_) {
    points_[a].x /= length;
    points_[a].y /= length;
  }
  return true;
}

// Whether a smallest ring through some bond is so large, and has so few substituents and hetero
// atoms, that CoordGen would try shapes for it without end: an unsubstituted ring of 30 takes 0.1
// s, one of 36 more than a second, one of 42 minutes.
bool Mender::HasFreeMacrocycle() const {
  constexpr std::uint32_t mostFree = 32;
  constexpr std::uint32_t freeForEach = 8;
  if (atoms_.size() <= mostFree) return false;
  std::vector<std::uint32_t> reachedBy(view_.NumAtoms());
  std::vector<std::uint32_t> queue;
  for (const std::uint32_t b : bonds_) {
    const MolView::Bond& bond = view_.bonds[b];
    if (!bond.inRing) continue;
    std::ranges::fill(reachedBy, none);
    queue.assign(1, bond.bgn);
    reachedBy[bond.bgn] = b;
    for (std::size_t i = 0; i < queue.size() && reachedBy[bond.end] == none; ++i) {
      for (const Edge& edge : view_.Edges(queue[i])) {
        if (edge.bond == b || !view_.bonds[edge.bond].inRing || reachedBy[edge.atom] != none) {
          continue;
        }
        reachedBy[edge.atom] = edge.bond;
        queue.push_back(edge.atom);
      }
    }
    std::uint32_t numFree = 0;
    std::uint32_t numOthers = 0;
    for (std::uint32_t a = bond.end; a != bond.bgn; a = view_.bonds[reachedBy[a]].Other(a)) {
      ++(view_.atoms[a].degree == 2 && view_.atoms[a].element == 6 ? numFree : numOthers);
    }
    if (numFree > mostFree && numFree > freeForEach * numOthers) return true;
  }
  return false;
}

// For what CoordGen can't do, such as large cages: distances in the plane approach those in the
// graph (majorization of stress: J. de Leeuw, J. Classif. 5, 163, 1988).
void Mender::PlaceByStress() {
  constexpr int rounds = 60;
  const std::size_t size = atoms_.size();
  std::vector<std::uint32_t> dense(view_.NumAtoms());
  for (std::uint32_t i = 0; i < size; ++i) dense[atoms_[i]] = i;
  std::vector<float> wanted(size * size);
  std::vector<std::uint32_t> queue;
  for (std::uint32_t i = 0; i < size; ++i) {
    float* row = wanted.data() + i * size;
    queue.assign(1, i);
    for (std::size_t at = 0; at < queue.size(); ++at) {
      for (const Edge& edge : view_.Edges(atoms_[queue[at]])) {
        const std::uint32_t next = dense[edge.atom];
        if (next == i || row[next] != 0) continue;
        row[next] = row[queue[at]] + 1;
        queue.push_back(next);
      }
    }
  }
  // It starts from distances to two pairs of opposite atoms, one across the other.
  const auto farthest = [&](auto distance) {
    std::size_t best = 0;
    for (std::size_t i = 1; i < size; ++i) {
      if (distance(i) > distance(best)) best = i;
    }
    return wanted.data() + best * size;
  };
  const float* const left = farthest([&](std::size_t i) { return wanted[i]; });
  const float* const right = farthest([&](std::size_t i) { return left[i]; });
  const float* const top = farthest([&](std::size_t i) { return std::min(left[i], right[i]); });
  const float* const bottom = farthest([&](std::size_t i) { return top[i]; });
  for (std::size_t i = 0; i < size; ++i) {
    const double angle = static_cast<double>(i) * 2.4;  // apart from others of equal distances
    points_[atoms_[i]] = {(left[i] - right[i]) / 2 + 0.3 * std::cos(angle),
                          (top[i] - bottom[i]) / 2 + 0.3 * std::sin(angle), 0};
  }
  std::vector<ZQPoint> next(size);
  for (int round = 0; round < rounds; ++round) {
    for (std::size_t i = 0; i < size; ++i) {
      ZQPoint sum;
      double weights = 0;
      const ZQPoint& at = points_[atoms_[i]];
      for (std::size_t j = 0; j < size; ++j) {
        if (j == i) continue;
        const double d = wanted[i * size + j];
        const ZQPoint& other = points_[atoms_[j]];
        const double weight = 1 / (d * d);
        const double ratio = d / std::max(Distance(at, other), 1e-6);
        sum.x += weight * (other.x + (at.x - other.x) * ratio);
        sum.y += weight * (other.y + (at.y - other.y) * ratio);
        weights += weight;
      }
      next[i] = {sum.x / weights, sum.y / weights, 0};
    }
    for (std::size_t i = 0; i < size; ++i) points_[atoms_[i]] = next[i];
  }
}

// ---- Moves of one side of a bond

// Finds the side of the bond that the move moves; false for a bond in a ring.
bool Mender::Select(const Move& move) {
  const MolView::Bond& bond = view_.bonds[move.bond];
  if (bond.inRing) return false;
  for (const std::uint32_t a : moved_) isMoved_[a] = 0;
  moved_.assign(1, move.end);
  isMoved_[move.end] = 1;
  for (std::size_t i = 0; i < moved_.size(); ++i) {
    for (const Edge& edge : view_.Edges(moved_[i])) {
      if (edge.bond == move.bond || isMoved_[edge.atom]) continue;
      isMoved_[edge.atom] = 1;
      moved_.push_back(edge.atom);
    }
  }
  return true;
}

void Mender::Apply(const Move& move) {
  const ZQPoint origin = points_[view_.bonds[move.bond].Other(move.end)];
  const ZQPoint end = points_[move.end];
  const double length = std::max(Distance(origin, end), 1e-9);
  const ZQPoint axis{(end.x - origin.x) / length, (end.y - origin.y) / length, 0};
  const double cosine = std::cos(move.angle);
  const double sine = std::sin(move.angle);
  for (const std::uint32_t a : moved_) {
    const ZQPoint at{points_[a].x - origin.x, points_[a].y - origin.y, 0};
    if (move.angle != 0) {
      points_[a] = {origin.x + cosine * at.x - sine * at.y, origin.y + sine * at.x + cosine * at.y,
                    0};
    } else {
      const double along = 2 * (at.x * axis.x + at.y * axis.y);
      points_[a] = {origin.x + along * axis.x - at.x, origin.y + along * axis.y - at.y, 0};
    }
  }
}

// ---- Double bonds

bool Mender::IsWrong(const MolView::Bond& bond) const {
  const ZQBondStereo stereo = bond.bond->GetStereo();
  if (bond.order != 2 || stereo == ZQBondStereo::None || view_.atoms[bond.bgn].degree < 2 ||
      view_.atoms[bond.end].degree < 2) {
    return false;
  }
  const ZQPoint& bgn = points_[bond.bgn];
  const ZQPoint& end = points_[bond.end];
  const double agreement =
      SideOf(bgn, end, points_[ReferenceOf(view_.Edges(bond.bgn).data(), bond.end)]) *
      SideOf(bgn, end, points_[ReferenceOf(view_.Edges(bond.end).data(), bond.bgn)]);
  return (agreement > 0) != (stereo == ZQBondStereo::Cis);
}

void Mender::MendBondStereo() {
  for (const std::uint32_t b : bonds_) {
    if (!IsWrong(view_.bonds[b])) continue;
    const Move move{b, view_.bonds[b].end, 0};
    if (Select(move)) Apply(move);
  }
}

// ---- Clashes

double Mender::StrainOf(std::uint32_t a, std::uint32_t b) const {
  const double dx = points_[a].x - points_[b].x;
  const double dy = points_[a].y - points_[b].y;
  const double square = dx * dx + dy * dy;
  if (square >= comfort * comfort) return 0;
  const double distance = std::sqrt(square);
  return (comfort - distance) * (comfort - distance) + (distance < clash ? 1 : 0);
}

// Between what moves and what doesn't: atoms that are close, and bonds that cross.
double Mender::Strain() const {
  double strain = 0;
  for (const std::uint32_t a : atoms_) {
    if (isMoved_[a]) continue;
    for (const std::uint32_t b : moved_) strain += StrainOf(a, b);
  }
  constexpr double crossing = 0.5;
  for (const std::uint32_t b : bonds_) {
    const MolView::Bond& one = view_.bonds[b];
    if (isMoved_[one.bgn] || isMoved_[one.end]) continue;
    for (const std::uint32_t c : bonds_) {
      const MolView::Bond& other = view_.bonds[c];
      if (!isMoved_[other.bgn] && !isMoved_[other.end]) continue;
      const ZQPoint& p = points_[one.bgn];
      const ZQPoint& q = points_[one.end];
      const ZQPoint& r = points_[other.bgn];
      const ZQPoint& s = points_[other.end];
      if (one.bgn == other.bgn || one.bgn == other.end || one.end == other.bgn ||
          one.end == other.end) {
        continue;
      }
      if (SideOf(p, q, r) * SideOf(p, q, s) < 0 && SideOf(r, s, p) * SideOf(r, s, q) < 0) {
        strain += crossing;
      }
    }
  }
  return strain;
}

// The closest pair, if it clashes.
bool Mender::FindClash(std::uint32_t& a, std::uint32_t& b) const {
  double least = clash * clash;
  bool found = false;
  for (std::size_t i = 0; i < atoms_.size(); ++i) {
    for (std::size_t j = 0; j < i; ++j) {
      const double dx = points_[atoms_[i]].x - points_[atoms_[j]].x;
      const double dy = points_[atoms_[i]].y - points_[atoms_[j]].y;
      if (dx * dx + dy * dy >= least) continue;
      least = dx * dx + dy * dy;
      a = atoms_[i];
      b = atoms_[j];
      found = true;
    }
  }
  return found;
}

// The bonds of a shortest path.
std::vector<std::uint32_t> Mender::PathBetween(std::uint32_t a, std::uint32_t b) const {
  std::vector<std::uint32_t> reachedBy(view_.NumAtoms(), none);
  std::vector<std::uint32_t> queue{b};
  for (std::size_t i = 0; i < queue.size() && reachedBy[a] == none; ++i) {
    for (const Edge& edge : view_.Edges(queue[i])) {
      if (edge.atom == b || reachedBy[edge.atom] != none) continue;
      reachedBy[edge.atom] = edge.bond;
      queue.push_back(edge.atom);
    }
  }
  std::vector<std::uint32_t> path;
  for (; a != b && reachedBy[a] != none; a = view_.bonds[path.back()].Other(a)) {
    path.push_back(reachedBy[a]);
  }
  return path;
}

// Makes the move on the path between two atoms that removes most strain; false if none does.
bool Mender::Untangle(std::uint32_t a, std::uint32_t b) {
  constexpr double degree = std::numbers::pi / 180;
  constexpr double leastGain = 0.05;
  Move best;
  double gain = leastGain;
  std::vector<ZQPoint> before;
  for (const std::uint32_t idx : PathBetween(a, b)) {
    const MolView::Bond& bond = view_.bonds[idx];
    Move move{idx, bond.end, 0};
    if (!Select(move)) continue;
    if (2 * moved_.size() > atoms_.size()) {
      move.end = bond.bgn;
      Select(move);
    }
    before.clear();
    for (const std::uint32_t m : moved_) before.push_back(points_[m]);
    const double strain = Strain();
    for (const double turn : {0.0, 15.0, -15.0, 30.0, -30.0, 60.0, -60.0}) {
      if (turn == 0 && bond.order == 2 && bond.bond->GetStereo() != ZQBondStereo::None) continue;
      move.angle = turn * degree;
      Apply(move);
      // A larger turn disturbs the angles at the atom.
      const double gained = strain - Strain() - std::abs(turn) * 0.005;
      if (gained > gain && !AnyWrong()) {
        gain = gained;
        best = move;
      }
      for (std::size_t i = 0; i < moved_.size(); ++i) points_[moved_[i]] = before[i];
    }
  }
  if (best.bond == none) return false;
  Select(best);
  Apply(best);
  return true;
}

// Pushes close atoms apart while bonds keep their lengths, for clashes within rings.
void Mender::Relax() {
  constexpr int rounds = 100;
  constexpr double wanted = 0.56;
  const std::vector<ZQPoint> before = points_;
  const auto push = [this](std::uint32_t a, std::uint32_t b, double part) {
    // Half of the part of their distance each; coincident atoms leave in some direction.
    double dx = points_[a].x - points_[b].x;
    double dy = points_[a].y - points_[b].y;
    if (dx * dx + dy * dy < 1e-6) dx = 1e-2;
    points_[a].x += dx * part / 2;
    points_[a].y += dy * part / 2;
    points_[b].x -= dx * part / 2;
    points_[b].y -= dy * part / 2;
  };
  for (int round = 0; round < rounds; ++round) {
    for (const std::uint32_t b : bonds_) {
      const MolView::Bond& bond = view_.bonds[b];
      const double length = std::max(Distance(points_[bond.bgn], points_[bond.end]), 1e-3);
      push(bond.bgn, bond.end, std::clamp((1 - length) / length, -0.5, 0.5) * 0.1);
    }
    for (std::size_t i = 0; i < atoms_.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) {
        const double distance = Distance(points_[atoms_[i]], points_[atoms_[j]]);
        if (distance < wanted) {
          push(atoms_[i], atoms_[j],
               std::min((wanted - distance) / std::max(distance, 1e-3), 1.0) * 0.5);
        }
      }
    }
  }
  if (AnyWrong()) points_ = before;
}

void Mender::MendClashes() {
  constexpr int mostMoves = 40;
  std::uint32_t a = none;
  std::uint32_t b = none;
  for (int i = 0; i < mostMoves; ++i) {
    if (!FindClash(a, b)) return;
    if (!Untangle(a, b)) break;
  }
  if (FindClash(a, b)) Relax();
}

}  // namespace

void LayOut(const MolView& view, std::span<const std::uint32_t> atoms,
            std::vector<ZQPoint>& points) {
  Mender mender(view, atoms, points);
  if (mender.HasFreeMacrocycle() || !RunCoordGen(view, atoms, points) || !mender.Normalize()) {
    mender.PlaceByStress();
    mender.Normalize();
  }
  mender.MendBondStereo();
  mender.MendClashes();
  mender.Normalize();  // mending changes lengths
}

}  // namespace Quarnel
