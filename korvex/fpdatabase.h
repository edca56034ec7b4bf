#pragma once

/// A similarity database in memory: fingerprints of one type and of any kind, scored one by one on
/// the calling thread by the measures of measuresim.h. Fingerprints can be added at any time and
/// are never removed; the index of one is its position. For many fingerprints in a file and for
/// several threads there is the fast database (fpfast_database.h).
///
/// Const operations may run concurrently on one object, except for unhashed kinds: their searches
/// add the query's tokens to the database's table of tokens.
///
/// Lingo databases compare by the substrings of their texts (measuresim_lingo.h), those of unhashed
/// kinds by Tanimoto of the sets of tokens, in which a repeated token counts once. There two
/// fingerprints without tokens score NaN, which only an unsorted search without a cutoff returns.
///
/// A query of another type warns "ZQFPDatabase::GetScores() fingerprint type mismatch!" and returns
/// an empty iterator; so does a Lingo text of fewer than four characters, with
/// "ZQFPDatabase::GetScores() cannot initialize lingo similarity!", and without a message a
/// molecule that has no fingerprint. If memory runs out, or a measure of the caller throws, the
/// operation warns "ZQFPDatabase::GetScores() : %s!", with the exception's text, and has no result.

#include <cstdint>
#include <memory>

#include "korvex/fpdatabaseoptions.h"

namespace ZQKorvex {

class ZQFPDatabaseImplBase;

class ZQ_EXPORT ZQFPDatabase {
 public:
  /// What `AddFP` returns if nothing was added.
  static constexpr unsigned int noIndex = 0xFFFFFFFF;

  /// An empty database of the default type of a kind, or of a type, which must not be null (an
  /// assertion). A kind that isn't in the table of kinds reports the error
  /// "ZQFPDatabase::ZQFPDatabase() unknown fingerprint type". The object is then invalid: every
  /// other operation is an assertion failure and returns an empty value.
  explicit ZQFPDatabase(unsigned int fptype);
  explicit ZQFPDatabase(const ZQFPTypeBase* type);
  ~ZQFPDatabase();
  ZQFPDatabase(const ZQFPDatabase&) = delete;
  ZQFPDatabase& operator=(const ZQFPDatabase&) = delete;

  bool IsValid() const { return impl_ != nullptr; }
  const ZQFPTypeBase* GetFPTypeBase() const;

  /// Adds a copy of a fingerprint, or the fingerprint of a molecule, and returns its index.
  /// Returns `noIndex` without a message for a fingerprint of another type, for a molecule without
  /// a fingerprint, and beyond 4294967295 fingerprints.
  unsigned int AddFP(const ZQFingerPrint& fp);
  unsigned int AddFP(const ZQMolBase& mol);
  unsigned int NumFingerPrints() const;
  /// All fingerprints by index, in place: valid until the next `AddFP`.
  ZQIter<const ZQFingerPrint> GetFingerPrints() const;

  /// Sets the measure, by a constant of `ZQSimMeasure`, and the order; Tanimoto and descending at
  /// first. Tversky has the weights 0.95 and 0.05000001. Another number, or other than Tanimoto for
  /// an unhashed kind, warns "ZQFPDatabase::SetSimFunc() unknown similarity measure" and sets
  /// Tanimoto.
  void SetSimFunc(unsigned int measure, bool descending);
  /// The same with a copy of an object of any class; the query is its first argument. A Lingo
  /// database accepts only `ZQTanimotoSim` and `ZQTverskySim`, whose weights it ignores, and an
  /// unhashed one only `ZQTanimotoSim`; any other class warns "ZQFPDatabase::SetSimFunc() user
  /// defined similarity measure not allowed with %s database" and sets Tanimoto.
  void SetSimFunc(const ZQSimFuncBase& func, bool descending);

  /// Score threshold of the searches of a range: inclusive in unsorted ones, exclusive in sorted
  /// ones. At first there is none; clearing it keeps the value.
  void SetCutoff(float cutoff);
  void ClearCutoff();
  bool HasCutoff() const;
  float GetCutoff() const;
  /// True: greater scores are better. Only the order decides this, not the measure.
  void SetDescendingOrder(bool descending);
  bool GetDescendingOrder() const;

  // Searches of a range of indices, by the database's measure, order and cutoff. An `end` of 0 or
  // beyond the number of fingerprints means that number; `begin` not below it is an empty range.

  /// Scores no worse than the cutoff, by index.
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query, unsigned int begin,
                               unsigned int end) const;
  ZQIter<ZQSimScore> GetScores(const ZQMolBase& query, unsigned int begin, unsigned int end) const;
  /// The best `limit` of the scores strictly better than the cutoff, best first; 0 means all. In
  /// descending order without a cutoff 0.0 isn't included. Equal scores are ordered by ascending
  /// index.
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query, unsigned int limit,
                                     unsigned int begin, unsigned int end) const;
  ZQIter<ZQSimScore> GetSortedScores(const ZQMolBase& query, unsigned int limit, unsigned int begin,
                                     unsigned int end) const;

  // Searches of all fingerprints by the options' measure, weights, order and cutoff; the database's
  // own aren't used. The unsorted form has no limit. A Lingo database keeps its own measure. One of
  // an unhashed kind warns "ZQFPDatabase::GetScores() has not been implemented yet!" and returns an
  // empty iterator.

  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                               const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetScores(const ZQMolBase& query, const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetSortedScores(const ZQMolBase& query,
                                     const ZQFPDatabaseOptions& options) const;

 private:
  std::unique_ptr<ZQFPDatabaseImplBase> impl_;
};

}  // namespace ZQKorvex
