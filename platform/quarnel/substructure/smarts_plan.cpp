#include <algorithm>
#include <map>
#include <mutex>
#include <set>
#include <tuple>
#include <unordered_map>
#include <utility>

#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/substructure/smarts_parser_local.h"

namespace Quarnel {

namespace {

constexpr std::uint32_t none = SmartsPattern::none;
/// Number of atoms that a part may begin with. From two to eight, MACCS keys cost the same.
constexpr std::uint32_t maxWays = 4;

/// Estimates the fraction of atoms that satisfy a literal in an organic molecule.
double GuessFrequency(const AtomLiteral& literal) {
  switch (literal.kind) {
    case AtomLiteral::Any:
      return 1;
    case AtomLiteral::Element:
    case AtomLiteral::AliphaticElement:
    case AtomLiteral::AromaticElement:
      return literal.value == 6 ? 0.7 : literal.value == 7 || literal.value == 8 ? 0.12 : 0.02;
    case AtomLiteral::Charge:
    case AtomLiteral::Isotope:
      return literal.value == 0 ? 0.99 : 0.01;
    case AtomLiteral::Aromatic:
    case AtomLiteral::InRing:
    case AtomLiteral::MinDegree:
      return 0.5;
    default:
      return 0.3;
  }
}

double GuessFrequency(const AtomExpression& expression) {
  double all = expression.base ? expression.base->frequency : 1;
  double clause = 0;
  double term = 1;
  for (const AtomLiteral& literal : expression.literals) {
    const double frequency = GuessFrequency(literal);
    term *= literal.negated ? 1 - frequency : frequency;
    if (literal.endsTerm) clause += std::exchange(term, 1);
    if (literal.endsClause) all *= std::min(std::exchange(clause, 0), 1.0);
  }
  return all;
}

/// All expressions of the process by text.
class ExpressionRegistry {
 public:
  static ExpressionRegistry& Get() {
    static ExpressionRegistry registry;
    return registry;
  }

  std::shared_ptr<const AtomExpression> Share(const std::string& key, AtomExpression&& expression) {
    const std::lock_guard lock(mutex_);
    std::weak_ptr<const AtomExpression>& entry = expressions_[key];
    if (std::shared_ptr<const AtomExpression> known = entry.lock()) return known;
    expression.serial = ++lastSerial_;
    expression.frequency = GuessFrequency(expression);
    const auto made = std::make_shared<Registered>(std::move(expression), *this, key);
    std::shared_ptr<const AtomExpression> shared(made, &made->expression);
    entry = shared;
    return shared;
  }

 private:
  // Removes itself. Only a complete object does: the lock is held while one is constructed.
  struct Registered {
    Registered(AtomExpression&& from, ExpressionRegistry& in, std::string as)
        : expression(std::move(from)), registry(in), key(std::move(as)) {}
    ~Registered() { registry.Forget(key); }

    AtomExpression expression;
    ExpressionRegistry& registry;
    std::string key;
  };

  void Forget(const std::string& key) {
    const std::lock_guard lock(mutex_);
    const auto found = expressions_.find(key);
    if (found != expressions_.end() && found->second.expired()) expressions_.erase(found);
  }

  std::mutex mutex_;
  std::uint64_t lastSerial_ = 0;
  std::unordered_map<std::string, std::weak_ptr<const AtomExpression>> expressions_;
};

class Planner {
 public:
  Planner(SmartsPattern& pattern, bool fromFirstAtom)
      : pattern_(pattern), fromFirstAtom_(fromFirstAtom) {}

  void Plan();

 private:
  void ReadGraph();
  void Sharpen();
  void SetDomains();
  void FindDoubleBonds();
  void AddPart(std::uint32_t first);
  void AddWay(std::uint32_t root);
  std::uint32_t FindReference(std::uint32_t bond, std::uint32_t atom, int& side,
                              bool& orUnspecified) const;

  std::uint32_t NumAtoms() const { return static_cast<std::uint32_t>(pattern_.atoms.size()); }
  double Frequency(std::uint32_t atom) const { return pattern_.atoms[atom]->frequency; }

  SmartsPattern& pattern_;
  bool fromFirstAtom_;
  MolView graph_;
  std::vector<std::uint32_t> domainOf_;  // by atom
  std::vector<bool> inPart_;
  std::vector<std::uint32_t> position_;  // by atom, in the current sequence
  std::vector<std::uint32_t> waiting_;   // by atom, bonds to atoms of the current sequence
};

void Planner::Plan() {
  ReadGraph();
  for (SmartsPattern::Centre& centre : pattern_.centres) {
    std::vector<std::uint32_t>& list = centre.neighbours;
    if (list.size() == 5) list.erase(std::find(list.begin(), list.end(), none));
    if (list.size() != 4) list.clear();
  }
  pattern_.fromFirstAtom = fromFirstAtom_;
  pattern_.hasGroups = std::any_of(pattern_.groups.begin(), pattern_.groups.end(),
                                   [](std::uint32_t group) { return group != 0; });
  FindDoubleBonds();
  Sharpen();
  SetDomains();
  inPart_.assign(NumAtoms(), false);
  position_.assign(NumAtoms(), none);
  waiting_.assign(NumAtoms(), 0);
  for (std::uint32_t a = 0; a < NumAtoms(); ++a) {
    if (!inPart_[a]) AddPart(a);
  }
}

void Planner::ReadGraph() {
  graph_.atoms.resize(NumAtoms());
  for (const SmartsPattern::Bond& bond : pattern_.bonds) {
    graph_.bonds.push_back({nullptr, bond.bgn, bond.end, 1, false, false});
    ++graph_.atoms[bond.bgn].degree;
    ++graph_.atoms[bond.end].degree;
  }
  LinkBonds(graph_.atoms, graph_.bonds, graph_.edges);
  graph_.FindRings();
}

// Adds the requirements of the pattern's graph: a ring is mapped to a ring, and an atom to one with
// at least as many bonds.
void Planner::Sharpen() {
  for (std::size_t b = 0; b < pattern_.bonds.size(); ++b) {
    if (graph_.bonds[b].inRing) pattern_.bonds[b].mask &= ringBonds;
  }
  for (std::uint32_t a = 0; a < NumAtoms(); ++a) {
    const MolView::Atom& node = graph_.atoms[a];
    AtomExpression sharper;
    std::string key;
    const auto add = [&](AtomLiteral::Kind kind, std::uint32_t value) {
      sharper.literals.push_back(
          {kind, false, true, true, false, static_cast<std::int32_t>(value)});
      key += ' ' + std::to_string(kind) + ' ' + std::to_string(value);
    };
    if (node.degree > 1) add(AtomLiteral::MinDegree, node.degree);
    if (node.inRing) add(AtomLiteral::InRing, 1);
    if (key.empty()) continue;
    sharper.base = pattern_.atoms[a];
    pattern_.atoms[a] =
        ShareExpression(std::to_string(sharper.base->serial) + key, std::move(sharper));
  }
}

void Planner::SetDomains() {
  std::map<std::uint64_t, std::uint32_t> firstAtoms;
  for (std::uint32_t a = 0; a < NumAtoms(); ++a) firstAtoms.emplace(pattern_.atoms[a]->serial, a);
  // Rarest first, since these are most likely missing.
  std::vector<std::uint32_t> firsts;
  firsts.reserve(firstAtoms.size());
  for (const auto& [serial, atom] : firstAtoms) firsts.push_back(atom);
  std::sort(firsts.begin(), firsts.end(), [this](std::uint32_t a, std::uint32_t b) {
    return std::make_pair(Frequency(a), a) < std::make_pair(Frequency(b), b);
  });
  domainOf_.resize(NumAtoms());
  for (const std::uint32_t first : firsts) {
    domainOf_[first] = static_cast<std::uint32_t>(pattern_.domains.size());
    pattern_.domains.push_back({pattern_.atoms[first], pattern_.atoms[first]->serial, 0});
  }
  for (std::uint32_t a = 0; a < NumAtoms(); ++a) {
    domainOf_[a] = domainOf_[firstAtoms[pattern_.atoms[a]->serial]];
    ++pattern_.domains[domainOf_[a]].numAtoms;
  }
}

// The atom at the marked bond next to a double bond, and its side.
std::uint32_t Planner::FindReference(std::uint32_t bond, std::uint32_t atom, int& side,
                                     bool& orUnspecified) const {
  for (const Edge& edge : graph_.Edges(atom)) {
    const SmartsPattern::Bond& other = pattern_.bonds[edge.bond];
    if (edge.bond == bond || other.direction == 0) continue;
    side = other.bgn == atom ? other.direction : -other.direction;
    orUnspecified |= other.orUnspecified;
    return edge.atom;
  }
  return none;
}

void Planner::FindDoubleBonds() {
  for (std::uint32_t b = 0; b < pattern_.bonds.size(); ++b) {
    const SmartsPattern::Bond& bond = pattern_.bonds[b];
    if ((bond.mask & BondClass(2, false, false)) == 0 || bond.direction != 0) continue;
    SmartsPattern::DoubleBond entry{b, none, none, false, false};
    int bgnSide = 0;
    int endSide = 0;
    entry.bgnReference = FindReference(b, bond.bgn, bgnSide, entry.orUnspecified);
    entry.endReference = FindReference(b, bond.end, endSide, entry.orUnspecified);
    if (entry.bgnReference == none || entry.endReference == none) continue;
    entry.cis = bgnSide == endSide;
    pattern_.doubleBonds.push_back(entry);
  }
}

void Planner::AddPart(std::uint32_t first) {
  std::vector<std::uint32_t> atoms{first};
  inPart_[first] = true;
  for (std::size_t next = 0; next < atoms.size(); ++next) {
    for (const Edge& edge : graph_.Edges(atoms[next])) {
      if (inPart_[edge.atom]) continue;
      inPart_[edge.atom] = true;
      atoms.push_back(edge.atom);
    }
  }
  SmartsPattern::Part part{static_cast<std::uint32_t>(atoms.size()),
                           static_cast<std::uint32_t>(pattern_.steps.size()), 0};
  if (fromFirstAtom_ && first == 0) {
    AddWay(0);
    part.numWays = 1;
  } else {
    // Begin with the expressions expected to have the fewest atoms, one atom for each.
    std::stable_sort(atoms.begin(), atoms.end(), [this](std::uint32_t a, std::uint32_t b) {
      return std::make_tuple(Frequency(a), domainOf_[a], a) <
             std::make_tuple(Frequency(b), domainOf_[b], b);
    });
    for (std::size_t i = 0; i < atoms.size() && part.numWays < maxWays; ++i) {
      if (i != 0 && domainOf_[atoms[i]] == domainOf_[atoms[i - 1]]) continue;
      AddWay(atoms[i]);
      ++part.numWays;
    }
  }
  pattern_.parts.push_back(part);
}

// Rings are closed as soon as possible; otherwise the rarest atom comes next, leaves last.
void Planner::AddWay(std::uint32_t root) {
  using Key = std::tuple<std::int64_t, double, std::int64_t, std::uint32_t>;
  const auto keyOf = [this](std::uint32_t a) {
    return Key(-static_cast<std::int64_t>(waiting_[a]), Frequency(a),
               -static_cast<std::int64_t>(graph_.atoms[a].degree), a);
  };
  std::vector<std::uint32_t> placed;
  std::set<Key> frontier{keyOf(root)};
  while (!frontier.empty()) {
    const std::uint32_t atom = std::get<3>(*frontier.begin());
    frontier.erase(frontier.begin());
    SmartsPattern::Step step{};
    step.atom = atom;
    step.domain = domainOf_[atom];
    step.parent = none;
    step.firstClosure = static_cast<std::uint32_t>(pattern_.closures.size());
    step.group = pattern_.groups[atom];
    for (const Edge& edge : graph_.Edges(atom)) {
      const std::uint32_t mask = pattern_.bonds[edge.bond].mask;
      if (position_[edge.atom] == none) {
        if (waiting_[edge.atom] != 0) frontier.erase(keyOf(edge.atom));
        ++waiting_[edge.atom];
        frontier.insert(keyOf(edge.atom));
      } else if (step.parent == none) {
        step.parent = edge.atom;
        step.mask = mask;
      } else {
        pattern_.closures.push_back({edge.atom, mask});
        ++step.numClosures;
      }
    }
    position_[atom] = static_cast<std::uint32_t>(placed.size());
    placed.push_back(atom);
    pattern_.steps.push_back(step);
  }
  for (const std::uint32_t atom : placed) {
    position_[atom] = none;
    waiting_[atom] = 0;
  }
}

}  // namespace

std::shared_ptr<const AtomExpression> ShareExpression(const std::string& key,
                                                      AtomExpression&& expression) {
  return ExpressionRegistry::Get().Share(key, std::move(expression));
}

void PlanSearch(SmartsPattern& pattern, bool fromFirstAtom) {
  Planner(pattern, fromFirstAtom).Plan();
}

}  // namespace Quarnel
