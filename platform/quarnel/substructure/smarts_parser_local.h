#pragma once

/// A SMARTS text as the search wants it: atom expressions that distinct patterns share, bond
/// expressions as masks, and the order in which to map the atoms.

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
  /// Never the same for two expressions of one process, so that what a target has looked up stays
  /// right when a pattern dies.
  std::uint64_t serial = 0;
  std::shared_ptr<const AtomExpression> base;  // holds as well, unless null
  std::vector<AtomLiteral> literals;
  std::vector<std::shared_ptr<const SmartsPattern>> patterns;
  double frequency = 1;  // a guess of how many atoms in one satisfy it
};

/// What bonds look like to an expression: order, aromaticity and ring membership make 32 classes,
/// and an expression is the set of those that it admits.
inline constexpr unsigned int maxBondOrder = 7;
constexpr std::uint32_t BondClass(unsigned int order, bool aromatic, bool inRing) {
  return 1U << ((order < maxBondOrder ? order : maxBondOrder) * 4 + (aromatic ? 2 : 0) +
                (inRing ? 1 : 0));
}
inline constexpr std::uint32_t aromaticBonds = 0xCCCCCCCCU;
inline constexpr std::uint32_t ringBonds = 0xAAAAAAAAU;
/// Those of an order, Kekulé orders not counted.
constexpr std::uint32_t BondsOfOrder(unsigned int order) {
  return BondClass(order, false, false) | BondClass(order, false, true);
}

struct SmartsPattern {
  static constexpr std::uint32_t none = ~0U;

  struct Bond {
    std::uint32_t bgn;
    std::uint32_t end;
    std::uint32_t mask;
    std::int8_t direction;  // 1: the end lies above the begin ("/"), -1: below
    bool orUnspecified;     // of the direction
  };
  /// An atom told to be chiral, and its neighbours in the order of the text: four, one of them
  /// `none` if the pattern leaves it out, or no list if it tells too few.
  struct Centre {
    enum Turn : std::uint8_t { Unspecified, CounterClockwise, Clockwise };
    std::uint32_t atom;
    std::vector<std::uint32_t> neighbours;
    /// What the atom's expression comes to for an atom that turns so.
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
  /// The atoms that share an expression. A target needs as many atoms that satisfy it.
  struct Domain {
    std::shared_ptr<const AtomExpression> expression;
    std::uint64_t serial;  // the expression's
    std::uint32_t numAtoms;
  };
  /// Maps one atom: a root anywhere, any other along a bond from an atom mapped before.
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
  /// A connected part, with a way through it for each atom that it may begin with.
  struct Part {
    std::uint32_t numAtoms;
    std::uint32_t firstWay;  // index of a step; ways have numAtoms steps each
    std::uint32_t numWays;
  };

  std::vector<std::shared_ptr<const AtomExpression>> atoms;
  std::vector<std::uint32_t> groups;  // by atom; 0 for none, atoms of a group share a component
  std::vector<Bond> bonds;
  std::vector<Centre> centres;

  // What `PlanSearch` makes of it.
  std::vector<Domain> domains;
  std::vector<Part> parts;
  std::vector<Step> steps;
  std::vector<Closure> closures;
  std::vector<DoubleBond> doubleBonds;
  bool hasGroups = false;
  bool fromFirstAtom = false;
};

/// Null with the error told if the text can't be parsed.
std::unique_ptr<const SmartsPattern> ParseSmarts(std::string_view smarts, bool ignoreStereo,
                                                 ReaderError& error);

/// The expression of this text, made only if there is none yet in the process. Safe from many
/// threads.
std::shared_ptr<const AtomExpression> ShareExpression(const std::string& key,
                                                      AtomExpression&& expression);

/// Finds the ways through the pattern. With `fromFirstAtom`, the only way through the first atom's
/// part begins there, and that part comes first.
void PlanSearch(SmartsPattern& pattern, bool fromFirstAtom);

}  // namespace Quarnel
