#include "platform/quarnel/perception/relevant_cycles_local.h"

#include <algorithm>
#include <bit>
#include <limits>
#include <tuple>

#include "platform/quarnel/molecule/adjacency_local.h"

// A cycle is relevant if it isn't the sum of shorter ones; the relevant cycles together are the
// union of all minimum cycle bases. There can be exponentially many, but they fall into few
// families (P. Vismara, Electron. J. Combin. 4, R9, 1997): those of one family have the same root,
// their atom of the highest number, and differ only in the shortest paths from it to the two
// opposite atoms. Either all of a family are relevant or none is, so that one of them, as a vector
// of bonds over GF(2), is tested by elimination against the current basis, in order of length, and
// the others are counted by counting paths.

namespace Quarnel {

namespace {

constexpr std::uint32_t none = ~0U;
/// Of one range of lengths. Molecules selected for their ring systems have up to 84.
constexpr std::size_t maxFamilies = 16384;

std::uint32_t Saturated(std::uint64_t count) {
  return static_cast<std::uint32_t>(
      std::min<std::uint64_t>(count, std::numeric_limits<std::uint32_t>::max()));
}

// The cycles through a root and two atoms equally far from it, by any shortest paths over atoms of
// lower numbers than the root. The two are bonded (odd lengths) or share a neighbour, the middle
// (even).
struct Family {
  std::uint32_t length;
  std::uint32_t root;
  std::uint32_t left;
  std::uint32_t right;
  std::uint32_t middle;
};

class CycleCounter {
 public:
  CycleCounter(std::uint32_t numAtoms,
               std::span<const std::pair<std::uint32_t, std::uint32_t>> bonds);
  RingCounts Count();

 private:
  struct Atom {
    std::uint32_t firstEdge;
    std::uint32_t degree;
  };
  struct Bond {
    std::uint32_t bgn;
    std::uint32_t end;
  };
  // By bond; a basis vector's pivot is its first bond.
  using Vector = std::vector<std::uint64_t>;

  std::uint32_t Rank();
  void Explore(std::uint32_t root, std::uint32_t maxDistance);
  void FindFamilies(std::uint32_t root, std::uint32_t minLength, std::uint32_t maxLength);
  bool AreDisjoint(std::uint32_t left, std::uint32_t right, std::uint32_t root) const;
  bool IsWay(std::uint32_t from, const Edge& edge) const {
    return ways_[edge.atom] != 0 && distance_[edge.atom] + 1 == distance_[from];
  }
  Edge StepDown(std::uint32_t from) const;
  Vector MakeVector(const Family& family) const;
  bool Reduce(Vector& vector) const;
  void AddCounts(const Family& family);
  void AddSide(const Family& family, std::uint32_t from, std::uint64_t others);
  void Add(const Family& family, std::uint32_t atom, std::uint64_t count);

  std::vector<Atom> atoms_;
  std::vector<Bond> bonds_;
  std::vector<Edge> edges_;
  std::vector<Vector> basis_;  // by pivot, empty for none
  std::vector<Family> families_;
  RingCounts counts_;
  // Of the current root, for the atoms in `reached_`, nearest first.
  std::vector<std::uint32_t> reached_;
  std::vector<std::uint32_t> distance_;  // none if not reached
  std::vector<std::uint32_t> ways_;      // shortest paths over lower numbers, saturating
  std::vector<std::uint64_t> weight_;
};

CycleCounter::CycleCounter(std::uint32_t numAtoms,
                           std::span<const std::pair<std::uint32_t, std::uint32_t>> bonds)
    : atoms_(numAtoms),
      basis_(bonds.size()),
      distance_(numAtoms, none),
      ways_(numAtoms),
      weight_(numAtoms) {
  for (const auto& [bgn, end] : bonds) {
    bonds_.push_back({bgn, end});
    ++atoms_[bgn].degree;
    ++atoms_[end].degree;
  }
  LinkBonds(atoms_, bonds_, edges_);
  counts_.count.assign(numAtoms, 0);
  counts_.smallest.assign(numAtoms, 0);
}

RingCounts CycleCounter::Count() {
  std::uint32_t missing = Rank();
  std::uint32_t minLength = 3;
  // Doubled ranges: most rings need the shallow search only.
  for (std::uint32_t maxLength = 8; missing != 0; maxLength *= 2) {
    families_.clear();
    for (std::uint32_t root = 0; root < atoms_.size(); ++root) {
      if (atoms_[root].degree != 0) FindFamilies(root, minLength, maxLength);
      if (families_.size() > maxFamilies) return std::move(counts_);
    }
    minLength = maxLength + 1;
    std::sort(families_.begin(), families_.end(), [](const Family& a, const Family& b) {
      return std::tie(a.length, a.root) < std::tie(b.length, b.root);
    });
    std::vector<Vector> sameLength;
    std::uint32_t root = none;
    for (std::size_t i = 0; i < families_.size() && missing != 0; ++i) {
      const Family& family = families_[i];
      if (std::exchange(root, family.root) != family.root) Explore(family.root, maxLength / 2);
      // A cycle is relevant if it isn't a sum of shorter ones.
      Vector vector = MakeVector(family);
      if (Reduce(vector)) {
        AddCounts(family);
        sameLength.push_back(std::move(vector));
      }
      if (i + 1 != families_.size() && families_[i + 1].length == family.length) continue;
      for (Vector& entry : sameLength) {
        if (!Reduce(entry)) continue;
        const auto word = std::find_if(entry.begin(), entry.end(), [](auto w) { return w != 0; });
        const auto pivot = static_cast<std::size_t>(word - entry.begin()) * 64 +
                           static_cast<std::size_t>(std::countr_zero(*word));
        basis_[pivot] = std::move(entry);
        --missing;
      }
      sameLength.clear();
    }
  }
  return std::move(counts_);
}

// Number of independent cycles.
std::uint32_t CycleCounter::Rank() {
  std::uint32_t trees = 0;
  std::uint32_t numAtoms = 0;
  for (std::uint32_t a = 0; a < atoms_.size(); ++a) {
    numAtoms += atoms_[a].degree != 0;
    if (atoms_[a].degree == 0 || weight_[a] != 0) continue;
    ++trees;
    reached_.assign(1, a);
    weight_[a] = 1;
    for (std::size_t next = 0; next < reached_.size(); ++next) {
      for (const Edge& edge : EdgesOf(atoms_[reached_[next]], edges_)) {
        if (std::exchange(weight_[edge.atom], 1) == 0) reached_.push_back(edge.atom);
      }
    }
  }
  reached_.clear();
  std::fill(weight_.begin(), weight_.end(), 0);
  return static_cast<std::uint32_t>(bonds_.size()) + trees - numAtoms;
}

void CycleCounter::Explore(std::uint32_t root, std::uint32_t maxDistance) {
  for (const std::uint32_t a : reached_) {
    distance_[a] = none;
    ways_[a] = 0;
  }
  reached_.assign(1, root);
  distance_[root] = 0;
  ways_[root] = 1;
  for (std::size_t next = 0; next < reached_.size(); ++next) {
    const std::uint32_t from = reached_[next];
    if (distance_[from] == maxDistance) break;
    for (const Edge& edge : EdgesOf(atoms_[from], edges_)) {
      if (distance_[edge.atom] == none) {
        distance_[edge.atom] = distance_[from] + 1;
        reached_.push_back(edge.atom);
      }
      if (distance_[edge.atom] == distance_[from] + 1 && edge.atom < root) {
        ways_[edge.atom] = Saturated(std::uint64_t{ways_[edge.atom]} + ways_[from]);
      }
    }
  }
}

void CycleCounter::FindFamilies(std::uint32_t root, std::uint32_t minLength,
                                std::uint32_t maxLength) {
  Explore(root, maxLength / 2);
  const auto add = [&](const Family& family) {
    if (family.length < minLength || family.length > maxLength) return;
    if (AreDisjoint(family.left, family.right, root)) families_.push_back(family);
  };
  for (const std::uint32_t from : reached_) {
    if (ways_[from] == 0 || from == root) continue;
    const std::uint32_t distance = distance_[from];
    const std::span<const Edge> edges = EdgesOf(atoms_[from], edges_);
    for (std::size_t i = 0; i < edges.size(); ++i) {
      const std::uint32_t to = edges[i].atom;
      if (ways_[to] != 0 && distance_[to] == distance && to < from) {
        add({2 * distance + 1, root, from, to, none});
      }
      if (!IsWay(from, edges[i]) || distance < 2) continue;
      for (std::size_t j = 0; j < i; ++j) {
        if (IsWay(from, edges[j])) add({2 * distance, root, to, edges[j].atom, from});
      }
    }
  }
}

Edge CycleCounter::StepDown(std::uint32_t from) const {
  for (const Edge& edge : EdgesOf(atoms_[from], edges_)) {
    if (IsWay(from, edge)) return edge;
  }
  return {none, none};
}

// Whether the first paths from the root share no other atom. In a relevant cycle all paths are
// disjoint.
bool CycleCounter::AreDisjoint(std::uint32_t left, std::uint32_t right, std::uint32_t root) const {
  while (left != root) {
    if (left == right) return false;
    left = StepDown(left).atom;
    right = StepDown(right).atom;
  }
  return true;
}

CycleCounter::Vector CycleCounter::MakeVector(const Family& family) const {
  Vector vector((bonds_.size() + 63) / 64);
  const auto flip = [&](std::uint32_t bond) {
    vector[bond / 64] ^= std::uint64_t{1} << (bond % 64);
  };
  for (std::uint32_t from : {family.left, family.right}) {
    const std::uint32_t last = family.middle != none ? family.middle
                               : from == family.left ? family.right
                                                     : none;
    for (const Edge& edge : EdgesOf(atoms_[from], edges_)) {
      if (edge.atom == last) flip(edge.bond);
    }
    while (from != family.root) {
      const Edge edge = StepDown(from);
      flip(edge.bond);
      from = edge.atom;
    }
  }
  return vector;
}

// Subtracts basis vectors as far as possible; false if nothing remains.
bool CycleCounter::Reduce(Vector& vector) const {
  for (std::size_t w = 0; w < vector.size(); ++w) {
    std::uint64_t left = ~std::uint64_t{0};
    while ((vector[w] & left) != 0) {
      const auto bit = static_cast<std::size_t>(std::countr_zero(vector[w] & left));
      const Vector& other = basis_[w * 64 + bit];
      if (other.empty()) return true;
      for (std::size_t i = w; i < vector.size(); ++i) vector[i] ^= other[i];
    }
  }
  return false;
}

void CycleCounter::Add(const Family& family, std::uint32_t atom, std::uint64_t count) {
  counts_.count[atom] = Saturated(counts_.count[atom] + count);
  if (counts_.smallest[atom] == 0) counts_.smallest[atom] = family.length;
}

void CycleCounter::AddCounts(const Family& family) {
  const std::uint64_t left = ways_[family.left];
  const std::uint64_t right = ways_[family.right];
  const std::uint64_t total = Saturated(left * right);
  Add(family, family.root, total);
  if (family.middle != none) Add(family, family.middle, total);
  AddSide(family, family.left, right);
  AddSide(family, family.right, left);
}

// Counts for the atoms on the paths to `from`, each of which belongs to `others` cycles.
void CycleCounter::AddSide(const Family& family, std::uint32_t from, std::uint64_t others) {
  std::vector<std::uint32_t> layer{from};
  weight_[from] = 1;  // paths from an atom to the end
  for (std::size_t next = 0; next < layer.size(); ++next) {
    const std::uint32_t atom = layer[next];
    const std::uint64_t weight = std::exchange(weight_[atom], 0);
    if (distance_[atom] == 0) break;  // the root, which comes last
    Add(family, atom, Saturated(std::uint64_t{Saturated(weight * ways_[atom])} * others));
    for (const Edge& edge : EdgesOf(atoms_[atom], edges_)) {
      if (!IsWay(atom, edge)) continue;
      if (weight_[edge.atom] == 0) layer.push_back(edge.atom);
      weight_[edge.atom] = Saturated(weight_[edge.atom] + weight);
    }
  }
}

}  // namespace

RingCounts CountRelevantCycles(std::uint32_t numAtoms,
                               std::span<const std::pair<std::uint32_t, std::uint32_t>> bonds) {
  return CycleCounter(numAtoms, bonds).Count();
}

}  // namespace Quarnel
