#pragma once

/// The back ends of a fast database. The base has the header, the ways from a molecule or a record
/// to a query fingerprint, and every query as a scan on the CPU. A back end supplies the records,
/// and overrides the queries that it has a faster way for.
///
/// A file whose header has another number of words than its type is not scanned: each query but
/// that of a record warns "%s fingerprints of %lu words in %s don't fit their type!" and is empty.

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "korvex/fpfast.h"
#include "korvex/fpfast_database.h"
#include "korvex/fpfast_kernels_local.h"
#include "korvex/fpfast_local.h"

namespace ZQKorvex {

class ZQFastFPDatabaseImplBase {
 public:
  explicit ZQFastFPDatabaseImplBase(const std::string& filename);
  virtual ~ZQFastFPDatabaseImplBase() = default;
  ZQFastFPDatabaseImplBase(const ZQFastFPDatabaseImplBase&) = delete;
  ZQFastFPDatabaseImplBase& operator=(const ZQFastFPDatabaseImplBase&) = delete;

  virtual bool IsValid() const { return valid_; }
  virtual unsigned int GetMemoryType() const = 0;
  virtual std::string GetMemoryTypeString() const = 0;
  virtual ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                                       const ZQFPDatabaseOptions& options) const;
  virtual ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                             const ZQFPDatabaseOptions& options) const;
  virtual ZQIter<double> GetRawScores(const ZQFingerPrint& query,
                                      const ZQFPDatabaseOptions& options) const;
  virtual ZQIter<float> GetAllScores(const ZQFPDatabaseOptions& options) const;
  virtual ZQFPHistogram GetHistogram(const ZQFPDatabaseOptions& options, unsigned long bins) const;
  virtual ZQFPVariogram GetVariogram(const std::vector<float>& values,
                                     const ZQFPDatabaseOptions& options, unsigned long bins) const;
  virtual ZQIter<ZQSimScorePair> GetSparseMatrix(const ZQFPDatabaseOptions& options) const;
  /// The result must be uninitialized. After an exception it is the caller's to reset its status.
  virtual unsigned int SortedSearch(ZQSimSearchResult& result, const ZQFingerPrint& query,
                                    const ZQFPDatabaseOptions& options) const;
  /// The raw content of a record.
  virtual bool GetFingerPrint(std::vector<std::uint64_t>& words, std::uint64_t& moleculeIndex,
                              std::uint64_t& popcount, std::uint64_t index) const;
  // The slots above keep their places; what is added comes behind them.
  virtual std::vector<ZQIter<ZQSimScore>> GetSortedScores(const std::vector<ZQFingerPrint>& queries,
                                                          const ZQFPDatabaseOptions& options) const;

  /// Both need a valid object.
  const ZQFPTypeBase* GetFPTypeBase() const;
  std::uint64_t NumFingerPrints() const;
  const ZQFastFPDatabaseParams& GetHeader() const { return params_; }

  /// A stored fingerprint and its molecule index. False after the warning "... : cannot access
  /// fingerprint!".
  bool GetFingerPrint(ZQFingerPrint& fp, std::uint64_t& moleculeIndex, std::uint64_t index) const;
  /// The query fingerprint of a molecule or of a record. False after the warning "%s cannot
  /// generate fingerprint!" with `caller`.
  bool MakeQuery(ZQFingerPrint& fp, const ZQMolBase& mol, const std::string& caller) const;
  bool MakeQuery(ZQFingerPrint& fp, std::uint64_t index, const std::string& caller) const;

 protected:
  /// The first record, for a query over all of them. Null, after a warning with `caller`, if they
  /// can't be read.
  virtual const std::uint64_t* GetRecords(const char* caller) const = 0;
  /// One record, null if it can't be read.
  virtual const std::uint64_t* GetRecord(std::uint64_t index) const = 0;

  /// Words of a record.
  std::uint64_t Stride() const { return params_.NumWords() + zqRecordPrefixWords; }

  bool valid_;
  unsigned int popcountMethod_ = 0;
  std::string filename_;
  /// Open while the object is made, so that header and records come from one file, whatever takes
  /// its name meanwhile.
  zqifstream in_;
  ZQFastFPDatabaseParams params_;

 private:
  /// What a kernel reads. None, after a warning with `caller`, if there is nothing to scan.
  std::optional<ZQScanRecords> GetScanRecords(const char* caller) const;
};

}  // namespace ZQKorvex
