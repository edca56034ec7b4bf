#pragma once

/// Substructure search by SMARTS, and the matches that it finds.
///
/// The language is Daylight's. Atoms in brackets, n being a number:
///
///     *  a  A                  any, aromatic, aliphatic
///     C c Cl se #n  13         element with or without aromaticity, mass number (0: unspecified)
///     D<n> X<n>                connections: explicit ones, or implicit hydrogens too; 1 without n
///     H<n> h<n>                hydrogens: all, 1 without n; implicit ones, at least 1 without n
///     v<n>                     sum of bond orders (Kekulé) and implicit hydrogens; 1 without n
///     R<n> r<n> x<n>           number of rings, size of the smallest, number of ring bonds; in any
///                              ring without n, in none for n = 0
///     + - ++ +n                charge, from -15 to +15
///     ^n                       hybridization: 0 none, 1 to 5 for sp, sp2, sp3, sp3d, sp3d2
///     @ @@ @? @@? @TH1         configuration; with "?" or none drawn
///     $(...)                   first atom of a pattern; up to 32 within each other
///     :n                       atom class, without effect
///
/// `[H]`, alone or with isotope and charge, is the hydrogen atom. Without brackets stand `*`, `a`,
/// `A`, `B C N O P S F Cl Br I K V W Y U` and `b c n o p s`. The longest symbol wins: `[Sc]` is
/// scandium.
///
/// Bonds are `-` (not aromatic) `=` `#` `$` `:` `~` `@` (in a ring) `/` `\` and `/?` `\?`; without
/// a symbol a bond is single, aromatic or of no order. Operators are `!`, `&` or nothing, `,` and
/// `;`, in falling strength, for atoms and bonds. Branches, ring closures (`1`, `%12`, `%(123)`, a
/// bond symbol at either end) and dots are those of SMILES. Parentheses around whole parts hold
/// them to one component, each pair to a component of its own: `(C.O).(N)`. White space ends the
/// text.
///
/// A configuration is compared as seen along the mapped neighbours; in a pattern of three, the one
/// left out stands where an implicit hydrogen would, and with fewer any configuration will do, but
/// one must be drawn. `/` and `\` count in pairs around a double bond, and only where one stands
/// alone in its bond's expression.
///
/// Rings are the relevant cycles, the union of all minimum cycle bases, so that `R<n>` depends on
/// the graph alone (P. Vismara, Electron. J. Combin. 4, R9, 1997). They are found by ranges of
/// length (3 to 8, 9 to 16 and so on); a range with more than 16384 families of candidates, far
/// beyond molecules, isn't counted, nor are longer ones.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

class SmartsTarget;  // the tables of a molecule that a search reads

/// An atom or bond of a pattern and the one of the molecule that it is mapped onto.
template <class T>
struct ZQMatchPair {
  T* pattern;
  T* target;
};

/// A mapping between the atoms and bonds of two graphs. Owns none of them.
class ZQ_EXPORT ZQMatchBase {
 public:
  virtual ~ZQMatchBase() = default;
  virtual const std::vector<ZQMatchPair<ZQAtomBase>>& GetAtomPairs() const = 0;
  virtual const std::vector<ZQMatchPair<ZQBondBase>>& GetBondPairs() const = 0;

  // What follows from the pairs, in their order.

  unsigned int NumAtoms() const { return static_cast<unsigned int>(GetAtomPairs().size()); }
  unsigned int NumBonds() const { return static_cast<unsigned int>(GetBondPairs().size()); }
  Bostrel::ZQIter<ZQAtomBase> GetPatternAtoms() const;
  Bostrel::ZQIter<ZQAtomBase> GetTargetAtoms() const;
  Bostrel::ZQIter<ZQBondBase> GetPatternBonds() const;
  Bostrel::ZQIter<ZQBondBase> GetTargetBonds() const;
};

class ZQ_EXPORT ZQMatch final : public ZQMatchBase {
 public:
  void AddPair(ZQAtomBase* pattern, ZQAtomBase* target) { atoms_.push_back({pattern, target}); }
  void AddPair(ZQBondBase* pattern, ZQBondBase* target) { bonds_.push_back({pattern, target}); }
  const std::vector<ZQMatchPair<ZQAtomBase>>& GetAtomPairs() const override { return atoms_; }
  const std::vector<ZQMatchPair<ZQBondBase>>& GetBondPairs() const override { return bonds_; }

 private:
  std::vector<ZQMatchPair<ZQAtomBase>> atoms_;
  std::vector<ZQMatchPair<ZQBondBase>> bonds_;
};

/// A molecule made ready to be searched by many patterns: what they need of an atom is looked up
/// once. Reads the molecule's aromaticity as it is; ring membership and hybridization are found
/// on the side if they aren't perceived. The molecule must outlive it, unchanged. Belongs to one
/// thread.
class ZQ_EXPORT ZQSubSearchTarget {
 public:
  explicit ZQSubSearchTarget(const ZQMolBase& mol);
  ~ZQSubSearchTarget();
  ZQSubSearchTarget(const ZQSubSearchTarget&) = delete;
  ZQSubSearchTarget& operator=(const ZQSubSearchTarget&) = delete;

 private:
  friend class ZQSubSearch;
  std::unique_ptr<SmartsTarget> target_;
};

/// A pattern, parsed once. Any number of threads may search with one object; one that was moved
/// from can only be assigned to or destroyed.
///
/// Matches come in an order that depends on pattern and molecule alone. The search backtracks from
/// the atom with the fewest candidates: its time is short for most patterns but has no bound, its
/// memory doesn't grow with the number of matches unless they must be unique.
class ZQ_EXPORT ZQSubSearch {
 public:
  /// A text that can't be parsed gives an object that isn't valid and matches nothing, after one
  /// warning: "SMARTS column 4: found "Q", expected an atom primitive". `ignoreStereo` takes `@`
  /// and `@@` as if they weren't there, `/` and `\` for single bonds.
  explicit ZQSubSearch(const std::string& smarts, bool ignoreStereo = false);
  ~ZQSubSearch();
  ZQSubSearch(ZQSubSearch&& other) noexcept;
  ZQSubSearch& operator=(ZQSubSearch&& other) noexcept;

  bool IsValid() const;
  /// The pattern's atoms and bonds as matches name them: a graph without chemistry, atoms in the
  /// order of the text.
  const ZQMolBase& GetPattern() const;

  /// Whether the pattern is found at all.
  bool SingleMatch(const ZQMolBase& mol) const;
  bool SingleMatch(const ZQSubSearchTarget& target) const;
  /// The matches, pairs in the order of the text. With `unique`, of all matches onto one set of
  /// atoms only the first. They are searched for as the iterator moves forward, and kept for its
  /// way back; the molecule must live and stay unchanged as long. The iterator doesn't need this
  /// object any more, but the atoms and bonds of the pattern live only as long as either.
  Bostrel::ZQIter<ZQMatchBase> Match(const ZQMolBase& mol, bool unique) const;
  /// Their number, counted up to `limit`.
  std::size_t CountMatches(const ZQSubSearchTarget& target, bool unique, std::size_t limit) const;

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace Quarnel
