#include "platform/quarnel/canonical/canonical_order_local.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "platform/quarnel/molecule/mix_local.h"

// Refinement and individualisation, after B. D. McKay (Congr. Numer. 30, 45-87, 1981): properties
// and numbers of neighbours split the atoms into cells until nothing more splits; then one atom of
// the first cell with several gets a cell of its own, and so on until all cells have one atom. The
// choice of the atom makes no difference if automorphisms map it onto all others of its cell, as
// they nearly always do in molecules; otherwise each orbit is tried and the least result used.
// Configurations are used once the neighbours of their atoms are in distinct cells. One that is
// undetermined in the complete order is real unless an automorphism inverts it and no other.

namespace Quarnel {

namespace {

constexpr std::uint32_t none = MolView::none;

/// The search's budget and the cost of its steps, in bonds. Of 38,000 molecules, 8,000 of them
/// selected as hard, the most costly one took 654 bonds per atom in all, and a search for an
/// automorphism 6,171 bonds. The rest is for graphs of thousands of equal atoms.
constexpr std::uint64_t budgetPerAtom = 10000;
constexpr std::uint64_t baseBudget = std::uint64_t{1} << 24;
constexpr std::uint64_t limitPerAtom = 1000;  // of one search for an automorphism
constexpr std::uint64_t baseLimit = 50000;
constexpr std::uint64_t costOfTrial = 8;  // per atom: copies the cells and refines
constexpr std::uint64_t costOfNode = 64;  // per atom: stores all tables of a partition

}  // namespace

bool CanonicalOrder::Find(const MolView& view, std::span<const unsigned int> parts,
                          unsigned int numParts) {
  view_ = &view;
  const std::uint32_t n = view.NumAtoms();
  node_.partition.BuildForSmiles(view, parts);
  SplitByLargeValues();
  FindCentres();
  if (!unreal_.empty()) return false;
  if (!node_.undetermined.empty()) SplitByStereo();
  search_.SetGraph(view, node_.partition, baseBudget + budgetPerAtom * n,
                   baseLimit + limitPerAtom * n);
  parent_.resize(n);
  numMoves_.resize(n);
  std::vector<std::uint32_t> sizes(numParts + 1, 0);
  for (const MolView::Atom& atom : view.atoms) ++sizes[parts[atom.atom->GetIdx()]];
  if (node_.undetermined.empty()) {
    OrderParts(sizes);
    return true;
  }
  FindUnrealAlone();
  if (!unreal_.empty()) return false;
  Node root = node_;
  OrderParts(sizes);
  FindUnreal(root);
  return unreal_.empty();
}

void CanonicalOrder::OrderParts(std::span<const std::uint32_t> sizes) {
  std::uint32_t begin = 0;
  for (const std::uint32_t size : sizes) {
    OrderPart(begin, begin + size);
    begin += size;
  }
}

// All centres are undetermined at first, except those that can't be real: of a kind that can't have
// a configuration, or with two equal ligands of one atom each.
void CanonicalOrder::FindCentres() {
  node_.undetermined.clear();
  unreal_.clear();
  for (std::uint32_t a = 0; a < view_->NumAtoms(); ++a) {
    if (view_->atoms[a].atom->GetStereo() == ZQAtomStereo::None) continue;
    const bool canBeReal = CanHold(*view_, a) && !HasLeafTwins(a);
    (canBeReal ? node_.undetermined : unreal_).push_back({a, none});
  }
  for (std::uint32_t b = 0; b < view_->NumBonds(); ++b) {
    const MolView::Bond& bond = view_->bonds[b];
    if (bond.bond->GetStereo() == ZQBondStereo::None) continue;
    const bool canBeReal =
        CanHold(*view_, bond) && !HasLeafTwins(bond.bgn) && !HasLeafTwins(bond.end);
    (canBeReal ? node_.undetermined : unreal_).push_back({none, b});
  }
}

bool CanonicalOrder::HasLeafTwins(std::uint32_t atom) const {
  return HasTwins(view_->Edges(atom), none, [this](std::uint32_t a, std::uint32_t b) {
    return view_->atoms[a].degree == 1 && RankOf(a) == RankOf(b);
  });
}

// Finds the centres inverted by an automorphism that fixes the atoms of all. What becomes of the
// others makes no difference to it, so that all can be cleared at once.
void CanonicalOrder::FindUnrealAlone() {
  const Node before = node_;
  for (const StereoCentre& centre : before.undetermined) SetApart(centre);
  search_.Spend(costOfTrial * view_->NumAtoms());
  std::ranges::copy_if(before.undetermined, std::back_inserter(unreal_),
                       [this](const StereoCentre& centre) { return CanTurn(centre); });
  node_ = before;
}

// Finds the first centre by rank, among those undetermined by the cells of the root, that isn't
// real: without it others may be.
void CanonicalOrder::FindUnreal(Node& root) {
  const auto rankOf = [this](const StereoCentre& centre) {
    if (!centre.IsBond()) return std::pair(RankOf(centre.atom), 0U);
    const MolView::Bond& bond = view_->bonds[centre.bond];
    return std::pair(std::min(RankOf(bond.bgn), RankOf(bond.end)), 1U);
  };
  std::vector<StereoCentre> centres = root.undetermined;
  std::ranges::sort(centres, {}, rankOf);
  const Node ordered = std::exchange(node_, std::move(root));
  for (const StereoCentre& centre : centres) {
    if (IsReal(centre)) continue;
    unreal_.push_back(centre);
    return;
  }
  node_ = ordered;
}

// Splits by atom classes, and by numbers beyond the limits of the first keys.
void CanonicalOrder::SplitByLargeValues() {
  using Property = std::uint32_t (*)(const MolView::Atom& atom);
  constexpr std::array<Property, 4> properties{
      [](const MolView::Atom& atom) { return std::uint32_t{atom.atom->GetMapIdx()}; },
      [](const MolView::Atom& atom) { return atom.isotope; },
      [](const MolView::Atom& atom) { return static_cast<std::uint32_t>(atom.charge); },
      [](const MolView::Atom& atom) { return atom.implicitH; }};
  constexpr int limit = 31;  // the first key has 5 bits for hydrogens and 10 for an isotope
  const auto isLarge = [](const MolView::Atom& atom) {
    return atom.atom->GetMapIdx() != 0 || atom.isotope >= 1023 || atom.charge > limit ||
           atom.charge < -limit || atom.implicitH >= limit;
  };
  if (std::ranges::none_of(view_->atoms, isLarge)) return;
  std::vector<std::uint32_t> values(view_->NumAtoms());
  for (const Property property : properties) {
    std::ranges::transform(view_->atoms, values.begin(), property);
    node_.partition.Split(*view_, values);
  }
}

// Splits first by whether there is a configuration.
void CanonicalOrder::SplitByStereo() {
  for (const bool bonds : {false, true}) {
    labels_.clear();
    for (const StereoCentre& centre : node_.undetermined) {
      if (centre.IsBond() == bonds) Label(centre, Undetermined);
    }
    node_.partition.Split(*view_, labels_);
  }
  SplitByDetermined();
}

void CanonicalOrder::Label(const StereoCentre& centre, Configuration configuration) {
  if (!centre.IsBond()) {
    labels_.push_back({configuration, centre.atom});
    return;
  }
  const MolView::Bond& bond = view_->bonds[centre.bond];
  labels_.insert(labels_.end(), {{configuration, bond.bgn}, {configuration, bond.end}});
}

// Splits by the configurations newly determined by cells, until there are no more.
void CanonicalOrder::SplitByDetermined() {
  while (SplitByDetermined(false) || SplitByDetermined(true)) {
  }
}

bool CanonicalOrder::SplitByDetermined(bool bonds) {
  labels_.clear();
  std::erase_if(node_.undetermined, [&](const StereoCentre& centre) {
    if (centre.IsBond() != bonds) return false;
    const Configuration configuration =
        bonds ? ConfigurationOf(*view_, node_.partition, view_->bonds[centre.bond])
              : ConfigurationOf(*view_, node_.partition, centre.atom);
    if (configuration == Undetermined) return false;
    Label(centre, configuration);
    return true;
  });
  if (labels_.empty()) return false;
  node_.partition.Split(*view_, labels_);
  return true;
}

// False if an automorphism fixes the centre and inverts only this configuration: then both
// configurations are the same molecule.
bool CanonicalOrder::IsReal(const StereoCentre& centre) {
  const Node before = node_;
  std::erase_if(node_.undetermined, [&](const StereoCentre& other) {
    return other.atom == centre.atom && other.bond == centre.bond;
  });
  SetApart(centre);
  SplitByDetermined();
  const bool canTurn = CanTurn(centre);
  node_ = before;
  search_.Spend(costOfTrial * view_->NumAtoms());
  return !canTurn;
}

// Whether an automorphism inverts this configuration and no other. The centre has been set apart.
bool CanonicalOrder::CanTurn(const StereoCentre& centre) {
  if (search_.BudgetLeft() == 0) return false;
  search_.Spend(view_->NumAtoms());
  search_.Watch(node_.undetermined, &centre);
  if (!centre.IsBond()) return CanTurn(centre.atom, none);
  const MolView::Bond& bond = view_->bonds[centre.bond];
  return CanTurn(bond.bgn, bond.end) || CanTurn(bond.end, bond.bgn);
}

bool CanonicalOrder::CanTurn(std::uint32_t around, std::uint32_t except) {
  return HasTwins(view_->Edges(around), except, [this](std::uint32_t a, std::uint32_t b) {
    return RankOf(a) == RankOf(b) && search_.Find(a, b);
  });
}

void CanonicalOrder::SetApart(const StereoCentre& centre) {
  if (!centre.IsBond()) {
    node_.partition.SetApart(*view_, centre.atom);
    return;
  }
  const MolView::Bond& bond = view_->bonds[centre.bond];
  node_.partition.SetApart(*view_, bond.bgn);
  node_.partition.SetApart(*view_, bond.end);
}

void CanonicalOrder::SetApart(std::uint32_t atom) {
  node_.partition.SetApart(*view_, atom);
  SplitByDetermined();
}

void CanonicalOrder::OrderPart(std::uint32_t begin, std::uint32_t end) {
  known_.clear();
  GoDown(begin, end);
  if (waiting_.empty()) return;
  std::vector<std::uint64_t> least = Certificate(begin, end);
  Node best = node_;
  while (!waiting_.empty()) {
    node_ = std::move(waiting_.back());
    waiting_.pop_back();
    known_.clear();
    GoDown(begin, end);
    std::vector<std::uint64_t> certificate = Certificate(begin, end);
    if (certificate >= least) continue;
    least = std::move(certificate);
    best = node_;
  }
  node_ = std::move(best);
}

// Individualises atoms until all cells of the component have one atom.
void CanonicalOrder::GoDown(std::uint32_t begin, std::uint32_t end) {
  for (std::uint32_t cell = begin; cell < end;) {
    if (node_.partition.Cell(cell).size() == 1) {
      ++cell;
    } else if (IsOneOrbit(cell)) {
      const std::uint32_t atom = LeastMoved(cell);
      SetApart(atom);
      std::erase_if(known_, [atom](const Automorphism& automorphism) {
        return std::ranges::any_of(automorphism, [atom](const auto& move) {
          return move.from == atom || move.to == atom;
        });
      });
    } else {
      Branch(cell, begin, end);
    }
  }
}

// Also true when the budget is spent.
bool CanonicalOrder::IsOneOrbit(std::uint32_t cell) {
  const std::span<const std::uint32_t> members = node_.partition.Cell(cell);
  for (const std::uint32_t a : members) parent_[a] = a;
  for (const Automorphism& automorphism : known_) JoinMoved(automorphism, cell);
  search_.Watch(node_.undetermined);
  return std::ranges::all_of(members, [&](std::uint32_t a) {
    return IsMapped(members.front(), a, cell) || search_.BudgetLeft() == 0;
  });
}

bool CanonicalOrder::IsMapped(std::uint32_t from, std::uint32_t to, std::uint32_t cell) {
  if (OrbitOf(from) == OrbitOf(to)) return true;
  if (!search_.Find(from, to)) return false;
  Keep(search_.Moves());
  JoinMoved(known_.back(), cell);
  return true;
}

// Continues with one atom of the cell; one of each other orbit that may come first is queued.
void CanonicalOrder::Branch(std::uint32_t cell, std::uint32_t begin, std::uint32_t end) {
  const Node before = node_;
  const std::span<const std::uint32_t> members = before.partition.Cell(cell);
  std::vector<std::uint32_t> candidates;
  std::uint64_t least = 0;
  for (const std::uint32_t a : members) {
    if (a != OrbitOf(a)) continue;
    if (search_.BudgetLeft() == 0 && !candidates.empty()) break;
    search_.Spend(costOfTrial * view_->NumAtoms());
    node_ = before;
    SetApart(a);
    const std::uint64_t hash = Hash(begin, end);
    if (candidates.empty() || hash < least) {
      candidates.assign(1, a);
      least = hash;
    } else if (hash == least) {
      candidates.push_back(a);
    }
  }
  node_ = before;
  std::vector<std::uint32_t> firsts;
  for (const std::uint32_t a : candidates) {
    if (search_.BudgetLeft() == 0 && !firsts.empty()) break;
    if (std::ranges::none_of(firsts, [&](std::uint32_t f) { return IsMapped(f, a, cell); })) {
      if (!firsts.empty()) search_.Spend(costOfNode * view_->NumAtoms());
      firsts.push_back(a);
    }
  }
  known_.clear();
  for (const std::uint32_t a : firsts) {
    node_ = before;
    SetApart(a);
    if (a != firsts.back()) waiting_.push_back(node_);
  }
}

void CanonicalOrder::Keep(std::span<const AutomorphismSearch::Move> moves) {
  Automorphism& automorphism = known_.emplace_back();
  for (const auto& move : moves) {
    if (move.from != move.to) automorphism.push_back(move);
  }
}

void CanonicalOrder::JoinMoved(const Automorphism& automorphism, std::uint32_t cell) {
  for (const auto& [from, to] : automorphism) {
    if (RankOf(from) == cell) parent_[OrbitOf(from)] = OrbitOf(to);
  }
}

// The atom fixed by most of the known automorphisms.
std::uint32_t CanonicalOrder::LeastMoved(std::uint32_t cell) {
  const std::span<const std::uint32_t> members = node_.partition.Cell(cell);
  for (const std::uint32_t a : members) numMoves_[a] = 0;
  for (const Automorphism& automorphism : known_) {
    for (const auto& move : automorphism) ++numMoves_[move.from];
  }
  return *std::ranges::min_element(members, {}, [this](std::uint32_t a) { return numMoves_[a]; });
}

// The colour of a bond and its configuration in the order of the cells.
std::uint64_t CanonicalOrder::ColourWithStereo(std::uint32_t bond) const {
  return std::uint64_t{node_.partition.ColourOf(bond)} << 2 |
         ConfigurationOf(*view_, node_.partition, view_->bonds[bond]);
}

// In an equitable partition one atom represents its whole cell.
std::uint64_t CanonicalOrder::Hash(std::uint32_t begin, std::uint32_t end) const {
  const Partition& partition = node_.partition;
  std::uint64_t hash = 0;
  for (std::uint32_t cell = begin; cell < end;) {
    const std::uint32_t first = partition.Cell(cell).front();
    std::uint64_t sum =
        std::uint64_t{cell - begin} << 2 | ConfigurationOf(*view_, partition, first);
    for (const MolView::Edge& edge : view_->Edges(first)) {
      sum += Mix(std::uint64_t{RankOf(edge.atom) - begin} << 32 | ColourWithStereo(edge.bond));
    }
    hash = Mix(hash ^ Mix(sum));
    cell += static_cast<std::uint32_t>(partition.Cell(cell).size());
  }
  return hash;
}

// Lists for each atom its configuration, and its bonds to preceding atoms with theirs.
std::vector<std::uint64_t> CanonicalOrder::Certificate(std::uint32_t begin,
                                                       std::uint32_t end) const {
  const Partition& partition = node_.partition;
  std::vector<std::uint64_t> certificate;
  for (const std::uint32_t a : partition.Atoms().subspan(begin, end - begin)) {
    certificate.push_back(ConfigurationOf(*view_, partition, a));
    const auto firstBond = static_cast<std::ptrdiff_t>(certificate.size());
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (RankOf(edge.atom) > RankOf(a)) continue;
      certificate.push_back(std::uint64_t{RankOf(edge.atom) + 1} << 32 |
                            ColourWithStereo(edge.bond));
    }
    std::sort(certificate.begin() + firstBond, certificate.end());
  }
  return certificate;
}

}  // namespace Quarnel
