#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <unordered_map>
#include <utility>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "korvex/draw_local.h"

namespace ZQKorvex {
namespace {

constexpr unsigned int none = ~0U;
constexpr unsigned int numLevels = 7;  // radii 0 to 6
constexpr std::size_t leastCommon = 6;

std::uint64_t Mixed(std::uint64_t hash, std::uint64_t value) {
  hash = (hash ^ value) * 0x9E3779B97F4A7C15ULL;
  return hash ^ (hash >> 29U);
}

// The heavy atoms of a molecule, numbered densely.
class HeavyGraph {
 public:
  struct Edge {
    unsigned int atom;
    unsigned int kind;  // bonds of equal kind match
  };
  struct Atom {
    unsigned int idx = 0;
    unsigned int element = 0;
    ZQPoint at;
    std::vector<Edge> edges;
    std::array<std::uint64_t, numLevels> environments{};  // of growing radius
  };

  HeavyGraph(const ZQMolBase& mol, const ZQLayout& layout);

  std::vector<Atom> atoms;
};

HeavyGraph::HeavyGraph(const ZQMolBase& mol, const ZQLayout& layout) {
  ZQGraphMol copy(mol);
  ZQAssignAromaticFlags(copy, 2, true, 0, false);
  std::vector<unsigned int> dense(copy.GetMaxAtomIdx(), none);
  for (auto atom = copy.GetAtoms(ZQIsHeavy()); atom; ++atom) {
    const unsigned int idx = atom->GetIdx();
    if (idx >= layout.size()) continue;
    dense[idx] = static_cast<unsigned int>(atoms.size());
    atoms.push_back({idx, atom->GetAtomicNum(), layout[idx], {}, {}});
  }
  for (auto bond = copy.GetBonds(); bond; ++bond) {
    const unsigned int bgn = dense[bond->GetBgn()->GetIdx()];
    const unsigned int end = dense[bond->GetEnd()->GetIdx()];
    if (bgn == none || end == none) continue;
    constexpr unsigned int aromatic = 5;
    const unsigned int kind =
        2 * (bond->IsAromatic() ? aromatic : bond->GetOrder()) + (bond->IsInRing() ? 1 : 0);
    atoms[bgn].edges.push_back({end, kind});
    atoms[end].edges.push_back({bgn, kind});
  }
  for (Atom& atom : atoms) atom.environments[0] = Mixed(1, atom.element);
  for (unsigned int level = 1; level < numLevels; ++level) {
    for (Atom& atom : atoms) {
      std::uint64_t sum = 0;  // doesn't depend on the order of neighbours
      for (const Edge& edge : atom.edges) {
        sum += Mixed(Mixed(level, edge.kind), atoms[edge.atom].environments[level - 1]);
      }
      atom.environments[level] = Mixed(atom.environments[level - 1], sum);
    }
  }
}

// A turn around the origin, after a reflection if `mirrored`, and a shift.
struct Motion {
  bool mirrored = false;
  double cosine = 1;
  double sine = 0;
  ZQPoint from;  // comes to lie on `to`
  ZQPoint to;
  double error = 0;  // root mean square

  ZQPoint operator()(const ZQPoint& point) const {
    const double x = mirrored ? from.x - point.x : point.x - from.x;
    const double y = point.y - from.y;
    return {to.x + cosine * x - sine * y, to.y + sine * x + cosine * y, 0};
  }
};

using Pair = std::pair<unsigned int, unsigned int>;

// The motion that brings the first atoms closest to the second ones, by least squares.
Motion Fit(const HeavyGraph& mol, const HeavyGraph& reference, const std::vector<Pair>& pairs,
           bool mirrored) {
  Motion motion;
  motion.mirrored = mirrored;
  const auto size = static_cast<double>(pairs.size());
  for (const auto& [a, b] : pairs) {
    motion.from.x += mol.atoms[a].at.x / size;
    motion.from.y += mol.atoms[a].at.y / size;
    motion.to.x += reference.atoms[b].at.x / size;
    motion.to.y += reference.atoms[b].at.y / size;
  }
  double along = 0;
  double across = 0;
  double squares = 0;
  for (const auto& [a, b] : pairs) {
    const double sign = mirrored ? -1 : 1;
    const double x = sign * (mol.atoms[a].at.x - motion.from.x);
    const double y = mol.atoms[a].at.y - motion.from.y;
    const double u = reference.atoms[b].at.x - motion.to.x;
    const double v = reference.atoms[b].at.y - motion.to.y;
    along += x * u + y * v;
    across += x * v - y * u;
    squares += x * x + y * y + u * u + v * v;
  }
  const double length = std::hypot(along, across);
  if (length > 0) {
    motion.cosine = along / length;
    motion.sine = across / length;
  }
  motion.error = std::sqrt(std::max(squares - 2 * length, 0.0) / size);
  return motion;
}

// Grows a common fragment from a pair of atoms: always by the pair of neighbours whose environments
// agree to the largest radius and, with a motion, that lie closest. Bonds between atoms of the
// fragment agree.
class Extension {
 public:
  Extension(const HeavyGraph& mol, const HeavyGraph& reference)
      : mol_(mol),
        reference_(reference),
        images_(mol.atoms.size()),
        isTaken_(reference.atoms.size()) {}

  std::vector<Pair> From(Pair seed, const Motion* motion) {
    std::ranges::fill(images_, none);
    std::ranges::fill(isTaken_, 0);
    std::vector<Pair> pairs;
    std::vector<Option> heap;
    const auto add = [&](Pair pair) {
      images_[pair.first] = pair.second;
      isTaken_[pair.second] = 1;
      pairs.push_back(pair);
      for (const auto& edge : mol_.atoms[pair.first].edges) {
        if (images_[edge.atom] != none) continue;
        for (const auto& other : reference_.atoms[pair.second].edges) {
          if (isTaken_[other.atom] || edge.kind != other.kind ||
              mol_.atoms[edge.atom].element != reference_.atoms[other.atom].element) {
            continue;
          }
          heap.push_back({Agreement({edge.atom, other.atom}, motion), {edge.atom, other.atom}});
          std::ranges::push_heap(heap, {}, &Option::agreement);
        }
      }
    };
    add(seed);
    while (!heap.empty()) {
      std::ranges::pop_heap(heap, {}, &Option::agreement);
      const Pair pair = heap.back().pair;
      heap.pop_back();
      if (images_[pair.first] == none && !isTaken_[pair.second] && Fits(pair)) add(pair);
    }
    return pairs;
  }

 private:
  struct Option {
    double agreement;
    Pair pair;
  };

  double Agreement(Pair pair, const Motion* motion) const {
    const auto& a = mol_.atoms[pair.first];
    const auto& b = reference_.atoms[pair.second];
    unsigned int level = 0;
    while (level + 1 < numLevels && a.environments[level + 1] == b.environments[level + 1]) ++level;
    if (!motion) return level;
    const ZQPoint at = (*motion)(a.at);
    return level - std::min(std::hypot(at.x - b.at.x, at.y - b.at.y) / 100, 0.9);
  }

  // Whether the two have equal bonds to the fragment.
  bool Fits(Pair pair) const {
    unsigned int bonds = 0;
    for (const auto& edge : mol_.atoms[pair.first].edges) {
      if (images_[edge.atom] == none) continue;
      ++bonds;
      const auto& edges = reference_.atoms[pair.second].edges;
      if (std::ranges::none_of(edges, [&](const auto& other) {
            return other.atom == images_[edge.atom] && other.kind == edge.kind;
          })) {
        return false;
      }
    }
    for (const auto& other : reference_.atoms[pair.second].edges) bonds -= isTaken_[other.atom];
    return bonds == 0;
  }

  const HeavyGraph& mol_;
  const HeavyGraph& reference_;
  std::vector<unsigned int> images_;  // of the molecule's atoms
  std::vector<char> isTaken_;         // atoms of the reference
};

// Pairs of atoms with equal environments, those of the largest radius first.
std::vector<Pair> SeedsOf(const HeavyGraph& mol, const HeavyGraph& reference) {
  constexpr std::size_t mostSeeds = 64;
  std::vector<Pair> seeds;
  for (unsigned int level = numLevels; level-- > 1 && seeds.size() < mostSeeds;) {
    std::unordered_map<std::uint64_t, std::vector<unsigned int>> places;
    for (unsigned int b = 0; b < reference.atoms.size(); ++b) {
      places[reference.atoms[b].environments[level]].push_back(b);
    }
    for (unsigned int a = 0; a < mol.atoms.size(); ++a) {
      const auto found = places.find(mol.atoms[a].environments[level]);
      if (found == places.end()) continue;
      for (const unsigned int b : found->second) {
        if (seeds.size() == mostSeeds) return seeds;
        seeds.emplace_back(a, b);
      }
    }
  }
  return seeds;
}

}  // namespace

bool ZQOrientLayout(ZQLayout& layout, const ZQMolBase& mol, const ZQLayout& reference,
                    const ZQMolBase& referenceMol) {
  const HeavyGraph graph(mol, layout);
  const HeavyGraph other(referenceMol, reference);
  const std::size_t smaller = std::min(graph.atoms.size(), other.atoms.size());
  const std::size_t least = std::max(leastCommon, (smaller + 2) / 3);
  Extension extension(graph, other);
  std::size_t most = 0;
  Motion best;
  best.error = std::numeric_limits<double>::max();
  const auto consider = [&](const std::vector<Pair>& pairs, bool mirrored) {
    constexpr double better = 0.999;  // a reflection for nothing is avoided
    const Motion motion = Fit(graph, other, pairs, mirrored);
    if (pairs.size() > most || (pairs.size() == most && motion.error < better * best.error)) {
      most = pairs.size();
      best = motion;
    }
    return motion;
  };
  for (const Pair& seed : SeedsOf(graph, other)) {
    const std::vector<Pair> pairs = extension.From(seed, nullptr);
    if (pairs.size() < std::max(least, most)) continue;
    for (const bool mirrored : {false, true}) {
      // Among equal neighbours the nearest ones are chosen once the motion is known.
      const Motion motion = consider(pairs, mirrored);
      consider(extension.From(seed, &motion), mirrored);
    }
  }
  if (most < least) return false;
  for (ZQPoint& at : layout) at = best(at);
  return true;
}

}  // namespace ZQKorvex
