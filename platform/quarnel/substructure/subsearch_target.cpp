#include "platform/quarnel/substructure/subsearch_target_local.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "contract/quarnel/perception.h"
#include "platform/quarnel/molecule/workspace_local.h"
#include "platform/quarnel/perception/hybridization_local.h"
#include "platform/quarnel/substructure/subsearch_local.h"

// Many patterns need the same properties of an atom: the 166 MACCS keys share 25 primitives. Each
// primitive and each expression is evaluated once for all atoms of the molecule, into a set of
// bits; expressions combine the sets of their primitives word by word. Sets are consecutive in one
// array, indexed by a hash table of open addressing whose key is the serial number of the
// expression, which is unique in the process, or the code of the primitive. A recursive primitive
// runs a search of its own from each atom that satisfies the rest of its expression.

namespace Quarnel {

ZQSubSearchTarget::ZQSubSearchTarget(const ZQMolBase& mol)
    : target_(std::make_unique<SmartsTarget>(mol)) {}
ZQSubSearchTarget::~ZQSubSearchTarget() = default;

SmartsTarget::SmartsTarget(const ZQMolBase& mol) : mol_(mol), table_(firstTableSize) {
  const Workspace<MolView> workspace;
  MolView& view = workspace->Read(mol, MolView::Properties);
  if (!mol.IsPerceived(ZQPerceived::Rings)) view.FindRings();
  atoms.resize(view.NumAtoms());
  bonds.resize(view.NumBonds());
  edges.resize(view.edges.size());
  for (std::uint32_t b = 0; b < view.NumBonds(); ++b) {
    const MolView::Bond& bond = view.bonds[b];
    bonds[b] = {bond.bond, bond.bgn, bond.end, BondClass(bond.order, bond.aromatic, bond.inRing)};
  }
  for (std::uint32_t a = 0; a < view.NumAtoms(); ++a) {
    const MolView::Atom& from = view.atoms[a];
    Atom& atom = atoms[a];
    atom = {from, from.implicitH, from.implicitH, 0};
    for (std::uint32_t e = from.firstEdge; e < from.firstEdge + from.degree; ++e) {
      const MolView::Edge edge = view.edges[e];
      const MolView::Bond& bond = view.bonds[edge.bond];
      edges[e] = {edge.atom, edge.bond, bonds[edge.bond].bondClass};
      atom.totalH += view.atoms[edge.atom].element == 1;
      atom.valence += bond.order;
      atom.ringBonds += bond.inRing;
    }
  }
  numWords_ = (NumAtoms() + 63) / 64;
  words_.reserve(numWords_ * firstTableSize / 2);
}

namespace {

/// A set of atoms under construction; sets in the target's table may move in the meantime.
class WordBuffer {
 public:
  explicit WordBuffer(std::size_t size) : many_(size > few ? size : 0) {}
  std::uint64_t* Get() { return many_.empty() ? few_ : many_.data(); }

 private:
  static constexpr std::size_t few = 8;  // 512 atoms: small molecules need no memory
  std::uint64_t few_[few];
  std::vector<std::uint64_t> many_;
};

}  // namespace

SmartsTarget::Set SmartsTarget::Keep(std::uint64_t key, const std::uint64_t* words) {
  if (++numEntries_ * 2 > table_.size()) {
    std::vector<Entry> old(table_.size() * 2);
    old.swap(table_);
    for (const Entry& entry : old) {
      if (entry.key != 0) *Place(entry.key) = entry;
    }
  }
  Set set{static_cast<std::uint32_t>(words_.size()), 0};
  for (std::uint32_t w = 0; w < numWords_; ++w) {
    set.count += static_cast<std::uint32_t>(std::popcount(words[w]));
  }
  words_.insert(words_.end(), words, words + numWords_);
  *Place(key) = {key, set};
  return set;
}

SmartsTarget::Set SmartsTarget::Make(const AtomExpression& expression) {
  WordBuffer result(numWords_);
  Evaluate(expression, result.Get());
  return Keep(expression.serial, result.Get());
}

void SmartsTarget::Evaluate(const AtomExpression& expression, std::uint64_t* result) {
  if (expression.base) {
    const Set base = Find(*expression.base);
    std::copy_n(Words(base), numWords_, result);
  } else {
    std::fill_n(result, numWords_, ~std::uint64_t{0});
    if (NumAtoms() % 64 != 0) result[numWords_ - 1] = (std::uint64_t{1} << NumAtoms() % 64) - 1;
  }
  // Recursive patterns come last, for the remaining atoms.
  const auto restrictTo = [&](const AtomLiteral* first, const AtomLiteral* last,
                              std::uint64_t* term) {
    for (const bool recursive : {false, true}) {
      for (const AtomLiteral* literal = first; literal <= last; ++literal) {
        if ((literal->kind == AtomLiteral::Recursive) == recursive) {
          Restrict(expression, *literal, term);
        }
      }
    }
  };
  const AtomLiteral* literal = expression.literals.data();
  for (const AtomLiteral* end = literal + expression.literals.size(); literal != end;) {
    const auto endOfTerm = [&literal] {
      const AtomLiteral* last = literal;
      while (!last->endsTerm) ++last;
      return last;
    };
    const AtomLiteral* last = endOfTerm();
    if (last->endsClause) {  // the only term
      restrictTo(literal, last, result);
      literal = last + 1;
      continue;
    }
    WordBuffer clause(numWords_);
    WordBuffer term(numWords_);
    std::fill_n(clause.Get(), numWords_, 0);
    do {
      last = endOfTerm();
      std::copy_n(result, numWords_, term.Get());
      restrictTo(literal, last, term.Get());
      for (std::uint32_t w = 0; w < numWords_; ++w) clause.Get()[w] |= term.Get()[w];
      literal = last + 1;
    } while (!last->endsClause);
    std::copy_n(clause.Get(), numWords_, result);
  }
}

// Removes the atoms that don't satisfy the literal.
void SmartsTarget::Restrict(const AtomExpression& expression, const AtomLiteral& literal,
                            std::uint64_t* result) {
  if (literal.kind == AtomLiteral::Chirality) return;  // tested by the search
  if (literal.kind != AtomLiteral::Recursive) {
    const std::uint64_t* words = Words(Find(literal));
    for (std::uint32_t w = 0; w < numWords_; ++w) {
      result[w] &= literal.negated ? ~words[w] : words[w];
    }
    return;
  }
  SmartsSearch search;
  const bool possible =
      search.Start(*expression.patterns[static_cast<std::size_t>(literal.value)], *this);
  for (std::uint32_t w = 0; w < numWords_; ++w) {
    for (std::uint64_t left = result[w]; left != 0; left &= left - 1) {
      const auto bit = static_cast<std::uint32_t>(std::countr_zero(left));
      if ((possible && search.NextAt(w * 64 + bit)) == literal.negated) {
        result[w] &= ~(std::uint64_t{1} << bit);
      }
    }
  }
}

// The atoms that satisfy the primitive, without its negation.
SmartsTarget::Set SmartsTarget::Find(const AtomLiteral& literal) {
  // Distinct from all serials; consecutive values have consecutive keys.
  const std::uint64_t key = std::uint64_t{1} << 63 |
                            static_cast<std::uint64_t>(literal.kind) << 48 |
                            (static_cast<std::uint32_t>(literal.value) + literal.kind * 16U);
  const Entry& entry = *Place(key);
  if (entry.key != 0) return entry.set;
  WordBuffer result(numWords_);
  SelectLiteral(literal, result.Get());
  return Keep(key, result.Get());
}

template <class Condition>
void SmartsTarget::Select(std::uint64_t* result, Condition condition) const {
  for (std::uint32_t first = 0; first < NumAtoms(); first += 64, ++result) {
    const std::uint32_t size = std::min(NumAtoms() - first, 64U);
    *result = 0;
    for (std::uint32_t i = 0; i < size; ++i) {
      *result |= std::uint64_t{condition(atoms[first + i])} << i;
    }
  }
}

void SmartsTarget::SelectLiteral(const AtomLiteral& literal, std::uint64_t* result) {
  const auto value = static_cast<std::uint32_t>(literal.value);
  const auto select = [&](auto condition) { Select(result, condition); };
  const auto selectBy = [&](const auto& values) {
    Select(result, [&](const Atom& atom) { return values[&atom - atoms.data()] == value; });
  };
  switch (literal.kind) {
    case AtomLiteral::Any:
    case AtomLiteral::Chirality:
    case AtomLiteral::Recursive:
      return select([](const Atom&) { return true; });
    case AtomLiteral::Aromatic:
      return select([](const Atom& atom) { return atom.aromatic; });
    case AtomLiteral::Element:
      return select([=](const Atom& atom) { return atom.element == value; });
    case AtomLiteral::AliphaticElement:
      return select([=](const Atom& atom) { return atom.element == value && !atom.aromatic; });
    case AtomLiteral::AromaticElement:
      return select([=](const Atom& atom) { return atom.element == value && atom.aromatic; });
    case AtomLiteral::Isotope:
      return select([=](const Atom& atom) { return atom.isotope == value; });
    case AtomLiteral::Charge:
      return select([&](const Atom& atom) { return atom.charge == literal.value; });
    case AtomLiteral::Degree:
      return select([=](const Atom& atom) { return atom.degree == value; });
    case AtomLiteral::MinDegree:
      return select([=](const Atom& atom) { return atom.degree >= value; });
    case AtomLiteral::Connections:
      return select([=](const Atom& atom) { return atom.degree + atom.implicitH == value; });
    case AtomLiteral::TotalH:
      return select([=](const Atom& atom) { return atom.totalH == value; });
    case AtomLiteral::ImplicitH:
      return select([=](const Atom& atom) { return atom.implicitH == value; });
    case AtomLiteral::Valence:
      return select([=](const Atom& atom) { return atom.valence == value; });
    case AtomLiteral::InRing:
      return select([](const Atom& atom) { return atom.inRing; });
    case AtomLiteral::RingBonds:
      return select([=](const Atom& atom) { return atom.ringBonds == value; });
    case AtomLiteral::RingCount:
      return value == 0 ? select([](const Atom& atom) { return !atom.inRing; })
                        : selectBy(Rings().count);
    case AtomLiteral::RingSize:
      return value == 0 ? select([](const Atom& atom) { return !atom.inRing; })
                        : selectBy(Rings().smallest);
    case AtomLiteral::Hybridization:
      return selectBy(Hybridizations());
  }
}

const RingCounts& SmartsTarget::Rings() {
  if (rings_.count.empty()) {
    std::vector<std::pair<std::uint32_t, std::uint32_t>> inRing;
    for (const Bond& bond : bonds) {
      if ((bond.bondClass & ringBonds) != 0) inRing.emplace_back(bond.bgn, bond.end);
    }
    rings_ = CountRelevantCycles(NumAtoms(), inRing);
  }
  return rings_;
}

const std::vector<std::uint8_t>& SmartsTarget::Hybridizations() {
  if (hybridization_.empty()) {
    const Workspace<MolView> view;
    FindHybridization(view->Read(mol_, MolView::Properties), hybridization_);
    if (mol_.IsPerceived(ZQPerceived::Hybridization)) {
      for (std::uint32_t a = 0; a < NumAtoms(); ++a) {
        hybridization_[a] = static_cast<std::uint8_t>(atoms[a].atom->GetHyb());
      }
    }
  }
  return hybridization_;
}

const std::uint64_t* SmartsTarget::Neighbours(std::uint32_t mask) {
  for (std::size_t i = 0; i < masks_.size(); ++i) {
    if (masks_[i] == mask) return neighbours_[i].data();
  }
  masks_.push_back(mask);
  std::array<std::uint64_t, 64>& sets = neighbours_.emplace_back();
  for (std::uint32_t a = 0; a < NumAtoms(); ++a) {
    std::uint64_t word = 0;
    for (std::uint32_t e = atoms[a].firstEdge; e < atoms[a].firstEdge + atoms[a].degree; ++e) {
      word |= std::uint64_t{(edges[e].bondClass & mask) != 0} << edges[e].atom;
    }
    sets[a] = word;
  }
  return sets.data();
}

const std::vector<std::uint32_t>& SmartsTarget::Components() {
  if (!components_.empty()) return components_;
  std::vector<unsigned int> parts;
  ZQDetermineComponents(mol_, parts);
  for (const Atom& atom : atoms) components_.push_back(parts[atom.atom->GetIdx()]);
  return components_;
}

}  // namespace Quarnel
