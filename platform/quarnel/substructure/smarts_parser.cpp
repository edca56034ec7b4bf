#include "platform/quarnel/substructure/smarts_parser_local.h"

#include <algorithm>
#include <map>
#include <set>
#include <utility>

#include "platform/quarnel/readers/smiles_scanner_local.h"

// A SMARTS is a SMILES whose atoms and bonds are expressions. There are two grammars, parsed in
// different ways.
//
// The graph (atoms, bonds, branches, ring closures, dots, component groups) is read in one loop
// from left to right: `State` contains the preceding atom and all open items. Whether an item is
// legal depends on the last one, `After`. "$(...)" within an atom begins a separate pattern with a
// new state; the recursion is as deep as the nesting, which is bounded.
//
// Expressions have four operators, which bind from loosest to tightest: ";" (and), "," (or), "&"
// (and; also implied between adjacent primitives), "!" (not). No parentheses group them, so an
// expression is never deeper than three levels: clauses joined by ";", terms joined by ",",
// literals joined by "&". No tree is needed:
//
// - An atom's expression is the flat list of its literals, each with two flags for the last of a
//   term and of a clause.
// - A bond has only 32 classes, so the operators are evaluated at once on sets of these and give
// one
//   mask.
//
// All patterns of the process share atom expressions of equal text, so that a target evaluates each
// only once for many patterns. The order of the search is planned as soon as a pattern has been
// read, for those within "$()" from their first atom.

namespace Quarnel {

namespace {

constexpr std::uint32_t none = SmartsPattern::none;
constexpr unsigned int maxNesting = 32;  // of $() within $()
constexpr std::int32_t otherClass = 3;   // of chirality: no configuration that a molecule can have

// Bonds of no order have no symbol of their own, in a SMILES as here.
constexpr std::uint32_t unwrittenBond = BondsOfOrder(0) | BondsOfOrder(1) | aromaticBonds;

// A bond expression as read; the direction is that from the preceding atom.
struct BondExpression {
  std::uint32_t mask = unwrittenBond;
  std::int8_t direction = 0;
  bool orUnspecified = false;
  bool written = false;
  std::string text;
};

class SmartsParser : SmilesScanner {
 public:
  SmartsParser(std::string_view text, bool ignoreStereo, ReaderError& error)
      : ignoreStereo_(ignoreStereo) {
    Begin(text, error);
  }

  std::unique_ptr<SmartsPattern> Read() {
    SkipBlanks();
    return ReadPattern(0);
  }

 private:
  struct Branch {
    std::uint32_t atom;
    std::size_t column;
  };
  struct RingOpening {
    std::uint32_t atom;
    std::size_t column;
    BondExpression bond;
    std::size_t neighbour;  // its position among those of a centre
  };
  // The open items while a pattern is read; a $() has a state of its own.
  struct State {
    std::unique_ptr<SmartsPattern> pattern = std::make_unique<SmartsPattern>();
    After after = After::Start;
    std::uint32_t previous = none;
    BondExpression bond;
    std::vector<Branch> branches;
    std::map<std::uint32_t, RingOpening> rings;
    std::vector<std::uint32_t> centres;  // by atom, none for most
    std::set<std::pair<std::uint32_t, std::uint32_t>> bonded;
    std::size_t groupColumn = 0;
    bool inGroup = false;
    std::uint32_t numGroups = 0;
  };

  std::unique_ptr<SmartsPattern> ReadPattern(unsigned int nesting);
  bool ReadItem(State& state, unsigned int nesting);
  bool ReadOpening(State& state);
  bool ReadClosing(State& state);
  bool ReadEnd(State& state);
  bool ReadBareAtom(State& state);
  bool ReadBracketAtom(State& state, unsigned int nesting);
  bool ReadExpression(AtomExpression& expression, unsigned int nesting);
  bool ReadPrimitive(AtomExpression& expression, AtomLiteral& literal, unsigned int nesting);
  bool ReadSymbol(AtomLiteral& literal);
  bool ReadChirality(AtomLiteral& literal);
  bool ReadRecursive(AtomExpression& expression, AtomLiteral& literal, unsigned int nesting);
  bool ReadBond(BondExpression& bond);
  bool ReadRingClosure(State& state);
  bool ReadCount(AtomLiteral& literal, std::uint32_t most, const char* expected);
  bool ReadOptionalCount(AtomLiteral& literal, AtomLiteral::Kind kind);
  bool IsHydrogenAtom() const;
  static AtomExpression Resolve(const AtomExpression& expression, std::int32_t turn);
  void AddAtom(State& state, AtomExpression&& expression, std::string_view text);
  static bool AddBond(State& state, std::uint32_t bgn, std::uint32_t end,
                      const BondExpression& bond);
  static std::size_t AddNeighbour(State& state, std::uint32_t atom, std::uint32_t neighbour);

  bool AtEnd() const { return pos_ >= text_.size(); }
  bool FailExpectingMore(const State& state) {
    return SmilesScanner::FailExpectingMore(state.after,
                                            "an atom (elements other than B C N O P S F Cl Br I K "
                                            "V W Y U and b c n o p s in brackets)");
  }

  bool ignoreStereo_;
};

bool SmartsParser::ReadCount(AtomLiteral& literal, std::uint32_t most, const char* expected) {
  std::uint32_t number = 0;
  if (!ReadNumber(number, most, expected)) return false;
  literal.value = static_cast<std::int32_t>(number);
  return true;
}

// Reads up to the end, or within $() up to its closing parenthesis.
std::unique_ptr<SmartsPattern> SmartsParser::ReadPattern(unsigned int nesting) {
  State state;
  while (!AtEnd() && !(nesting == 0 && IsBlank(Peek()))) {
    if (nesting != 0 && Peek() == ')' && state.branches.empty() && !state.inGroup) break;
    if (!ReadItem(state, nesting)) return nullptr;
  }
  if (nesting == 0) text_ = text_.substr(0, pos_);  // a blank ends the text
  if (!ReadEnd(state)) return nullptr;
  PlanSearch(*state.pattern, nesting != 0);
  return std::move(state.pattern);
}

bool SmartsParser::ReadEnd(State& state) {
  if (state.after != After::Atom && state.after != After::Closing &&
      state.after != After::GroupEnd) {
    return FailExpectingMore(state);
  }
  if (!state.branches.empty()) return FailOpenBranch(state.branches.back().column);
  if (state.inGroup) {
    return Fail(state.groupColumn, "a component group that isn't closed", "its \")\"");
  }
  if (!state.rings.empty()) {
    const auto first = std::min_element(
        state.rings.begin(), state.rings.end(),
        [](const auto& a, const auto& b) { return a.second.column < b.second.column; });
    return FailRing(first->second.column, first->first, " left open",
                    "the same number at a second atom");
  }
  return true;
}

bool SmartsParser::ReadItem(State& state, unsigned int nesting) {
  const char c = Peek();
  const bool afterAtom = state.after == After::Atom || state.after == After::Closing;
  switch (c) {
    case '[':
      return state.after == After::GroupEnd ? FailExpectingMore(state)
                                            : ReadBracketAtom(state, nesting);
    case '(':
      return ReadOpening(state);
    case ')':
      return ReadClosing(state);
    case '.':
      if (!afterAtom && state.after != After::Opening && state.after != After::GroupEnd) {
        return FailExpectingMore(state);
      }
      ++pos_;
      state.previous = none;
      state.after = After::Dot;
      return true;
    case '-':
    case '=':
    case '#':
    case '$':
    case ':':
    case '~':
    case '@':
    case '/':
    case '\\':
    case '!':
      if (!afterAtom && state.after != After::Opening) return FailExpectingMore(state);
      if (!ReadBond(state.bond)) return false;
      state.after = After::Bond;
      return true;
    default:
      if (c == '%' || IsDigit(c)) return ReadRingClosure(state);
      return ReadBareAtom(state);
  }
}

bool SmartsParser::ReadOpening(State& state) {
  if (state.after == After::Atom || state.after == After::Closing) {
    state.branches.push_back({state.previous, pos_++});
    state.after = After::Opening;
    return true;
  }
  if ((state.after != After::Start && state.after != After::Dot) || state.inGroup ||
      !state.branches.empty()) {
    return FailExpectingMore(state);
  }
  state.inGroup = true;
  state.groupColumn = pos_++;
  ++state.numGroups;
  state.after = After::Start;
  return true;
}

bool SmartsParser::ReadClosing(State& state) {
  if (state.after != After::Atom && state.after != After::Closing) return FailExpectingMore(state);
  if (!state.branches.empty()) {
    state.previous = state.branches.back().atom;
    state.branches.pop_back();
    state.after = After::Closing;
  } else if (state.inGroup) {
    state.inGroup = false;
    state.previous = none;
    state.after = After::GroupEnd;
  } else {
    return FailHere("an atom or a bond, as no branch is open");
  }
  ++pos_;
  return true;
}

// ---- Atoms

// Reads an atom without brackets.
bool SmartsParser::ReadBareAtom(State& state) {
  const std::size_t start = pos_;
  const char c = Peek();
  AtomLiteral literal;
  literal.endsTerm = literal.endsClause = true;
  if (c == 'C' && Peek(1) == 'l') {
    literal.kind = AtomLiteral::AliphaticElement;
    literal.value = 17;
    pos_ += 2;
  } else if (c == 'B' && Peek(1) == 'r') {
    literal.kind = AtomLiteral::AliphaticElement;
    literal.value = 35;
    pos_ += 2;
  } else if (c == '*') {
    ++pos_;
  } else if (c == 'a' || c == 'A') {
    literal.kind = AtomLiteral::Aromatic;
    literal.negated = c == 'A';
    ++pos_;
  } else if (c != '\0' &&
             std::string_view("BCNOPSFIKVWYUbcnops").find(c) != std::string_view::npos) {
    literal.kind = IsLower(c) ? AtomLiteral::AromaticElement : AtomLiteral::AliphaticElement;
    literal.value = PeekElement(1);
    ++pos_;
  } else {
    return FailExpectingMore(state);
  }
  if (state.after == After::GroupEnd) {
    pos_ = start;
    return FailExpectingMore(state);
  }
  AtomExpression expression;
  expression.literals.push_back(literal);
  AddAtom(state, std::move(expression), text_.substr(start, pos_ - start));
  return true;
}

// Whether the brackets contain a hydrogen atom: H with at most an isotope and a charge.
bool SmartsParser::IsHydrogenAtom() const {
  std::size_t ahead = 0;
  while (IsDigit(Peek(ahead))) ++ahead;
  if (Peek(ahead++) != 'H') return false;
  if (Peek(ahead) == '+' || Peek(ahead) == '-') {
    const char sign = Peek(ahead);
    while (Peek(ahead) == sign) ++ahead;
    while (IsDigit(Peek(ahead))) ++ahead;
  }
  return Peek(ahead) == ']' || Peek(ahead) == ':';
}

bool SmartsParser::ReadBracketAtom(State& state, unsigned int nesting) {
  const std::size_t open = pos_++;
  AtomExpression expression;
  if (!ReadExpression(expression, nesting)) return false;
  if (Peek() == ':') {
    ++pos_;
    std::uint32_t mapIdx = 0;
    if (!ReadNumber(mapIdx, 99999999, "an atom class of up to eight digits")) return false;
  }
  if (AtEnd()) return Fail(open, "a bracket that isn't closed", "its \"]\"");
  if (Peek() != ']') return FailHere("an atom primitive, an operator or \"]\"");
  ++pos_;
  AddAtom(state, std::move(expression), text_.substr(open, pos_ - open));
  return true;
}

bool SmartsParser::ReadExpression(AtomExpression& expression, unsigned int nesting) {
  const bool hydrogen = IsHydrogenAtom();
  for (;;) {
    AtomLiteral literal;
    for (; Peek() == '!'; ++pos_) literal.negated = !literal.negated;
    if (hydrogen && Peek() == 'H') {
      literal.kind = AtomLiteral::Element;
      literal.value = 1;
      ++pos_;
    } else if (!ReadPrimitive(expression, literal, nesting)) {
      return false;
    }
    const char next = Peek();
    literal.endsClause = next == ';' || next == ']' || next == ':' || next == '\0';
    literal.endsTerm = literal.endsClause || next == ',';
    expression.literals.push_back(literal);
    if (literal.endsClause && next != ';') return true;
    if (next == '&' || next == ',' || next == ';') ++pos_;
  }
}

bool SmartsParser::ReadOptionalCount(AtomLiteral& literal, AtomLiteral::Kind kind) {
  ++pos_;
  literal.kind = kind;
  literal.value = 1;
  return !IsDigit(Peek()) || ReadCount(literal, 999, "a number up to 999");
}

bool SmartsParser::ReadPrimitive(AtomExpression& expression, AtomLiteral& literal,
                                 unsigned int nesting) {
  const char c = Peek();
  if (IsDigit(c)) {
    literal.kind = AtomLiteral::Isotope;
    return ReadCount(literal, 65535, "an isotope up to 65535");
  }
  if ((IsUpper(c) || IsLower(c)) && ReadSymbol(literal)) return true;
  switch (c) {
    case '*':
      ++pos_;
      return true;
    case 'a':
    case 'A':
      ++pos_;
      literal.kind = AtomLiteral::Aromatic;
      literal.negated ^= c == 'A';
      return true;
    case 'D':
      return ReadOptionalCount(literal, AtomLiteral::Degree);
    case 'H':
      return ReadOptionalCount(literal, AtomLiteral::TotalH);
    case 'X':
      return ReadOptionalCount(literal, AtomLiteral::Connections);
    case 'v':
      return ReadOptionalCount(literal, AtomLiteral::Valence);
    case 'h':
      if (IsDigit(Peek(1))) return ReadOptionalCount(literal, AtomLiteral::ImplicitH);
      // At least one is not none.
      ++pos_;
      literal.kind = AtomLiteral::ImplicitH;
      literal.negated = !literal.negated;
      return true;
    case 'R':
    case 'r':
    case 'x':
      if (IsDigit(Peek(1))) {
        return ReadOptionalCount(literal, c == 'R'   ? AtomLiteral::RingCount
                                          : c == 'r' ? AtomLiteral::RingSize
                                                     : AtomLiteral::RingBonds);
      }
      ++pos_;
      literal.kind = AtomLiteral::InRing;
      return true;
    case '#':
      ++pos_;
      literal.kind = AtomLiteral::Element;
      return ReadCount(literal, 118, "an atomic number up to 118");
    case '^':
      ++pos_;
      literal.kind = AtomLiteral::Hybridization;
      return ReadCount(literal, 5, "a hybridization from 0 to 5");
    case '+':
    case '-':
      literal.kind = AtomLiteral::Charge;
      return ReadCharge(literal.value, 15, "a charge from -15 to +15");
    case '@':
      return ReadChirality(literal);
    case '$':
      return ReadRecursive(expression, literal, nesting);
    default:
      return FailHere("an atom primitive");
  }
}

// The longest symbol wins: "Cl" is chlorine, "Cc" an aliphatic and an aromatic carbon.
bool SmartsParser::ReadSymbol(AtomLiteral& literal) {
  const bool aromatic = IsLower(Peek());
  for (std::size_t length = IsLower(Peek(1)) ? 2 : 1; length != 0; --length) {
    const std::uint8_t atomicNum = PeekElement(length);
    if (atomicNum <= 1 && length == 1) break;  // an "H" is a count of hydrogens
    if (atomicNum == 0) continue;
    literal.kind = aromatic ? AtomLiteral::AromaticElement : AtomLiteral::AliphaticElement;
    literal.value = atomicNum;
    pos_ += length;
    return true;
  }
  return false;
}

bool SmartsParser::ReadChirality(AtomLiteral& literal) {
  ++pos_;
  literal.kind = AtomLiteral::Chirality;
  literal.value = SmartsPattern::Centre::CounterClockwise;
  if (Peek() == '@') {
    ++pos_;
    literal.value = SmartsPattern::Centre::Clockwise;
  } else if (const ChiralityClass* kind = PeekChiralityClass(); kind && IsDigit(Peek(2))) {
    pos_ += kind->name.size();
    const std::string expected = "the number of a chirality class, 1 " +
                                 ((kind->count == 2 ? "or " : "to ") + std::to_string(kind->count));
    std::uint32_t number = 0;
    if (Peek() == '0') return FailHere(expected);
    if (!ReadNumber(number, kind->count, expected.c_str())) return false;
    literal.value = kind->name != "TH" ? otherClass
                    : number == 1      ? SmartsPattern::Centre::CounterClockwise
                                       : SmartsPattern::Centre::Clockwise;
  }
  if (Peek() == '?') {
    ++pos_;
    literal.orUnspecified = true;
  }
  if (ignoreStereo_) literal = AtomLiteral();
  return true;
}

bool SmartsParser::ReadRecursive(AtomExpression& expression, AtomLiteral& literal,
                                 unsigned int nesting) {
  const std::size_t start = pos_;
  if (nesting == maxNesting) {
    return FailHere("at most " + std::to_string(maxNesting) + " \"$(\" within each other");
  }
  ++pos_;
  if (Peek() != '(') return FailHere("\"(\" behind \"$\"");
  ++pos_;
  std::unique_ptr<SmartsPattern> pattern = ReadPattern(nesting + 1);
  if (!pattern) return false;
  if (Peek() != ')') return Fail(start, "\"$(\" that isn't closed", "its \")\"");
  ++pos_;
  literal.kind = AtomLiteral::Recursive;
  literal.value = static_cast<std::int32_t>(expression.patterns.size());
  expression.patterns.push_back(std::move(pattern));
  return true;
}

// Simplifies an expression with chirality for an atom of this configuration.
AtomExpression SmartsParser::Resolve(const AtomExpression& expression, std::int32_t turn) {
  AtomExpression resolved;
  resolved.literals = expression.literals;
  resolved.patterns = expression.patterns;
  for (AtomLiteral& literal : resolved.literals) {
    if (literal.kind != AtomLiteral::Chirality) continue;
    const bool holds = literal.value == turn ||
                       (literal.orUnspecified && turn == SmartsPattern::Centre::Unspecified);
    literal.kind = AtomLiteral::Any;
    literal.negated ^= !holds;
  }
  return resolved;
}

void SmartsParser::AddAtom(State& state, AtomExpression&& expression, std::string_view text) {
  SmartsPattern& pattern = *state.pattern;
  const auto idx = static_cast<std::uint32_t>(pattern.atoms.size());
  const bool chiral =
      std::any_of(expression.literals.begin(), expression.literals.end(),
                  [](const auto& literal) { return literal.kind == AtomLiteral::Chirality; });
  // Without stereo the same text has another meaning.
  const std::string key = (ignoreStereo_ ? "~" : "") + std::string(text);
  pattern.atoms.push_back(ShareExpression(key, std::move(expression)));
  pattern.groups.push_back(state.inGroup ? state.numGroups : 0);
  state.centres.push_back(none);
  if (chiral) {
    state.centres[idx] = static_cast<std::uint32_t>(pattern.centres.size());
    SmartsPattern::Centre& centre = pattern.centres.emplace_back();
    centre.atom = idx;
    for (std::int32_t turn = 0; turn < 3; ++turn) {
      centre.byTurn[static_cast<std::size_t>(turn)] =
          ShareExpression(key + " " + std::to_string(turn), Resolve(*pattern.atoms[idx], turn));
    }
  }
  if (state.previous != none) {
    AddNeighbour(state, state.previous, idx);
    AddNeighbour(state, idx, state.previous);
    AddBond(state, state.previous, idx, state.bond);
  }
  AddNeighbour(state, idx, none);  // a hydrogen or a neighbour missing from the pattern
  state.bond = BondExpression();
  state.previous = idx;
  state.after = After::Atom;
}

std::size_t SmartsParser::AddNeighbour(State& state, std::uint32_t atom, std::uint32_t neighbour) {
  if (state.centres[atom] == none) return 0;
  std::vector<std::uint32_t>& list = state.pattern->centres[state.centres[atom]].neighbours;
  list.push_back(neighbour);
  return list.size() - 1;
}

// ---- Bonds

bool SmartsParser::ReadBond(BondExpression& bond) {
  const std::size_t start = pos_;
  std::uint32_t clauses = ~0U;
  std::uint32_t terms = 0;
  std::uint32_t term = ~0U;
  unsigned int directions = 0;
  bond.written = true;
  for (;;) {
    bool negated = false;
    for (; Peek() == '!'; ++pos_) negated = !negated;
    std::uint32_t mask = 0;
    switch (Peek()) {
      case '-':
        mask = BondsOfOrder(1);
        break;
      case '=':
        mask = BondsOfOrder(2);
        break;
      case '#':
        mask = BondsOfOrder(3);
        break;
      case '$':
        mask = BondsOfOrder(4);
        break;
      case ':':
        mask = aromaticBonds;
        break;
      case '~':
        mask = ~0U;
        break;
      case '@':
        mask = ringBonds;
        break;
      case '/':
      case '\\':
        // A single bond; its direction is compared later, and only in a pair. A negated direction
        // is no condition.
        mask = negated ? 0 : BondsOfOrder(1);
        directions += negated ? 2 : 1;
        bond.direction = Peek() == '/' ? 1 : -1;
        if (Peek(1) == '?') {
          bond.orUnspecified = true;
          ++pos_;
        }
        break;
      default:
        return FailHere("a bond symbol");
    }
    ++pos_;
    term &= negated ? ~mask : mask;
    const char next = Peek();
    if (next == ',' || next == ';') {
      terms |= std::exchange(term, ~0U);
      if (next == ';') clauses &= std::exchange(terms, 0);
      ++pos_;
    } else if (next == '&') {
      ++pos_;
    } else if (next == '\0' ||
               std::string_view("-=#$:~@/\\!").find(next) == std::string_view::npos) {
      break;
    }
  }
  bond.mask = clauses & (terms | term);
  if (directions != 1 || ignoreStereo_) bond.direction = 0;
  bond.text = text_.substr(start, pos_ - start);
  return true;
}

bool SmartsParser::AddBond(State& state, std::uint32_t bgn, std::uint32_t end,
                           const BondExpression& bond) {
  if (!state.bonded.insert(std::minmax(bgn, end)).second) return false;
  state.pattern->bonds.push_back({bgn, end, bond.mask, bond.direction, bond.orUnspecified});
  return true;
}

bool SmartsParser::ReadRingClosure(State& state) {
  if (state.after != After::Atom && state.after != After::Closing && state.after != After::Bond) {
    return FailExpectingMore(state);
  }
  const std::size_t column = pos_;
  std::uint32_t number = 0;
  if (!ReadRingNumber(number, "a ring closure number of up to five digits")) return false;
  const std::uint32_t atom = state.previous;
  const auto found = state.rings.find(number);
  if (found == state.rings.end()) {
    state.rings.emplace(number,
                        RingOpening{atom, column, state.bond, AddNeighbour(state, atom, none)});
  } else {
    const RingOpening& opening = found->second;
    const auto fail = [&](const std::string& what, const std::string& expected) {
      return FailRing(column, number, what, expected);
    };
    if (opening.atom == atom) return fail(" from an atom to itself", "another atom");
    if (state.pattern->groups[opening.atom] != state.pattern->groups[atom]) {
      return fail(" between component groups", "an atom of the same group");
    }
    BondExpression bond = opening.bond;
    if (state.bond.written) {
      const std::int8_t direction = static_cast<std::int8_t>(-state.bond.direction);
      if (bond.written && (bond.mask != state.bond.mask || bond.direction * direction < 0)) {
        return fail(" with the bond \"" + state.bond.text + "\"",
                    "the bond \"" + bond.text + "\" of its opening at column " +
                        std::to_string(opening.column + 1));
      }
      bond.mask = state.bond.mask;
      bond.orUnspecified |= state.bond.orUnspecified;
      if (direction != 0) bond.direction = direction;
    }
    if (!AddBond(state, opening.atom, atom, bond)) {
      return fail(" between atoms that are bonded already", "two other atoms");
    }
    AddNeighbour(state, atom, opening.atom);
    if (state.centres[opening.atom] != none) {
      state.pattern->centres[state.centres[opening.atom]].neighbours[opening.neighbour] = atom;
    }
    state.rings.erase(found);
  }
  state.bond = BondExpression();
  state.after = After::Atom;
  return true;
}

}  // namespace

std::unique_ptr<const SmartsPattern> ParseSmarts(std::string_view smarts, bool ignoreStereo,
                                                 ReaderError& error) {
  return SmartsParser(smarts, ignoreStereo, error).Read();
}

}  // namespace Quarnel
