#pragma once

#include <cstdint>
#include <vector>

#include "platform/quarnel/substructure/smarts_parser_local.h"
#include "platform/quarnel/substructure/subsearch_target_local.h"

namespace Quarnel {

/// A backtracking search that finds matches one by one. Its memory is one record per atom of the
/// pattern, independent of the target. Pattern and target must outlive it; while it runs, no new
/// expression may be looked up in the target.
class SmartsSearch {
 public:
  /// Returns false if there can't be a match.
  bool Start(const SmartsPattern& pattern, SmartsTarget& target);
  /// Finds the next match.
  bool Next();
  /// Finds a match that maps the pattern's first atom, with which the plan must begin, onto this
  /// atom.
  bool NextAt(std::uint32_t atom);
  /// The atoms of the current match, by atom of the pattern.
  const std::vector<std::uint32_t>& Images() const { return images_; }

 private:
  /// A bond to an atom mapped before, in a target of up to 64 atoms.
  struct Tie {
    const std::uint64_t* neighbours;  // by atom
    std::uint32_t atom;               // of the pattern
  };
  struct Level {
    const SmartsPattern::Step* step;
    const std::uint64_t* domain;
    // The remaining candidates: a set for up to 64 atoms; for more, the atoms for a root and
    // otherwise the edges of the parent's image.
    std::uint64_t left;
    std::uint32_t next;
    std::uint32_t end;
    std::uint32_t firstTie;
    std::uint32_t endTies;
  };

  std::uint32_t BestWay(const SmartsPattern::Part& part) const;
  void AddLevels(const SmartsPattern::Part& part);
  void Restart();
  template <bool isSmall>
  void Enter(Level& level);
  template <bool isSmall>
  std::uint32_t NextCandidate(Level& level);
  template <bool isSmall>
  bool Advance();
  bool Advance() { return isSmall_ ? Advance<true>() : Advance<false>(); }
  std::uint32_t NextRoot(Level& level);
  bool Closes(const SmartsPattern::Step& step, std::uint32_t atom) const;
  void StepBack();
  bool GroupAdmits(const Level& level, std::uint32_t atom) const;
  bool StereoHolds() const;
  bool CentreHolds(std::size_t index) const;
  bool DoubleBondHolds(const SmartsPattern::DoubleBond& bond) const;

  const SmartsPattern* pattern_ = nullptr;
  SmartsTarget* target_ = nullptr;
  bool isSmall_ = false;
  const std::uint32_t* components_ = nullptr;  // if the pattern has groups
  std::vector<SmartsTarget::Set> sets_;        // by domain, then three for each centre
  std::vector<Level> levels_;
  std::vector<Tie> ties_;
  std::vector<std::uint32_t> images_;
  std::vector<std::uint64_t> used_;
  std::vector<std::uint32_t> order_;  // of parts
  std::size_t depth_ = 0;
};

}  // namespace Quarnel
