#pragma once

/// A fast fingerprint database over one `.fpbin` file (fpfast.h). It is immutable once constructed;
/// all queries are const and may be made on any threads: they run concurrently, on a GPU one after
/// another. The file must not change while the database is open.
///
/// Every query checks its arguments first. If a check fails, it warns and returns the empty value:
/// an empty iterator, false, 0, -1, or a histogram without samples. Scores are computed in double
/// precision from bit counts; two fingerprints without bits score 0.0 by Tanimoto, Cosine, Dice and
/// Tversky. If memory runs out, a query warns and returns an empty result.

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "korvex/fpdatabaseoptions.h"
#include "korvex/fpfast.h"
#include "korvex/fphistogram.h"
#include "korvex/simsearch_result.h"

namespace ZQKorvex {

namespace ZQFastFPDatabaseMemoryType {
inline constexpr unsigned int MemoryMapped = 1;  ///< scans the file through the page cache
inline constexpr unsigned int InMemory = 2;      ///< loads and checks all records when opened
/// On a GPU; memory-mapped if there is none. Takes fingerprints of a multiple of 1024 bits, gives
/// the same results, and has no `SortedSearch`.
inline constexpr unsigned int CUDA = 3;
}  // namespace ZQFastFPDatabaseMemoryType

class ZQFastFPDatabaseImplBase;

class ZQ_EXPORT ZQFastFPDatabase {
 public:
  /// Opens a file. Opening memory-mapped takes the same time for any number of records; the first
  /// query maps the pages. A bad file warns and leaves an invalid object.
  explicit ZQFastFPDatabase(const std::string& filename,
                            unsigned int memoryType = ZQFastFPDatabaseMemoryType::MemoryMapped);
  ~ZQFastFPDatabase();
  ZQFastFPDatabase(const ZQFastFPDatabase&) = delete;
  ZQFastFPDatabase& operator=(const ZQFastFPDatabase&) = delete;

  bool IsValid() const;
  const ZQFPTypeBase* GetFPTypeBase() const;
  std::uint64_t NumFingerPrints() const;
  /// A constant of `ZQFastFPDatabaseMemoryType`, and "memory-mapped", "in-memory" or "cuda".
  unsigned int GetMemoryType() const;
  std::string GetMemoryTypeString() const;

  /// The file's header; for an invalid database, the part that could be read.
  const ZQFastFPDatabaseParams& GetHeader() const;

  /// A stored fingerprint.
  bool GetFingerPrint(ZQFingerPrint& fp, std::uint64_t index) const;
  /// The molecule's index in the molecule file.
  std::int64_t GetMoleculeIndex(std::uint64_t index) const;

  /// Scores no worse than the cutoff, in file order. Limit and order are ignored.
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                               const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetScores(const ZQMolBase& query, const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetScores(std::uint64_t index, const ZQFPDatabaseOptions& options) const;

  /// The best of the scores strictly better than the cutoff, best first, on the options' number of
  /// threads. Of equal scores those of lower index are better, so that the hits depend on records,
  /// query and options alone. In descending order 0.0 is never included. The type of a query
  /// fingerprint isn't checked.
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetSortedScores(const ZQMolBase& query,
                                     const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetSortedScores(std::uint64_t index, const ZQFPDatabaseOptions& options) const;
  /// The same for many queries in one pass, on the options' number of threads: one iterator for
  /// each query, with the same content as for a single query.
  std::vector<ZQIter<ZQSimScore>> GetSortedScores(const std::vector<ZQFingerPrint>& queries,
                                                  const ZQFPDatabaseOptions& options) const;

  /// All scores, in file order.
  ZQIter<double> GetRawScores(const ZQFingerPrint& query, const ZQFPDatabaseOptions& options) const;
  ZQIter<double> GetRawScores(const ZQMolBase& query, const ZQFPDatabaseOptions& options) const;
  ZQIter<double> GetRawScores(std::uint64_t index, const ZQFPDatabaseOptions& options) const;

  /// The n * n scores of all ordered pairs, row by row.
  ZQIter<float> GetAllScores(const ZQFPDatabaseOptions& options) const;
  /// The distribution over 0.0 to 1.0 of the scores of all pairs, each once and without the
  /// diagonal; for Tversky, of all n * n.
  ZQFPHistogram GetHistogram(const ZQFPDatabaseOptions& options, unsigned long bins) const;
  /// Semivariance of the values, one for each fingerprint, by distance (1 - score). Not for
  /// Tversky.
  ZQFPVariogram GetVariogram(const std::vector<float>& values, const ZQFPDatabaseOptions& options,
                             unsigned long bins) const;
  /// The nearest neighbours of each fingerprint, itself included: as many as the limit, by
  /// descending score, ties by descending index. With a cutoff, those above it, and those equal to
  /// it except fingerprint 0. A limit above the number of fingerprints is refused; 0 warns and
  /// means all.
  ZQIter<ZQSimScorePair> GetSparseMatrix(const ZQFPDatabaseOptions& options) const;

  /// Computes hits and histogram of one query on the options' number of threads. Returns the status
  /// of the result, which any thread may poll.
  unsigned int SortedSearch(ZQSimSearchResult& result, const ZQMolBase& query,
                            const ZQFPDatabaseOptions& options) const;

  // The checks. Each failure warns with the caller's name: "%s : invalid ZQFastFPDatabase object!",
  // "%s : empty molecule!", "%s : unknown similarity measure type '%d'!", "%s : invalid fingerprint
  // type!" or "%s : fingerprint type mismatch!", "%s : fingerprint index out of range!".
  bool IsValidDatabase(const char* caller) const;
  bool IsValidMolecule(const ZQMolBase& mol, const char* caller) const;
  bool IsValidOptions(const ZQFPDatabaseOptions& options, const char* caller) const;
  bool IsValidFPType(const ZQFingerPrint& fp, const char* caller) const;
  bool IsValidFPIndex(std::uint64_t index, const char* caller) const;

  /// The back end.
  const ZQFastFPDatabaseImplBase& GetImpl() const { return *impl_; }

 private:
  std::unique_ptr<ZQFastFPDatabaseImplBase> impl_;
};

/// Whether this machine has a popcount function for scans.
ZQ_EXPORT bool ZQIsFastFPDatabaseReady();

}  // namespace ZQKorvex
