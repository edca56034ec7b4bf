#pragma once

/// The base class of a fast database's back ends. It holds the header, makes query fingerprints
/// from molecules and records, and runs every query as a scan on the CPU. A back end supplies the
/// records, and overrides the queries that it can run faster.
///
/// A file whose header and type differ in the number of words is not scanned: each query except
/// that for a record warns "%s fingerprints of %lu words in %s don't fit their type!" and returns
/// nothing.

#include <cstdint>
#include <memory>
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
  /// The result must be uninitialized, and is so again after an exception.
  virtual unsigned int SortedSearch(ZQSimSearchResult& result, const ZQFingerPrint& query,
                                    const ZQFPDatabaseOptions& options) const;
  /// The raw content of a record.
  virtual bool GetFingerPrint(std::vector<std::uint64_t>& words, std::uint64_t& moleculeIndex,
                              std::uint64_t& popcount, std::uint64_t index) const;
  // The vtable slots above keep their order; new functions follow them.
  virtual std::vector<ZQIter<ZQSimScore>> GetSortedScores(const std::vector<ZQFingerPrint>& queries,
                                                          const ZQFPDatabaseOptions& options) const;

  /// Both require a valid object.
  const ZQFPTypeBase* GetFPTypeBase() const;
  std::uint64_t NumFingerPrints() const;
  const ZQFastFPDatabaseParams& GetHeader() const { return params_; }

  /// A stored fingerprint and its molecule index. False after the warning "... : cannot access
  /// fingerprint!".
  bool GetFingerPrint(ZQFingerPrint& fp, std::uint64_t& moleculeIndex, std::uint64_t index) const;
  /// Makes the query fingerprint of a molecule or of a record. False after the warning "%s cannot
  /// generate fingerprint!" with `caller`.
  bool MakeQuery(ZQFingerPrint& fp, const ZQMolBase& mol, const std::string& caller) const;
  bool MakeQuery(ZQFingerPrint& fp, std::uint64_t index, const std::string& caller) const;

 protected:
  /// The first record, for a query over all records. Null, after a warning with `caller`, if they
  /// can't be read.
  virtual const std::uint64_t* GetRecords(const char* caller) const = 0;
  /// One record, null if it can't be read.
  virtual const std::uint64_t* GetRecord(std::uint64_t index) const = 0;

  /// The input of a kernel. Empty, after a warning with `caller`, if there is nothing to scan.
  std::optional<ZQScanRecords> GetScanRecords(const char* caller) const;
  /// Words per record.
  std::uint64_t Stride() const { return params_.NumWords() + zqRecordPrefixWords; }

  bool valid_;
  unsigned int popcountMethod_ = 0;
  std::string filename_;
  /// Open during construction, so that header and records come from the same file even if another
  /// file takes its name meanwhile.
  zqifstream in_;
  ZQFastFPDatabaseParams params_;
};

}  // namespace ZQKorvex
