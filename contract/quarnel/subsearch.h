#pragma once

/// Substructure search by SMARTS, and its matches.
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
/// `[H]`, alone or with isotope and charge, is the hydrogen atom. No brackets are needed for `*`,
/// `a`, `A`, `B C N O P S F Cl Br I K V W Y U` and `b c n o p s`. The longest symbol wins: `[Sc]`
/// is scandium.
///
/// Bonds are `-` (not aromatic) `=` `#` `$` `:` `~` `@` (in a ring) `/` `\` and `/?` `\?`; without
/// a symbol a bond is single, aromatic or of no order. Operators are `!`, `&` or nothing, `,` and
/// `;`, in falling strength, for atoms and bonds. Branches, ring closures (`1`, `%12`, `%(123)`, a
/// bond symbol at either end) and dots are those of SMILES. Parentheses around whole parts require
/// one component for them, a different one for each pair: `(C.O).(N)`. White space ends the text.
///
/// A configuration is compared in the order of the mapped neighbours. In a pattern with three, the
/// missing one takes the position of an implicit hydrogen; with fewer, any drawn configuration
/// matches. `/` and `\` count in pairs around a double bond, and only if one is the whole
/// expression of its bond.
///
/// Rings are the relevant cycles, the union of all minimum cycle bases, so that `R<n>` depends on
/// the graph alone (P. Vismara, Electron. J. Combin. 4, R9, 1997). They are found by ranges of
/// length (3 to 8, 9 to 16 and so on); a range with more than 16384 families of candidates, far
/// more than in molecules, isn't counted, nor are longer ones.

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "contract/quarnel/mol.h"

namespace Quarnel {

class SmartsTarget;  // the tables of a molecule read by a search

/// An atom or bond of a pattern and its image in the molecule.
template <class T>
struct ZQMatchPair {
  T* pattern;
  T* target;
};

/// A mapping between the atoms and bonds of two graphs, without ownership.
class ZQ_EXPORT ZQMatchBase {
 public:
  virtual ~ZQMatchBase() = default;
  virtual const std::vector<ZQMatchPair<ZQAtomBase>>& GetAtomPairs() const = 0;
  virtual const std::vector<ZQMatchPair<ZQBondBase>>& GetBondPairs() const = 0;

  // Derived from the pairs, in their order.

  unsigned int NumAtoms() const { return static_cast<unsigned int>(GetAtomPairs().size()); }
  unsigned int NumBonds() const { return static_cast<unsigned int>(GetBondPairs().size()); }
  Bostrel::ZQIter<ZQAtomBase> GetPatternAtoms() const;
  Bostrel::ZQIter<ZQAtomBase> GetTargetAtoms() const;
  Bostrel::ZQIter<ZQBondBase> GetPatternBonds() const;
  Bostrel::ZQIter<ZQBondBase> GetTargetBonds() const;
};

class ZQ_EXPORT ZQMatch final : public ZQMatchBase {
 public:
  /// Makes room for this many pairs.
  void Reserve(std::size_t atoms, std::size_t bonds) {
    atoms_.reserve(atoms);
    bonds_.reserve(bonds);
  }
  void AddPair(ZQAtomBase* pattern, ZQAtomBase* target) { atoms_.push_back({pattern, target}); }
  void AddPair(ZQBondBase* pattern, ZQBondBase* target) { bonds_.push_back({pattern, target}); }
  const std::vector<ZQMatchPair<ZQAtomBase>>& GetAtomPairs() const override { return atoms_; }
  const std::vector<ZQMatchPair<ZQBondBase>>& GetBondPairs() const override { return bonds_; }

 private:
  std::vector<ZQMatchPair<ZQAtomBase>> atoms_;
  std::vector<ZQMatchPair<ZQBondBase>> bonds_;
};

/// A molecule prepared for searches by many patterns: each atom property is read once. Uses the
/// molecule's aromaticity unchanged; ring membership and hybridization are computed internally if
/// they aren't perceived. The molecule must outlive it, unchanged. For one thread.
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

/// A pattern, parsed once. Any number of threads may search with one object; a moved-from object
/// can only be assigned to or destroyed.
///
/// The order of matches depends only on pattern and molecule. The search backtracks from the atom
/// with the fewest candidates. Its time is short for most patterns but has no bound; its memory
/// doesn't grow with the number of matches unless they must be unique.
class ZQ_EXPORT ZQSubSearch {
 public:
  /// A text that can't be parsed gives an object that isn't valid and matches nothing, after one
  /// warning: "SMARTS column 4: found "Q", expected an atom primitive". `ignoreStereo` ignores `@`
  /// and `@@` and treats `/` and `\` as single bonds.
  explicit ZQSubSearch(const std::string& smarts, bool ignoreStereo = false);
  ~ZQSubSearch();
  ZQSubSearch(ZQSubSearch&& other) noexcept;
  ZQSubSearch& operator=(ZQSubSearch&& other) noexcept;

  bool IsValid() const;
  /// The pattern's atoms and bonds as used in matches: a graph without chemistry, atoms in the
  /// order of the text.
  const ZQMolBase& GetPattern() const;

  /// Whether there is a match.
  bool SingleMatch(const ZQMolBase& mol) const;
  bool SingleMatch(const ZQSubSearchTarget& target) const;
  /// The matches, with pairs in the order of the text. With `unique`, only the first of all matches
  /// onto one set of atoms. The search proceeds as the iterator advances; matches are kept for
  /// stepping back. The molecule must outlive the iterator, unchanged. The iterator may outlive
  /// this object; the atoms and bonds of the pattern exist as long as either.
  Bostrel::ZQIter<ZQMatchBase> Match(const ZQMolBase& mol, bool unique) const;
  /// The number of matches, counted up to `limit`.
  std::size_t CountMatches(const ZQSubSearchTarget& target, bool unique, std::size_t limit) const;

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace Quarnel
