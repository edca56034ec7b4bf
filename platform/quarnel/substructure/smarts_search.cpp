#include <algorithm>
#include <array>
#include <bit>

#include "platform/quarnel/perception/stereo_local.h"
#include "platform/quarnel/substructure/subsearch_local.h"

// Backtracking over sets of candidates, as in J. R. Ullmann (J. ACM 23, 31-42, 1976): the atoms
// that satisfy each expression are found first, so that a pattern fails at once if a set is too
// small, and the search begins with the atom that has the fewest candidates. The order of all
// others is part of the pattern: each is bonded to one mapped before. With up to 64 atoms in the
// molecule a set is one word, and the candidates of an atom are the intersection of its set with
// the neighbours of the images of its bonded atoms; in larger molecules they come from the bonds of
// one of those. Configurations are compared once all atoms are mapped.

namespace Quarnel {

namespace {

constexpr std::uint32_t none = SmartsPattern::none;

bool Has(const std::uint64_t* set, std::uint32_t atom) {
  return (set[atom / 64] >> (atom % 64) & 1) != 0;
}

}  // namespace

bool SmartsSearch::Start(const SmartsPattern& pattern, SmartsTarget& target) {
  pattern_ = &pattern;
  target_ = &target;
  isSmall_ = target.NumAtoms() <= 64;
  if (pattern.atoms.size() > target.NumAtoms()) return false;
  sets_.clear();
  for (const SmartsPattern::Domain& domain : pattern.domains) {
    sets_.push_back(target.Find(*domain.expression, domain.serial));
    if (sets_.back().count < domain.numAtoms) return false;
  }
  for (const SmartsPattern::Centre& centre : pattern.centres) {
    for (const auto& expression : centre.byTurn) sets_.push_back(target.Find(*expression));
  }
  components_ = pattern.hasGroups ? target.Components().data() : nullptr;
  images_.resize(pattern.atoms.size());
  used_.assign((target.NumAtoms() + 63) / 64, 0);
  levels_.clear();
  ties_.clear();
  if (pattern.parts.size() == 1) {
    AddLevels(pattern.parts[0]);
  } else {
    // Each part is tried alone first: one without a match would otherwise fail only after all
    // placements of the others.
    order_.clear();
    for (std::uint32_t i = 0; i < pattern.parts.size(); ++i) {
      order_.push_back(i);
      if (pattern.parts[i].numAtoms == 1) continue;
      levels_.clear();
      ties_.clear();
      AddLevels(pattern.parts[i]);
      Restart();
      if (!Advance()) return false;
      while (depth_ != 0) StepBack();
    }
    levels_.clear();
    ties_.clear();
    std::stable_sort(order_.begin() + (pattern.fromFirstAtom ? 1 : 0), order_.end(),
                     [&](std::uint32_t a, std::uint32_t b) {
                       const auto count = [&](std::uint32_t part) {
                         return sets_[pattern.steps[BestWay(pattern.parts[part])].domain].count;
                       };
                       return count(a) < count(b);
                     });
    for (const std::uint32_t i : order_) AddLevels(pattern.parts[i]);
  }
  Restart();
  return true;
}

void SmartsSearch::Restart() {
  depth_ = 0;
  isSmall_ ? Enter<true>(levels_[0]) : Enter<false>(levels_[0]);
}

// The sequence that begins with the rarest atom, as the index of its first step.
std::uint32_t SmartsSearch::BestWay(const SmartsPattern::Part& part) const {
  const auto countAt = [&](std::uint32_t way) { return sets_[pattern_->steps[way].domain].count; };
  std::uint32_t best = part.firstWay;
  for (std::uint32_t i = 1; i < part.numWays; ++i) {
    const std::uint32_t way = part.firstWay + i * part.numAtoms;
    if (countAt(way) < countAt(best)) best = way;
  }
  return best;
}

void SmartsSearch::AddLevels(const SmartsPattern::Part& part) {
  const SmartsPattern::Step* step = &pattern_->steps[BestWay(part)];
  for (const SmartsPattern::Step* end = step + part.numAtoms; step != end; ++step) {
    const auto firstTie = static_cast<std::uint32_t>(ties_.size());
    if (isSmall_ && step->parent != none) {
      ties_.push_back({target_->Neighbours(step->mask), step->parent});
      for (std::uint32_t i = 0; i < step->numClosures; ++i) {
        const SmartsPattern::Closure& closure = pattern_->closures[step->firstClosure + i];
        ties_.push_back({target_->Neighbours(closure.mask), closure.atom});
      }
    }
    levels_.push_back({step, target_->Words(sets_[step->domain]), 0, 0, 0, firstTie,
                       static_cast<std::uint32_t>(ties_.size())});
  }
}

template <bool isSmall>
void SmartsSearch::Enter(Level& level) {
  if constexpr (isSmall) {
    std::uint64_t left = *level.domain & ~used_[0];
    for (std::uint32_t i = level.firstTie; i < level.endTies; ++i) {
      left &= ties_[i].neighbours[images_[ties_[i].atom]];
    }
    level.left = left;
  } else if (level.step->parent == none) {
    level.next = 0;
    level.end = target_->NumAtoms();
  } else {
    const SmartsTarget::Atom& from = target_->atoms[images_[level.step->parent]];
    level.next = from.firstEdge;
    level.end = from.firstEdge + from.degree;
  }
}

std::uint32_t SmartsSearch::NextRoot(Level& level) {
  while (level.next < level.end) {
    const std::uint32_t w = level.next / 64;
    const std::uint64_t word = (level.domain[w] & ~used_[w]) >> (level.next % 64);
    if (word == 0) {
      level.next = (w + 1) * 64;
      continue;
    }
    level.next += static_cast<std::uint32_t>(std::countr_zero(word)) + 1;
    if (level.next > level.end) break;
    if (!components_ || GroupAdmits(level, level.next - 1)) return level.next - 1;
  }
  return none;
}

// Groups of the pattern are in distinct components.
bool SmartsSearch::GroupAdmits(const Level& level, std::uint32_t atom) const {
  if (level.step->group == 0) return true;
  for (const Level* other = levels_.data(); other != &level; ++other) {
    if (other->step->parent != none || other->step->group == 0) continue;
    const bool sameGroup = other->step->group == level.step->group;
    if (sameGroup != (components_[images_[other->step->atom]] == components_[atom])) return false;
  }
  return true;
}

bool SmartsSearch::Closes(const SmartsPattern::Step& step, std::uint32_t atom) const {
  const SmartsPattern::Closure* closure = &pattern_->closures[step.firstClosure];
  return std::all_of(closure, closure + step.numClosures, [&](const auto& bond) {
    const SmartsTarget::Edge* edge = target_->FindEdge(atom, images_[bond.atom]);
    return edge && (edge->bondClass & bond.mask) != 0;
  });
}

template <bool isSmall>
std::uint32_t SmartsSearch::NextCandidate(Level& level) {
  if constexpr (isSmall) {
    while (level.left != 0) {
      const auto atom = static_cast<std::uint32_t>(std::countr_zero(level.left));
      level.left &= level.left - 1;
      if (!components_ || level.step->parent != none || GroupAdmits(level, atom)) return atom;
    }
    return none;
  }
  const SmartsPattern::Step& step = *level.step;
  if (step.parent == none) return NextRoot(level);
  while (level.next < level.end) {
    const SmartsTarget::Edge& edge = target_->edges[level.next++];
    if ((edge.bondClass & step.mask) != 0 && Has(level.domain, edge.atom) &&
        !Has(used_.data(), edge.atom) && (step.numClosures == 0 || Closes(step, edge.atom))) {
      return edge.atom;
    }
  }
  return none;
}

void SmartsSearch::StepBack() {
  const std::uint32_t image = images_[levels_[--depth_].step->atom];
  used_[image / 64] &= ~(std::uint64_t{1} << (image % 64));
}

template <bool isSmall>
bool SmartsSearch::Advance() {
  for (;;) {
    Level& level = levels_[depth_];
    const std::uint32_t image = NextCandidate<isSmall>(level);
    if (image == none) {
      if (depth_ == 0) return false;
      StepBack();
      continue;
    }
    images_[level.step->atom] = image;
    used_[image / 64] |= std::uint64_t{1} << (image % 64);
    if (++depth_ == levels_.size()) return true;
    Enter<isSmall>(levels_[depth_]);
  }
}

bool SmartsSearch::Next() {
  do {
    if (depth_ == levels_.size()) StepBack();
    if (!Advance()) return false;
  } while (!StereoHolds());
  return true;
}

bool SmartsSearch::NextAt(std::uint32_t atom) {
  while (depth_ != 0) StepBack();
  Level& root = levels_[0];
  if (!Has(root.domain, atom)) return false;
  root.left = isSmall_ ? std::uint64_t{1} << atom : 0;
  root.next = atom;
  root.end = atom + 1;
  return Next();
}

bool SmartsSearch::StereoHolds() const {
  for (std::size_t i = 0; i < pattern_->centres.size(); ++i) {
    if (!CentreHolds(i)) return false;
  }
  return std::all_of(pattern_->doubleBonds.begin(), pattern_->doubleBonds.end(),
                     [this](const auto& bond) { return DoubleBondHolds(bond); });
}

bool SmartsSearch::CentreHolds(std::size_t index) const {
  const SmartsPattern::Centre& centre = pattern_->centres[index];
  const std::uint32_t image = images_[centre.atom];
  const SmartsTarget::Atom& atom = target_->atoms[image];
  const auto holds = [&](std::size_t turn) {
    return Has(target_->Words(sets_[pattern_->domains.size() + index * 3 + turn]), image);
  };
  const ZQAtomStereo stereo = atom.atom->GetStereo();
  if (stereo == ZQAtomStereo::None) return holds(SmartsPattern::Centre::Unspecified);
  const bool implicit = atom.degree == 3;
  if (centre.neighbours.empty() || (atom.degree != 4 && !implicit)) {
    // The pattern doesn't distinguish the two configurations.
    return holds(SmartsPattern::Centre::CounterClockwise) ||
           holds(SmartsPattern::Centre::Clockwise);
  }
  // The positions of the pattern's neighbours among the target's; the remaining position is that of
  // the missing neighbour.
  std::array<std::uint32_t, 4> places{};
  std::uint32_t sum = 0;
  std::size_t leftOut = 4;
  for (std::size_t i = 0; i < 4; ++i) {
    if (centre.neighbours[i] == none) {
      leftOut = i;
      continue;
    }
    places[i] = implicit ? 1 : 0;
    const std::uint32_t neighbour = images_[centre.neighbours[i]];
    while (target_->edges[atom.firstEdge + places[i] - (implicit ? 1 : 0)].atom != neighbour) {
      ++places[i];
    }
    sum += places[i];
  }
  if (leftOut != 4) places[leftOut] = 6 - sum;
  return holds(Turned(stereo, IsOdd(places)) == ZQAtomStereo::Clockwise
                   ? SmartsPattern::Centre::Clockwise
                   : SmartsPattern::Centre::CounterClockwise);
}

bool SmartsSearch::DoubleBondHolds(const SmartsPattern::DoubleBond& bond) const {
  const std::uint32_t bgn = images_[pattern_->bonds[bond.bond].bgn];
  const std::uint32_t end = images_[pattern_->bonds[bond.bond].end];
  const SmartsTarget::Edge& edge = *target_->FindEdge(bgn, end);
  if ((edge.bondClass & BondsOfOrder(2)) == 0) return true;
  const ZQBondStereo stereo = target_->bonds[edge.bond].bond->GetStereo();
  if (stereo == ZQBondStereo::None) return bond.orUnspecified;
  const auto isReference = [this](std::uint32_t at, std::uint32_t other, std::uint32_t neighbour) {
    return ReferenceOf(&target_->edges[target_->atoms[at].firstEdge], other) == neighbour;
  };
  const bool turned = isReference(bgn, end, images_[bond.bgnReference]) !=
                      isReference(end, bgn, images_[bond.endReference]);
  return (Turned(stereo, turned) == ZQBondStereo::Cis) == bond.cis;
}

}  // namespace Quarnel
