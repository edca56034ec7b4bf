#include "platform/quarnel/canonical/automorphism_local.h"

#include <algorithm>
#include <array>

#include "platform/quarnel/perception/stereo_local.h"

// Backtracking over images of atoms. Most automorphisms of a sparse graph move few atoms (P. T.
// Darga, K. A. Sakallah and I. L. Markov, DAC 2008, 149-154), so that a search only assigns images
// forced by the first pair: those of neighbours of a moved atom, and of atoms that are another's
// image. All others are fixed. Cells are equitable, hence a partial mapping that preserves cells
// and bonds seldom fails late. A configuration is checked once all its neighbours have images;
// those still broken at the end force further atoms to move.

namespace Quarnel {

namespace {

constexpr std::uint32_t none = MolView::none;

}  // namespace

void AutomorphismSearch::SetGraph(const MolView& view, const Partition& partition,
                                  std::uint64_t budget, std::uint64_t limit) {
  view_ = &view;
  partition_ = &partition;
  budget_ = budget;
  limit_ = limit;
  image_.assign(view.NumAtoms(), none);
  source_.assign(view.NumAtoms(), none);
  watched_.clear();
}

void AutomorphismSearch::Watch(std::span<const StereoCentre> centres, const StereoCentre* turned) {
  watched_.clear();
  if (centres.empty() && !turned) return;
  watched_.resize(view_->NumAtoms());
  const auto watch = [this](const StereoCentre& centre, bool isTurned) {
    if (!centre.IsBond()) {
      watched_[centre.atom].centre = true;
      watched_[centre.atom].turned = isTurned;
      return;
    }
    const MolView::Bond& bond = view_->bonds[centre.bond];
    for (const std::uint32_t end : {bond.bgn, bond.end}) {
      watched_[end].bond = centre.bond;
      watched_[end].turned = isTurned;
    }
  };
  for (const StereoCentre& centre : centres) watch(centre, false);
  if (turned) watch(*turned, true);
}

bool AutomorphismSearch::Find(std::uint32_t from, std::uint32_t to) {
  if (budget_ == 0) return false;
  const std::uint64_t reserve = budget_ - std::min(budget_, limit_);
  budget_ -= reserve;
  queue_.clear();
  head_ = 0;
  choices_.clear();
  Assign(from, to);
  const bool found = Complete();
  if (found) {
    moves_.clear();
    for (const std::uint32_t a : trail_) moves_.push_back({a, image_[a]});
  }
  UndoTo(0);
  budget_ += reserve;
  return found;
}

// Once the queue is empty, atoms that are an image but have none form another component, which is
// mapped onto the first one. All others are fixed, unless a configuration needs more moves: two
// other neighbours may have to be exchanged, too.
bool AutomorphismSearch::Complete() {
  while (true) {
    while (head_ < queue_.size()) {
      const std::uint32_t a = queue_[head_++];
      if (image_[a] == none && !Place(a, 0) && !Backtrack()) return false;
    }
    const std::uint32_t broken = watched_.empty() ? none : FindBroken();
    if (broken == none) return true;
    if (!QueueAround(broken) && !Backtrack()) return false;
  }
}

// Returns an atom whose configuration isn't preserved if all atoms without an image are fixed.
std::uint32_t AutomorphismSearch::FindBroken() {
  Spend(trail_.size());
  for (const std::uint32_t a : trail_) {
    if (!Keeps(a, true)) return a;
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (!Keeps(edge.atom, true)) return edge.atom;
    }
  }
  return none;
}

// Queues the atoms without an image that the configuration depends on; false if all have one.
bool AutomorphismSearch::QueueAround(std::uint32_t atom) {
  const std::size_t before = queue_.size();
  const auto queue = [this](std::uint32_t a) {
    if (image_[a] == none) {
      queue_.push_back(a);
      return;
    }
    for (const MolView::Edge& edge : view_->Edges(a)) {
      if (image_[edge.atom] == none) queue_.push_back(edge.atom);
    }
  };
  queue(atom);
  const std::uint32_t bond = watched_[atom].bond;
  if (bond != none && image_[atom] != none) queue(view_->bonds[bond].Other(atom));
  return queue_.size() != before;
}

// Maps the atom onto its target of this number; records a choice if there are more targets.
bool AutomorphismSearch::Place(std::uint32_t atom, std::size_t choice) {
  ListTargets(atom);
  if (choice >= targets_.size()) return false;
  if (choice + 1 < targets_.size()) {
    choices_.push_back({atom, choice + 1, trail_.size(), queue_.size(), head_});
  }
  Assign(atom, targets_[choice]);
  if (watched_.empty()) return true;
  const auto isKept = [this](const MolView::Edge& edge) { return Keeps(edge.atom, false); };
  return Keeps(atom, false) && std::ranges::all_of(view_->Edges(atom), isKept);
}

bool AutomorphismSearch::Backtrack() {
  while (!choices_.empty() && budget_ != 0) {
    const Choice choice = choices_.back();
    choices_.pop_back();
    UndoTo(choice.trail);
    queue_.resize(choice.queue);
    head_ = choice.head;
    if (Place(choice.atom, choice.nextTarget)) return true;
  }
  return false;
}

void AutomorphismSearch::Assign(std::uint32_t from, std::uint32_t to) {
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

void AutomorphismSearch::UndoTo(std::size_t trail) {
  while (trail_.size() > trail) {
    const std::uint32_t from = trail_.back();
    trail_.pop_back();
    source_[image_[from]] = none;
    image_[from] = none;
  }
}

// Lists the possible images of the atom: neighbours of a neighbour's image. The atom itself comes
// first, then the atom mapped onto it.
void AutomorphismSearch::ListTargets(std::uint32_t atom) {
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

bool AutomorphismSearch::Fits(std::uint32_t atom, std::uint32_t target) {
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

// Configurations with missing images pass, except in the `last` check, where atoms without an image
// are fixed.
bool AutomorphismSearch::Keeps(std::uint32_t atom, bool last) const {
  const Watched& watched = watched_[atom];
  return (!watched.centre || KeepsCentre(atom, last)) &&
         (watched.bond == none || KeepsBond(atom, last));
}

bool AutomorphismSearch::KeepsCentre(std::uint32_t atom, bool last) const {
  const std::uint32_t image = ImageOf(atom, last);
  if (image == none) return true;
  const std::span<const MolView::Edge> own = view_->Edges(atom);
  const std::span<const MolView::Edge> others = view_->Edges(image);
  std::array<std::uint32_t, 4> places{};
  for (std::size_t i = 0; i < own.size(); ++i) {
    const std::uint32_t moved = ImageOf(own[i].atom, last);
    if (moved == none) return true;
    places[i] = static_cast<std::uint32_t>(std::ranges::find(others, moved, &MolView::Edge::atom) -
                                           others.begin());
  }
  const ZQAtomStereo carried =
      Turned(view_->atoms[atom].atom->GetStereo(), IsOdd({places.data(), own.size()}));
  return (carried != view_->atoms[image].atom->GetStereo()) == watched_[atom].turned;
}

bool AutomorphismSearch::KeepsBond(std::uint32_t atom, bool last) const {
  const MolView::Bond& bond = view_->bonds[watched_[atom].bond];
  const auto referenceOf = [this](std::uint32_t end, std::uint32_t other) {
    return ReferenceOf(view_->Edges(end).data(), other);
  };
  const std::uint32_t bgn = ImageOf(bond.bgn, last);
  const std::uint32_t end = ImageOf(bond.end, last);
  if (bgn == none || end == none) return true;
  const MolView::Bond& moved = view_->bonds[watched_[bgn].bond];
  bool odd = bond.bond->GetStereo() != moved.bond->GetStereo();
  for (const std::uint32_t side : {bond.bgn, bond.end}) {
    const std::uint32_t reference = ImageOf(referenceOf(side, bond.Other(side)), last);
    if (reference == none) return true;
    odd ^= reference !=
           referenceOf(image_[side] == none ? side : image_[side], ImageOf(bond.Other(side), last));
  }
  return odd == watched_[atom].turned;
}

}  // namespace Quarnel
