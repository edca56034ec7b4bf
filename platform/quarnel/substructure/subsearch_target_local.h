#pragma once

/// A molecule in flat arrays, with the set of atoms that satisfy each expression looked up,
/// computed once.

#include <array>
#include <cstdint>
#include <deque>
#include <vector>

#include "contract/quarnel/subsearch.h"
#include "platform/quarnel/molecule/molgraph_view_local.h"
#include "platform/quarnel/perception/relevant_cycles_local.h"
#include "platform/quarnel/substructure/smarts_parser_local.h"

namespace Quarnel {

class SmartsTarget {
 public:
  struct Edge {
    std::uint32_t atom;
    std::uint32_t bond;
    std::uint32_t bondClass;
  };
  struct Atom : MolView::Atom {
    std::uint32_t totalH;
    std::uint32_t valence;
    std::uint32_t ringBonds;
  };
  struct Bond {
    ZQBondBase* bond;
    std::uint32_t bgn;
    std::uint32_t end;
    std::uint32_t bondClass;
  };
  /// A set of atoms as bits, given by the position of its first word.
  struct Set {
    std::uint32_t first;
    std::uint32_t count;
  };

  explicit SmartsTarget(const ZQMolBase& mol);

  std::uint32_t NumAtoms() const { return static_cast<std::uint32_t>(atoms.size()); }
  /// Returns the atoms that satisfy the expression, without chirality. The words of a set move when
  /// another is looked up for the first time.
  Set Find(const AtomExpression& expression, std::uint64_t serial) {
    const Entry& entry = *Place(serial);
    return entry.key != 0 ? entry.set : Make(expression);
  }
  Set Find(const AtomExpression& expression) { return Find(expression, expression.serial); }
  /// For up to 64 atoms: by atom, the neighbours by a bond of the mask. Pointers remain valid.
  const std::uint64_t* Neighbours(std::uint32_t mask);
  const std::uint64_t* Words(Set set) const { return words_.data() + set.first; }
  const Edge* FindEdge(std::uint32_t from, std::uint32_t to) const {
    const Edge* edge = &edges[atoms[from].firstEdge];
    for (std::uint32_t i = atoms[from].degree; i != 0; --i, ++edge) {
      if (edge->atom == to) return edge;
    }
    return nullptr;
  }
  /// Connected components by atom.
  const std::vector<std::uint32_t>& Components();

  std::vector<Atom> atoms;
  std::vector<Bond> bonds;
  std::vector<Edge> edges;  // by atom

 private:
  struct Entry {
    std::uint64_t key;  // the expression's serial or the literal's code; 0 for a free slot
    Set set;
  };

  /// The MACCS keys look up 69 sets, and the table is at most half full.
  static constexpr std::size_t firstTableSize = 256;

  Entry* Place(std::uint64_t key) {
    std::size_t place = key & (table_.size() - 1);
    while (table_[place].key != key && table_[place].key != 0) {
      place = (place + 1) & (table_.size() - 1);
    }
    return &table_[place];
  }
  Set Keep(std::uint64_t key, const std::uint64_t* words);
  Set Make(const AtomExpression& expression);
  Set Find(const AtomLiteral& literal);
  void Evaluate(const AtomExpression& expression, std::uint64_t* result);
  void Restrict(const AtomExpression& expression, const AtomLiteral& literal,
                std::uint64_t* result);
  template <class Condition>
  void Select(std::uint64_t* result, Condition condition) const;
  void SelectLiteral(const AtomLiteral& literal, std::uint64_t* result);
  const RingCounts& Rings();
  const std::vector<std::uint8_t>& Hybridizations();

  const ZQMolBase& mol_;
  std::uint32_t numWords_;
  std::vector<std::uint64_t> words_;
  std::vector<Entry> table_;
  std::uint32_t numEntries_ = 0;
  std::vector<std::uint32_t> components_;
  std::vector<std::uint8_t> hybridization_;
  RingCounts rings_;
  std::vector<std::uint32_t> masks_;                      // masks of the entries of neighbours_
  std::deque<std::array<std::uint64_t, 64>> neighbours_;  // by atom
};

}  // namespace Quarnel
