#pragma once

/// What a fingerprint sees of a molecule, in its atoms and bonds: patterns (which fragment sets
/// which bit), coverage (the atoms and bonds of fragments) and overlap (the fragments that two
/// molecules share). The generator of the fingerprint itself enumerates the fragments.
///
/// An invalid molecule gives an empty result without a message. So does, after the error "... : out
/// of memory", a result that doesn't fit in memory; after "... : more than 4000000 fragments in a
/// molecule" a molecule with more than `ZQMostFragments`; and after "... : an atom with %d
/// neighbours (at most %d can be told apart in a text)" one whose environments have no text. The
/// type must be of the function's kind: else an assertion failure, and an empty result.
///
/// Results refer to the caller's molecules, which must outlive them, unedited. A molecule is
/// written during a call (generic data, removed before the return), although it is constant: no
/// other thread may use it at that time. Calls for distinct molecules are independent. Fragments of
/// symmetric atoms are all found, unless the molecule itself has perceived symmetry classes: then
/// only those of the first atom of each class.

#include <cstddef>
#include <string>
#include <utility>

#include "contract/quarnel/atombondset.h"
#include "contract/quarnel/subsearch.h"
#include "korvex/fingerprint.h"

namespace ZQKorvex {

/// The most fragments of one molecule that any function here enumerates, repeats included.
inline constexpr std::size_t ZQMostFragments = 4000000;

/// One occurrence of a fragment in a molecule, and the bit that it sets.
class ZQFPPattern : public ZQAtomBondSet {
 public:
  ZQFPPattern(ZQIter<ZQAtomBase> atoms, ZQIter<ZQBondBase> bonds, std::string smarts,
              unsigned int hash, unsigned int bit)
      : smarts_(std::move(smarts)), hash_(hash), bit_(bit) {
    for (; atoms; ++atoms) AddAtom(&*atoms);
    for (; bonds; ++bonds) AddBond(&*bonds);
  }
  ZQFPPattern(ZQAtomBondSet set, std::string smarts, unsigned int hash, unsigned int bit)
      : ZQAtomBondSet(std::move(set)), smarts_(std::move(smarts)), hash_(hash), bit_(bit) {}
  ZQFPPattern* CreateCopy() const override { return new ZQFPPattern(*this); }

  /// The fragment's text identifier (unhashed.h): a name that resembles SMARTS, without ring
  /// closures.
  const std::string& GetSMARTS() const { return smarts_; }
  /// The 32-bit identifier.
  unsigned int GetHash() const { return hash_; }
  /// The identifier modulo the hash size: the bit of the fingerprint.
  unsigned int GetBit() const { return bit_; }

 private:
  std::string smarts_;
  unsigned int hash_;
  unsigned int bit_;
};

/// All occurrences in the order of the generator: a path is found from either end, an environment
/// that covers its component from each of its atoms. The bonds of an environment or tree span its
/// atoms without closing a ring. For path, circular and tree types; else, by the kind, the warning
/// "... is not available for MACCS fingerprint!", "... is not available for Lingo fingerprint!" or
/// "... unknown fingerprint type!". A null type is an assertion failure with the warning "...
/// invalid fingerprint type pointer!".
ZQ_EXPORT ZQIter<ZQFPPattern> ZQGetFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQFPPattern> ZQGetPathFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQFPPattern> ZQGetCircularFPPatterns(const ZQMolBase& mol,
                                                      const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQFPPattern> ZQGetTreeFPPatterns(const ZQMolBase& mol, const ZQFPTypeBase* type);

/// The distinct sets of atoms and bonds of the fragments; with `unique`, only the first occurrence
/// of each text. For path, circular and tree types, and for MACCS keys: there first the atoms of
/// elements that have a key (with `unique` one for each element), then the matches of each key
/// (with `unique` the first), without keys 125, 162 and 166. Other kinds cause the warnings of
/// `ZQGetFPPatterns`.
ZQ_EXPORT ZQIter<ZQAtomBondSet> ZQGetFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                                bool unique);
ZQ_EXPORT ZQIter<ZQAtomBondSet> ZQGetPathFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                                    bool unique);
ZQ_EXPORT ZQIter<ZQAtomBondSet> ZQGetCircularFPCoverage(const ZQMolBase& mol,
                                                        const ZQFPTypeBase* type, bool unique);
ZQ_EXPORT ZQIter<ZQAtomBondSet> ZQGetTreeFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                                    bool unique);
ZQ_EXPORT ZQIter<ZQAtomBondSet> ZQGetMACCSFPCoverage(const ZQMolBase& mol, const ZQFPTypeBase* type,
                                                     bool unique);

/// A match for each occurrence of a shared fragment in `a` (pattern side) with each in `b` (target
/// side): atoms and bonds are paired by the order in which the generator found them. Fragments by
/// ascending text, then occurrences in the generator's order; for paths, matches that map the same
/// atoms and bonds onto the same ones are reported once. For MACCS keys the order of coverage, and
/// repeats are kept. Their number is the product of the occurrences: it grows fast for keys of
/// unconnected atoms. A copy of the iterator shares the matches. Kinds without overlap cause the
/// warnings of `ZQGetFPPatterns`.
ZQ_EXPORT ZQIter<ZQMatchBase> ZQGetFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                             const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQMatchBase> ZQGetPathFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                                 const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQMatchBase> ZQGetCircularFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                                     const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQMatchBase> ZQGetTreeFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                                 const ZQFPTypeBase* type);
ZQ_EXPORT ZQIter<ZQMatchBase> ZQGetMACCSFPOverlap(const ZQMolBase& a, const ZQMolBase& b,
                                                  const ZQFPTypeBase* type);

}  // namespace ZQKorvex
