#include <algorithm>
#include <array>
#include <numeric>
#include <vector>

#include "contract/quarnel/perception.h"
#include "platform/quarnel/chirality_local.h"
#include "platform/quarnel/hybridization_local.h"
#include "platform/quarnel/molgraph_view_local.h"
#include "platform/quarnel/partition_local.h"

namespace Quarnel {
namespace {

constexpr std::uint32_t none = MolView::none;

/// Edges that the search for automorphisms may look at, per atom and besides.
constexpr std::uint64_t budgetPerAtom = 1000;
constexpr std::uint64_t baseBudget = 50000;

/// Joins atoms of one cell into orbits, each join by an automorphism that was found.
///
/// A search starts from one atom mapped onto another and follows what this forces: the neighbours
/// of an atom that moved, and atoms whose place was taken. Where there is a choice an atom rather
/// stays, or changes places with the one that took its place, so that the search reaches no
/// further than it must: a flipped phenyl ring costs its own atoms, in a molecule of any size.
class Orbits {
 public:
  void Find(const MolView& view, const Partition& partition);
  std::uint32_t OrbitOf(std::uint32_t atom) {
    while (parent_[atom] != atom) atom = parent_[atom] = parent_[parent_[atom]];
    return atom;
  }

 private:
  /// An atom that had several targets, and the state before it took one.
  struct Choice {
    std::uint32_t atom;
    std::size_t nextTarget;
    std::size_t trail;
    std::size_t queue;
    std::size_t head;
  };

  bool FindMapping(std::uint32_t from, std::uint32_t to);
  bool Place(std::uint32_t atom, std::size_t choice);
  bool Backtrack();
  void Assign(std::uint32_t from, std::uint32_t to);
  void UndoTo(std::size_t trail);
  void ListTargets(std::uint32_t atom);
  bool Fits(std::uint32_t atom, std::uint32_t target);
  void Join(std::uint32_t a, std::uint32_t b) { parent_[OrbitOf(a)] = OrbitOf(b); }
  void Spend(std::uint64_t edges) { budget_ -= std::min(budget_, edges); }

  const MolView* view_ = nullptr;
  const Partition* partition_ = nullptr;
  std::vector<std::uint32_t> parent_;  // of the orbits' trees
  std::vector<std::uint32_t> representatives_;
  std::uint64_t budget_ = 0;
  // Of one search. An atom that is neither an image nor has one stays in its place.
  std::vector<std::uint32_t> image_;
  std::vector<std::uint32_t> source_;
  std::vector<std::uint32_t> trail_;  // atoms with an image, in the order of getting it
  std::vector<std::uint32_t> queue_;  // atoms that need an image and have a neighbour with one
  std::size_t head_ = 0;
  std::vector<Choice> choices_;
  std::vector<std::uint32_t> targets_;
};

void Orbits::Find(const MolView& view, const Partition& partition) {
  view_ = &view;
  partition_ = &partition;
  const std::uint32_t n = view.NumAtoms();
  parent_.resize(n);
  std::iota(parent_.begin(), parent_.end(), 0);
  image_.assign(n, none);
  source_.assign(n, none);
  budget_ = baseBudget + budgetPerAtom * n;
  const auto numAtoms = static_cast<std::uint32_t>(partition.Atoms().size());
  for (std::uint32_t cell = 0; cell < numAtoms;) {
    const std::span<const std::uint32_t> members = partition.Cell(cell);
    cell += static_cast<std::uint32_t>(members.size());
    representatives_.assign(1, members.front());
    for (const std::uint32_t a : members.subspan(1)) {
      Spend(representatives_.size());
      if (budget_ == 0) return;
      const auto isJoined = [&](std::uint32_t r) { return OrbitOf(r) == OrbitOf(a); };
      const auto isMapped = [&](std::uint32_t r) { return FindMapping(r, a); };
      if (std::ranges::any_of(representatives_, isJoined)) continue;
      if (std::ranges::any_of(representatives_, isMapped)) continue;
      representatives_.push_back(a);
    }
  }
}

// Searches an automorphism with this one mapping, and joins what it moves. Once no atom waits,
// atoms that lost their place make up another component, which takes the first one's place.
bool Orbits::FindMapping(std::uint32_t from, std::uint32_t to) {
  if (budget_ == 0) return false;
  queue_.clear();
  head_ = 0;
  choices_.clear();
  Assign(from, to);
  bool found = true;
  while (found && head_ < queue_.size()) {
    const std::uint32_t a = queue_[head_++];
    if (image_[a] == none) found = Place(a, 0) || Backtrack();
  }
  if (found) {
    for (const std::uint32_t a : trail_) Join(a, image_[a]);
  }
  UndoTo(0);
  return found;
}

// Gives the atom the target of this number, remembering if there are more.
bool Orbits::Place(std::uint32_t atom, std::size_t choice) {
  ListTargets(atom);
  if (choice >= targets_.size()) return false;
  if (choice + 1 < targets_.size()) {
    choices_.push_back({atom, choice + 1, trail_.size(), queue_.size(), head_});
  }
  Assign(atom, targets_[choice]);
  return true;
}

bool Orbits::Backtrack() {
  if (choices_.empty() || budget_ == 0) return false;
  const Choice choice = choices_.back();
  choices_.pop_back();
  UndoTo(choice.trail);
  queue_.resize(choice.queue);
  head_ = choice.head;
  return Place(choice.atom, choice.nextTarget);
}

void Orbits::Assign(std::uint32_t from, std::uint32_t to) {
  image_[from] = to;
  source_[to] = from;
  trail_.push_back(from);
  const bool moves = from != to;
  Spend(view_->atoms[from].degree);
  for (const MolView::Edge& edge : view_->Edges(from)) {
    if (partition_->IsFolded(edge.atom) || image_[edge.atom] != none) continue;
    if (moves || source_[edge.atom] != none) queue_.push_back(edge.atom);
  }
  if (!moves || image_[to] != none) return;
  const auto hasImage = [this](const MolView::Edge& edge) { return image_[edge.atom] != none; };
  if (std::ranges::any_of(view_->Edges(to), hasImage)) queue_.push_back(to);
}

void Orbits::UndoTo(std::size_t trail) {
  while (trail_.size() > trail) {
    const std::uint32_t from = trail_.back();
    trail_.pop_back();
    source_[image_[from]] = none;
    image_[from] = none;
  }
}

// Where the atom could go: next to the image of a neighbour. Its own place first, then that of
// the atom which took it.
void Orbits::ListTargets(std::uint32_t atom) {
  targets_.clear();
  const auto hasImage = [this](const MolView::Edge& edge) { return image_[edge.atom] != none; };
  const auto anchor = std::ranges::find_if(view_->Edges(atom), hasImage);
  for (const MolView::Edge& edge : view_->Edges(image_[anchor->atom])) {
    if (Fits(atom, edge.atom)) targets_.push_back(edge.atom);
  }
  for (const std::uint32_t preferred : {source_[atom], atom}) {
    const auto found = std::ranges::find(targets_, preferred);
    if (found != targets_.end()) std::rotate(targets_.begin(), found, found + 1);
  }
}

bool Orbits::Fits(std::uint32_t atom, std::uint32_t target) {
  if (source_[target] != none || partition_->CellOf(target) != partition_->CellOf(atom)) {
    return false;
  }
  const std::span<const MolView::Edge> ofTarget = view_->Edges(target);
  std::ptrdiff_t mapped = 0;
  for (const MolView::Edge& edge : view_->Edges(atom)) {
    const std::uint32_t image = image_[edge.atom];
    if (image == none) continue;
    ++mapped;
    Spend(ofTarget.size());
    const auto matches = [&](const MolView::Edge& other) {
      return other.atom == image &&
             partition_->ColourOf(other.bond) == partition_->ColourOf(edge.bond);
    };
    if (std::ranges::none_of(ofTarget, matches)) return false;
  }
  const auto isImage = [this](const MolView::Edge& edge) { return source_[edge.atom] != none; };
  return std::ranges::count_if(ofTarget, isImage) == mapped;
}

/// Hydrogens that are atoms of their own, on each atom: walks tell them from implicit ones.
void SplitByExplicitHydrogens(const MolView& view, Partition& partition) {
  if (partition.Atoms().size() == view.atoms.size()) return;
  std::vector<std::uint32_t> explicitH(view.atoms.size(), 0);
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    explicitH[a] = view.atoms[a].degree - partition.Degree(a);
  }
  partition.Split(view, explicitH);
}

/// How a configuration reads when neighbours are taken in the order of their cells.
enum Configuration : std::uint8_t { NoStereo, Even, Odd, Untold };

Configuration ConfigurationOf(const MolView& view, const Partition& partition, std::uint32_t a) {
  const ZQAtomStereo stereo = view.atoms[a].atom->GetStereo();
  if (stereo == ZQAtomStereo::None) return NoStereo;
  // A hydrogen or lone pair counts as the cell none; where implicit it comes first.
  std::array<std::uint32_t, 4> cells{};
  std::size_t count = 0;
  if (view.atoms[a].degree < 4) cells[count++] = none;
  for (const MolView::Edge& edge : view.Edges(a)) {
    if (count == 4) return Untold;
    cells[count++] = partition.CellOf(edge.atom);
  }
  bool odd = stereo == ZQAtomStereo::Clockwise;
  for (std::size_t i = 0; i < count; ++i) {
    for (std::size_t j = i + 1; j < count; ++j) {
      if (cells[i] == cells[j]) return Untold;
      odd ^= cells[i] > cells[j];
    }
  }
  return odd ? Odd : Even;
}

Configuration ConfigurationOf(const MolView& view, const Partition& partition,
                              const MolView::Bond& bond) {
  const ZQBondStereo stereo = bond.bond->GetStereo();
  if (stereo == ZQBondStereo::None) return NoStereo;
  bool odd = stereo == ZQBondStereo::Trans;
  for (const std::uint32_t end : {bond.bgn, bond.end}) {
    std::uint32_t first = none;  // the cell of the reference atom, once it is known
    bool known = false;
    for (const MolView::Edge& edge : view.Edges(end)) {
      if (edge.atom == bond.Other(end)) continue;
      const std::uint32_t cell = partition.CellOf(edge.atom);
      if (known && cell == first) return Untold;
      if (known) odd ^= first > cell;
      if (!known) first = cell;
      known = true;
    }
  }
  return odd ? Odd : Even;
}

/// Tells atoms apart by the configurations around them, again and again, since this makes further
/// neighbours distinct. What stays untold, as in 1,4-dimethylcyclohexane, sets its atom apart.
void SplitByStereo(const MolView& view, Partition& partition) {
  std::vector<std::uint32_t> property(view.atoms.size(), 0);
  std::vector<std::uint8_t> kinds(view.bonds.size(), 0);
  std::uint32_t numCells = 0;
  while (partition.NumCells() != numCells) {
    numCells = partition.NumCells();
    for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
      if (!partition.IsFolded(a)) property[a] = ConfigurationOf(view, partition, a);
    }
    for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
      kinds[b] = ConfigurationOf(view, partition, view.bonds[b]);
    }
    partition.Split(view, property);
    partition.SplitBonds(view, kinds);
  }
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    property[a] = property[a] == Untold ? a + 1 : 0;
  }
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    if (kinds[b] == Untold) property[view.bonds[b].bgn] = view.bonds[b].bgn + 1;
  }
  partition.Split(view, property);
}

}  // namespace

void ZQPerceiveSymmetry(ZQMolBase& mol, bool automorphisms, bool stereo) {
  struct Scratch {
    Partition partition;
    Chirality chirality;
    Orbits orbits;
    std::vector<std::uint8_t> hyb;
    std::vector<std::uint32_t> classes;
  };
  thread_local Scratch scratch;
  auto& [partition, chirality, orbits, hyb, classes] = scratch;  // looked up once
  const MolView& view = MolView::Read(mol, MolView::Properties);
  const std::uint32_t n = view.NumAtoms();
  FindHybridization(view, hyb);
  partition.Build(view);
  chirality.Find(view, partition);
  SplitByExplicitHydrogens(view, partition);
  if (stereo) SplitByStereo(view, partition);
  if (automorphisms) orbits.Find(view, partition);

  // Folded hydrogens have the classes of their parents, moved by n.
  classes.assign(std::size_t{2} * n, 0);
  unsigned int numClasses = 0;
  for (std::uint32_t a = 0; a < n; ++a) {
    const bool folded = partition.IsFolded(a);
    const std::uint32_t told = folded ? view.edges[view.atoms[a].firstEdge].atom : a;
    const std::uint32_t group = automorphisms ? orbits.OrbitOf(told) : partition.CellOf(told);
    unsigned int& symmetryClass = classes[group + (folded ? n : 0)];
    if (symmetryClass == 0) symmetryClass = ++numClasses;
    ZQAtomBase& atom = *view.atoms[a].atom;
    atom.SetSymmetryClass(symmetryClass);
    atom.SetHyb(hyb[a]);
    atom.SetChiral(chirality.atoms[a] != 0);
  }
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    view.bonds[b].bond->SetChiral(chirality.bonds[b] != 0);
  }
  mol.SetPerceived(ZQPerceived::Hybridization, true);
  mol.SetPerceived(ZQPerceived::Chirality, true);
  mol.SetPerceived(ZQPerceived::Symmetry, true);
}

}  // namespace Quarnel
