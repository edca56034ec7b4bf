#include <algorithm>
#include <array>
#include <vector>

#include "contract/quarnel/graphmol.h"
#include "contract/quarnel/perception.h"
#include "platform/quarnel/canonical/canonical_order_local.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/stereo_local.h"

namespace Quarnel {
namespace {

constexpr std::uint32_t none = MolView::none;
/// Limit for choosing the assignment by the canonical order. The largest of 38,000 molecules with a
/// choice has 169 atoms.
constexpr std::uint32_t maxAtomsToOrder = 2000;

/// Whether an atom marked aromatic takes a double bond among its aromatic bonds.
enum class Need : std::uint8_t { Never, Optional, Always };

/// Follows from the hydrogens that would fill up an atom with these sigma bonds: if exactly one is
/// missing, there is a double bond. If more are missing, it is a radical or a carbene, with or
/// without a double bond.
Need NeedOf(unsigned int element, int charge, unsigned int sigma) {
  if (element == 0) return Need::Optional;
  const unsigned int missing = ZQDefaultHCount(element, charge, sigma);
  return missing == 0 ? Need::Never : missing == 1 ? Need::Always : Need::Optional;
}

/// A matching that covers every atom that needs a double bond. Greedy first, beginning with atoms
/// that have one choice (Karp and Sipser 1981), then by augmenting paths with blossoms (Edmonds
/// 1965), which may also end by freeing an optional atom.
class Matching {
 public:
  /// Initially no atom has a need. View and candidates, by bond, must outlive the matching.
  void SetGraph(const MolView& view, const std::vector<char>& candidate) {
    view_ = &view;
    candidate_ = &candidate;
    need.assign(view.NumAtoms(), Need::Never);
    mate.assign(view.NumAtoms(), none);
  }
  void Start();
  bool Augment(std::uint32_t root);
  /// Changes the matching to the first one by rank: the first atom has its first possible partner,
  /// and so on. Clears all needs.
  void ChooseFirst(const std::vector<std::uint32_t>& rank);

  std::vector<Need> need;
  std::vector<std::uint32_t> mate;
  std::vector<char> free;  // by atom: unmatched when the first choice was made

 private:
  bool IsOpen(std::uint32_t atom) const { return need[atom] != Need::Never && mate[atom] == none; }
  bool IsCandidate(const MolView::Edge& edge) const { return (*candidate_)[edge.bond] != 0; }
  bool Settle(std::uint32_t a, std::uint32_t b);
  std::uint32_t CommonBase(std::uint32_t a, std::uint32_t b);
  void MarkPath(std::uint32_t atom, std::uint32_t base, std::uint32_t child);
  void Flip(std::uint32_t end);

  const MolView* view_ = nullptr;
  const std::vector<char>* candidate_ = nullptr;
  std::vector<std::uint32_t> choices_;  // open neighbours of an atom
  std::vector<std::uint32_t> queue_;
  std::vector<std::uint32_t> before_;  // the previous matching, for restoring it
  // State of one search: the tree's outer atoms, parents and the bases of contracted blossoms.
  std::vector<char> outer_;
  std::vector<char> blossom_;
  std::vector<char> onPath_;
  std::vector<std::uint32_t> parent_;
  std::vector<std::uint32_t> base_;
};

void Matching::Start() {
  choices_.assign(view_->NumAtoms(), 0);
  queue_.clear();
  const auto isChoice = [&](const MolView::Edge& edge) {
    return IsCandidate(edge) && IsOpen(edge.atom);
  };
  for (std::uint32_t a = 0; a < view_->NumAtoms(); ++a) {
    if (need[a] == Need::Never) continue;
    for (const MolView::Edge& edge : view_->Edges(a)) choices_[a] += isChoice(edge);
    if (choices_[a] == 1) queue_.push_back(a);
  }
  std::uint32_t next = 0;
  free.clear();
  while (true) {
    std::uint32_t a = next;
    if (!queue_.empty()) {
      a = queue_.back();
      queue_.pop_back();
    } else if (next++ >= view_->NumAtoms()) {
      free.resize(view_->NumAtoms(), 0);
      return;
    } else if (free.empty() && IsOpen(a)) {
      free.resize(view_->NumAtoms());
      for (std::uint32_t other = 0; other < view_->NumAtoms(); ++other) free[other] = IsOpen(other);
    }
    if (!IsOpen(a)) continue;
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (!isChoice(edge)) continue;
      mate[a] = edge.atom;
      mate[edge.atom] = a;
      break;
    }
    if (mate[a] == none) continue;
    for (const std::uint32_t taken : {a, mate[a]}) {
      for (const MolView::Edge& edge : view_->Edges(taken)) {
        if (isChoice(edge) && --choices_[edge.atom] == 1) queue_.push_back(edge.atom);
      }
    }
  }
}

bool Matching::Augment(std::uint32_t root) {
  const std::uint32_t n = view_->NumAtoms();
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
    for (const MolView::Edge& edge : view_->Edges(from)) {
      const std::uint32_t to = edge.atom;
      if (!IsCandidate(edge) || need[to] == Need::Never) continue;
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

void Matching::ChooseFirst(const std::vector<std::uint32_t>& rank) {
  const auto isBefore = [&](std::uint32_t a, std::uint32_t b) { return rank[a] < rank[b]; };
  std::vector<std::uint32_t> order;
  for (std::uint32_t a = 0; a < view_->NumAtoms(); ++a) {
    if (need[a] != Need::Never) order.push_back(a);
  }
  std::ranges::sort(order, isBefore);
  std::vector<std::uint32_t> partners;
  for (const std::uint32_t a : order) {
    if (need[a] == Need::Never) continue;  // settled
    partners.clear();
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (IsCandidate(edge) && need[edge.atom] != Need::Never) partners.push_back(edge.atom);
    }
    std::ranges::sort(partners, isBefore);
    std::ranges::any_of(partners, [&](std::uint32_t b) { return Settle(a, b); });
    need[a] = Need::Never;
  }
}

// Matches the two permanently if their previous partners can be matched otherwise.
bool Matching::Settle(std::uint32_t a, std::uint32_t b) {
  const Need needOfA = need[a];
  const Need needOfB = need[b];
  need[a] = need[b] = Need::Never;
  if (mate[a] == b) return true;
  before_ = mate;
  const std::array<std::uint32_t, 2> left{mate[a], mate[b]};
  for (const std::uint32_t atom : left) {
    if (atom != none) mate[atom] = none;
  }
  mate[a] = b;
  mate[b] = a;
  const auto canDo = [&](std::uint32_t atom) {
    return atom == none || need[atom] != Need::Always || mate[atom] != none || Augment(atom);
  };
  if (std::ranges::all_of(left, canDo)) return true;
  mate = before_;
  need[a] = needOfA;
  need[b] = needOfB;
  return false;
}

/// Rings of six whose atoms contribute one electron each, as in benzene and pyridine. Their bonds
/// become aromatic in any assignment, so that the choice has no visible effect.
class Sextets {
 public:
  /// Whether each bond between free atoms is in one. Only rings tested by the aromaticity rule
  /// count: shortest rings of some bond.
  bool Cover(const MolView& view, const std::vector<char>& candidate, const Matching& matching);

 private:
  bool IsPlain(std::uint32_t atom) const;
  void Extend(std::uint32_t length);

  const MolView* view_ = nullptr;
  const std::vector<char>* candidate_ = nullptr;
  const Matching* matching_ = nullptr;
  std::vector<char> covered_;           // by bond
  std::array<std::uint32_t, 6> atoms_;  // of the current path
  std::array<std::uint32_t, 6> bonds_;
  std::vector<std::uint32_t> found_;  // bonds of rings
  std::vector<std::uint32_t> left_;   // bonds for other bonds' rings to cover
  bool isShorter_ = false;            // a shorter ring was found
};

bool Sextets::Cover(const MolView& view, const std::vector<char>& candidate,
                    const Matching& matching) {
  view_ = &view;
  candidate_ = &candidate;
  matching_ = &matching;
  covered_.assign(view.bonds.size(), 0);
  left_.clear();
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    if (!candidate[b] || covered_[b] || !matching.free[bond.bgn] || !matching.free[bond.end]) {
      continue;
    }
    atoms_[0] = bond.bgn;
    atoms_[1] = bond.end;
    bonds_[0] = b;
    found_.clear();
    isShorter_ = false;
    Extend(1);
    if (isShorter_ || found_.empty()) {
      left_.push_back(b);
      continue;
    }
    for (const std::uint32_t other : found_) covered_[other] = 1;
  }
  return std::ranges::all_of(left_, [&](std::uint32_t b) { return covered_[b] != 0; });
}

// False for a nitrogen that loses a valence with a dummy atom.
bool Sextets::IsPlain(std::uint32_t a) const {
  const MolView::Atom& atom = view_->atoms[a];
  if (matching_->need[a] != Need::Always) return false;
  const std::uint32_t sigma = atom.degree + atom.implicitH;
  if (atom.element == 6) return atom.charge == 0 && sigma == 3;
  if (atom.element != 7) return false;
  if (atom.charge == 0) return sigma == 2;
  return atom.charge == 1 && sigma == 3 &&
         std::ranges::none_of(view_->Edges(a), [&](const MolView::Edge& edge) {
           return view_->atoms[edge.atom].element == 0;
         });
}

// Extends the path, which has `length` bonds, from its last atom.
void Sextets::Extend(std::uint32_t length) {
  unsigned int ways = 0;
  for (const MolView::Edge& edge : view_->Edges(atoms_[length])) {
    const MolView::Bond& bond = view_->bonds[edge.bond];
    if (!bond.inRing || bond.order == 0 || edge.bond == bonds_[length - 1]) continue;
    if (++ways > 2) return;  // an atom of more ring bonds isn't in any aromatic ring
    const auto last = atoms_.begin() + length;
    if (std::find(atoms_.begin() + 1, last, edge.atom) != last) continue;
    bonds_[length] = edge.bond;
    if (edge.atom == atoms_[0]) {
      isShorter_ |= length < 5;
      if (length == 5 && std::ranges::all_of(atoms_, [&](auto a) { return IsPlain(a); }) &&
          std::ranges::all_of(bonds_, [&](auto b) { return (*candidate_)[b] != 0; })) {
        found_.insert(found_.end(), bonds_.begin(), bonds_.end());
      }
    } else if (length < 5) {
      atoms_[length + 1] = edge.atom;
      Extend(length + 1);
    }
  }
}

/// Ranks by atom index, independent of the order of atoms, of whether hydrogens are explicit and of
/// the candidates' orders.
std::vector<std::uint32_t> RankAtoms(const ZQMolBase& mol, const MolView& view,
                                     const std::vector<char>& candidate) {
  // No other bonds have these orders. The canonical order distinguishes those up to 31.
  constexpr unsigned int candidateOrder = 30;
  constexpr unsigned int noOrder = 31;
  ZQGraphMol copy(mol);
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    const unsigned int order = bond.aromatic ? 1 : bond.order;
    ZQBondBase& changed = *copy.GetBondAt(bond.bond->GetIdx());
    changed.SetAromatic(false);
    changed.SetOrder(candidate[b] ? candidateOrder : order == 0 ? noOrder : order);
  }
  const Workspace<MolView> workspace;
  CanonicalOrder order;
  std::vector<unsigned int> parts;
  std::vector<std::uint32_t> ranks;
  for (const bool withStereo : {true, false}) {
    for (unsigned int i = 0; !withStereo && i < copy.GetMaxAtomIdx(); ++i) {
      if (ZQAtomBase* atom = copy.GetAtomAt(i)) DropStereo(*atom);
    }
    ZQSuppressHydrogens(copy);
    const unsigned int numParts = ZQDetermineComponents(copy, parts);
    MolView& copied = workspace->Read(copy, MolView::Properties);
    copied.FindRings();
    if (!order.Find(copied, parts, numParts)) continue;  // not all of the stereo is real
    ranks.assign(mol.GetMaxAtomIdx(), 0);
    for (std::uint32_t a = 0; a < copied.NumAtoms(); ++a) {
      ranks[copied.atoms[a].atom->GetIdx()] = order.RankOf(a);
    }
    break;
  }
  return ranks;
}

}  // namespace

bool ZQKekulize(ZQMolBase& mol, unsigned int* culprit) {
  struct Scratch {
    Matching matching;
    Sextets sextets;
    std::vector<char> candidate;  // by bond
  };
  const Workspace<MolView> workspace;
  const Workspace<Scratch> scratch;
  auto& [matching, sextets, candidate] = *scratch;
  MolView& view = workspace->Read(mol, MolView::Properties);
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

  bool anyOptional = false;
  matching.SetGraph(view, candidate);
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
    anyOptional |= matching.need[a] == Need::Optional;
  }
  matching.Start();
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    if (matching.need[a] != Need::Always || matching.mate[a] != none) continue;
    if (!matching.Augment(a)) return fail(a);
  }
  if ((anyOptional || !sextets.Cover(view, candidate, matching)) &&
      view.NumAtoms() <= maxAtomsToOrder) {
    const std::vector<std::uint32_t> rankByIdx = RankAtoms(mol, view, candidate);
    std::vector<std::uint32_t> rank;
    for (const MolView::Atom& atom : view.atoms) rank.push_back(rankByIdx[atom.atom->GetIdx()]);
    matching.ChooseFirst(rank);
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
