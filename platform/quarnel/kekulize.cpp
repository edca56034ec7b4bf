#include <vector>

#include "contract/quarnel/perception.h"
#include "platform/quarnel/molgraph_view_local.h"

namespace Quarnel {
namespace {

constexpr std::uint32_t none = MolView::none;

/// Whether an atom marked aromatic takes a double bond among its aromatic bonds.
enum class Need : std::uint8_t { Never, Optional, Always };

/// By the hydrogens that would fill up an atom with these sigma bonds: exactly one missing is the
/// double bond. Short of more than one it is a radical or a carbene, with or without a double bond.
Need NeedOf(unsigned int element, int charge, unsigned int sigma) {
  if (element == 0) return Need::Optional;
  const unsigned int missing = ZQDefaultHCount(element, charge, sigma);
  return missing == 0 ? Need::Never : missing == 1 ? Need::Always : Need::Optional;
}

/// A matching that covers every atom that needs a double bond. A greedy start that serves atoms
/// with one choice first (Karp and Sipser 1981), then augmenting paths with blossoms (Edmonds
/// 1965), which also may end by freeing an optional atom.
class Matching {
 public:
  void Reset(std::uint32_t numAtoms) {
    need.assign(numAtoms, Need::Never);
    mate.assign(numAtoms, none);
  }
  void Start(const MolView& view, const std::vector<char>& candidate);
  bool Augment(const MolView& view, const std::vector<char>& candidate, std::uint32_t root);

  std::vector<Need> need;
  std::vector<std::uint32_t> mate;

 private:
  bool IsOpen(std::uint32_t atom) const { return need[atom] != Need::Never && mate[atom] == none; }
  std::uint32_t CommonBase(std::uint32_t a, std::uint32_t b);
  void MarkPath(std::uint32_t atom, std::uint32_t base, std::uint32_t child);
  void Flip(std::uint32_t end);

  std::vector<std::uint32_t> choices_;  // open neighbours of an atom
  std::vector<std::uint32_t> queue_;
  // Of one search: the search tree's outer atoms, parents and the bases of contracted blossoms.
  std::vector<char> outer_;
  std::vector<char> blossom_;
  std::vector<char> onPath_;
  std::vector<std::uint32_t> parent_;
  std::vector<std::uint32_t> base_;
};

void Matching::Start(const MolView& view, const std::vector<char>& candidate) {
  choices_.assign(view.NumAtoms(), 0);
  queue_.clear();
  const auto isChoice = [&](const MolView::Edge& edge) {
    return candidate[edge.bond] && IsOpen(edge.atom);
  };
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    if (need[a] == Need::Never) continue;
    for (const MolView::Edge& edge : view.Edges(a)) choices_[a] += isChoice(edge);
    if (choices_[a] == 1) queue_.push_back(a);
  }
  std::uint32_t next = 0;
  while (true) {
    std::uint32_t a = next;
    if (!queue_.empty()) {
      a = queue_.back();
      queue_.pop_back();
    } else if (next++ >= view.NumAtoms()) {
      return;
    }
    if (!IsOpen(a)) continue;
    for (const MolView::Edge& edge : view.Edges(a)) {
      if (!isChoice(edge)) continue;
      mate[a] = edge.atom;
      mate[edge.atom] = a;
      break;
    }
    if (mate[a] == none) continue;
    for (const std::uint32_t taken : {a, mate[a]}) {
      for (const MolView::Edge& edge : view.Edges(taken)) {
        if (isChoice(edge) && --choices_[edge.atom] == 1) queue_.push_back(edge.atom);
      }
    }
  }
}

bool Matching::Augment(const MolView& view, const std::vector<char>& candidate,
                       std::uint32_t root) {
  const std::uint32_t n = view.NumAtoms();
  outer_.assign(n, 0);
  parent_.assign(n, none);
  base_.resize(n);
  for (std::uint32_t a = 0; a < n; ++a) base_[a] = a;
  queue_.assign(1, root);
  outer_[root] = 1;
  for (std::size_t head = 0; head < queue_.size(); ++head) {
    const std::uint32_t from = queue_[head];
    if (need[from] == Need::Optional && from != root) {
      const std::uint32_t released = mate[from];
      mate[from] = none;
      Flip(released);
      return true;
    }
    for (const MolView::Edge& edge : view.Edges(from)) {
      const std::uint32_t to = edge.atom;
      if (!candidate[edge.bond] || need[to] == Need::Never) continue;
      if (base_[from] == base_[to] || mate[from] == to) continue;
      if (outer_[to]) {  // an odd cycle
        const std::uint32_t base = CommonBase(from, to);
        blossom_.assign(n, 0);
        MarkPath(from, base, to);
        MarkPath(to, base, from);
        for (std::uint32_t a = 0; a < n; ++a) {
          if (!blossom_[base_[a]]) continue;
          base_[a] = base;
          if (!outer_[a]) {
            outer_[a] = 1;
            queue_.push_back(a);
          }
        }
      } else if (parent_[to] == none) {
        parent_[to] = from;
        if (mate[to] == none) {
          Flip(to);
          return true;
        }
        outer_[mate[to]] = 1;
        queue_.push_back(mate[to]);
      }
    }
  }
  return false;
}

std::uint32_t Matching::CommonBase(std::uint32_t a, std::uint32_t b) {
  onPath_.assign(base_.size(), 0);
  while (true) {
    a = base_[a];
    onPath_[a] = 1;
    if (mate[a] == none) break;
    a = parent_[mate[a]];
  }
  while (!onPath_[base_[b]]) b = parent_[mate[base_[b]]];
  return base_[b];
}

void Matching::MarkPath(std::uint32_t atom, std::uint32_t base, std::uint32_t child) {
  while (base_[atom] != base) {
    blossom_[base_[atom]] = blossom_[base_[mate[atom]]] = 1;
    parent_[atom] = child;
    child = mate[atom];
    atom = parent_[child];
  }
}

void Matching::Flip(std::uint32_t end) {
  while (end != none) {
    const std::uint32_t from = parent_[end];
    const std::uint32_t next = mate[from];
    mate[end] = from;
    mate[from] = end;
    end = next;
  }
}

}  // namespace

bool ZQKekulize(ZQMolBase& mol, unsigned int* culprit) {
  struct Scratch {
    Matching matching;
    std::vector<char> candidate;  // by bond
  };
  thread_local Scratch scratch;
  auto& [matching, candidate] = scratch;  // looked up once
  MolView& view = MolView::Read(mol, MolView::Properties);
  bool anyAromatic = false;
  for (const MolView::Atom& atom : view.atoms) anyAromatic |= atom.aromatic;
  if (!anyAromatic) return true;
  view.FindRings();
  candidate.resize(view.bonds.size());
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    candidate[b] = bond.aromatic && bond.inRing && view.atoms[bond.bgn].aromatic &&
                   view.atoms[bond.end].aromatic;
  }

  matching.Reset(view.NumAtoms());
  const auto fail = [&](std::uint32_t a) {
    if (culprit) *culprit = view.atoms[a].atom->GetIdx();
    return false;
  };
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    const MolView::Atom& atom = view.atoms[a];
    if (!atom.aromatic) continue;
    if (!atom.inRing) return fail(a);
    unsigned int sigma = atom.implicitH;
    for (const MolView::Edge& edge : view.Edges(a)) {
      sigma += view.bonds[edge.bond].aromatic ? 1 : view.bonds[edge.bond].order;
    }
    matching.need[a] = NeedOf(atom.element, atom.charge, sigma);
  }
  matching.Start(view, candidate);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    if (matching.need[a] != Need::Always || matching.mate[a] != none) continue;
    if (!matching.Augment(view, candidate, a)) return fail(a);
  }

  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    if (!bond.aromatic) continue;
    bond.bond->SetOrder(candidate[b] && matching.mate[bond.bgn] == bond.end ? 2 : 1);
    if (!candidate[b]) bond.bond->SetAromatic(false);
  }
  return true;
}

}  // namespace Quarnel
