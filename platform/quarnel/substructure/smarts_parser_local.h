#pragma once

/// A parsed SMARTS text: atom expressions shared by distinct patterns, bond expressions as masks,
/// and the order in which to map the atoms.

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/quarnel/readers/reader_error_local.h"

namespace Quarnel {

struct SmartsPattern;

/// One primitive of an atom, or its negation. An expression is a conjunction of clauses (`;`), a
/// clause a disjunction of terms (`,`), a term a conjunction of literals (`&`).
struct AtomLiteral {
  enum Kind : std::uint8_t {
    Any,
    Aromatic,
    Element,
    AliphaticElement,
    AromaticElement,
    Isotope,
    Charge,
    Degree,  // explicit connections
    MinDegree,
    Connections,  // implicit hydrogens included
    TotalH,
    ImplicitH,
    Valence,
    InRing,
    RingBonds,
    RingCount,
    RingSize,
    Hybridization,
    Chirality,
    Recursive,  // the value is an index into the expression's patterns
  };
  Kind kind = Any;
  bool negated = false;
  bool endsTerm = false;
  bool endsClause = false;
  bool orUnspecified = false;  // of chirality
  std::int32_t value = 0;
};

struct AtomExpression {
  /// Unique among all expressions of a process, so that a target's results remain right after a
  /// pattern is destroyed.
  std::uint64_t serial = 0;
  std::shared_ptr<const AtomExpression> base;  // must be satisfied as well, unless null
  std::vector<AtomLiteral> literals;
  std::vector<std::shared_ptr<const SmartsPattern>> patterns;
  double frequency = 1;  // estimated fraction of atoms that satisfy it
};

/// Classes of bonds: order, aromaticity and ring membership give 32, and an expression is the set
/// of those that satisfy it.
inline constexpr unsigned int maxBondOrder = 7;
constexpr std::uint32_t BondClass(unsigned int order, bool aromatic, bool inRing) {
  return 1U << ((order < maxBondOrder ? order : maxBondOrder) * 4 + (aromatic ? 2 : 0) +
                (inRing ? 1 : 0));
}
inline constexpr std::uint32_t aromaticBonds = 0xCCCCCCCCU;
inline constexpr std::uint32_t ringBonds = 0xAAAAAAAAU;
/// Bonds of an order, without Kekulé orders.
constexpr std::uint32_t BondsOfOrder(unsigned int order) {
  return BondClass(order, false, false) | BondClass(order, false, true);
}

struct SmartsPattern {
  static constexpr std::uint32_t none = ~0U;

  struct Bond {
    std::uint32_t bgn;
    std::uint32_t end;
    std::uint32_t mask;
    std::int8_t direction;  // 1: the end is above the begin ("/"), -1: below
    bool orUnspecified;     // of the direction
  };
  /// An atom with chirality, and its neighbours in the order of the text: four, one of them `none`
  /// if missing from the pattern, or an empty list if there are too few.
  struct Centre {
    enum Turn : std::uint8_t { Unspecified, CounterClockwise, Clockwise };
    std::uint32_t atom;
    std::vector<std::uint32_t> neighbours;
    /// The atom's expression, simplified for each configuration.
    std::array<std::shared_ptr<const AtomExpression>, 3> byTurn;
  };
  /// A double bond between marked bonds.
  struct DoubleBond {
    std::uint32_t bond;
    std::uint32_t bgnReference;
    std::uint32_t endReference;
    bool cis;
    bool orUnspecified;
  };
  /// The atoms that share an expression. A target needs at least as many atoms that satisfy it.
  struct Domain {
    std::shared_ptr<const AtomExpression> expression;
    std::uint64_t serial;  // the expression's
    std::uint32_t numAtoms;
  };
  /// Maps one atom: a root onto any atom, another along a bond from an atom mapped before.
  struct Step {
    std::uint32_t atom;
    std::uint32_t domain;
    std::uint32_t parent;  // none for a root
    std::uint32_t mask;    // of the bond to the parent
    std::uint32_t firstClosure;
    std::uint32_t numClosures;
    std::uint32_t group;
  };
  /// A further bond to an atom mapped before.
  struct Closure {
    std::uint32_t atom;
    std::uint32_t mask;
  };
  /// A connected part, with a sequence of steps for each atom that it may begin with.
  struct Part {
    std::uint32_t numAtoms;
    std::uint32_t firstWay;  // index of a step; ways have numAtoms steps each
    std::uint32_t numWays;
  };

  std::vector<std::shared_ptr<const AtomExpression>> atoms;
  std::vector<std::uint32_t> groups;  // by atom; 0 for none, atoms of a group share a component
  std::vector<Bond> bonds;
  std::vector<Centre> centres;

  // Computed by `PlanSearch`.
  std::vector<Domain> domains;
  std::vector<Part> parts;
  std::vector<Step> steps;
  std::vector<Closure> closures;
  std::vector<DoubleBond> doubleBonds;
  bool hasGroups = false;
  bool fromFirstAtom = false;
};

/// Returns null and fills the error if the text can't be parsed.
std::unique_ptr<const SmartsPattern> ParseSmarts(std::string_view smarts, bool ignoreStereo,
                                                 ReaderError& error);

/// Returns the expression of this text, created only if the process has none yet. Safe from many
/// threads.
std::shared_ptr<const AtomExpression> ShareExpression(const std::string& key,
                                                      AtomExpression&& expression);

/// Computes the sequences of steps. With `fromFirstAtom`, the only one of the first atom's part
/// begins there, and that part comes first.
void PlanSearch(SmartsPattern& pattern, bool fromFirstAtom);

}  // namespace Quarnel
