#pragma once

/// What the back ends of a fast database share: the header, the popcount method, and the ways
/// from a molecule or an index to a query fingerprint.

#include <cstdint>
#include <string>
#include <vector>

#include "korvex/fpfast.h"
#include "korvex/fpfast_database.h"

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
                                       const ZQFPDatabaseOptions& options) const = 0;
  virtual ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                             const ZQFPDatabaseOptions& options) const = 0;
  virtual ZQIter<double> GetRawScores(const ZQFingerPrint& query,
                                      const ZQFPDatabaseOptions& options) const = 0;
  virtual ZQIter<float> GetAllScores(const ZQFPDatabaseOptions& options) const = 0;
  virtual ZQFPHistogram GetHistogram(const ZQFPDatabaseOptions& options,
                                     unsigned long bins) const = 0;
  virtual ZQFPVariogram GetVariogram(const std::vector<float>& values,
                                     const ZQFPDatabaseOptions& options,
                                     unsigned long bins) const = 0;
  virtual ZQIter<ZQSimScorePair> GetSparseMatrix(const ZQFPDatabaseOptions& options) const = 0;
  /// The result must be uninitialized.
  virtual unsigned int SortedSearch(ZQSimSearchResult& result, const ZQFingerPrint& query,
                                    const ZQFPDatabaseOptions& options) const = 0;
  /// The raw content of a record.
  virtual bool GetFingerPrint(std::vector<std::uint64_t>& words, std::uint64_t& moleculeIndex,
                              std::uint64_t& popcount, std::uint64_t index) const = 0;
  // The slots above keep their places; what is added comes behind them.
  virtual std::vector<ZQIter<ZQSimScore>> GetSortedScores(
      const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const = 0;

  /// Both need a valid object.
  const ZQFPTypeBase* GetFPTypeBase() const;
  std::uint64_t NumFingerPrints() const;
  const ZQFastFPDatabaseParams& GetHeader() const { return params_; }

  bool GetFingerPrint(ZQFingerPrint& fp, std::uint64_t index) const;
  ZQIter<ZQSimScore> GetScores(const ZQMolBase& query, const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetScores(std::uint64_t index, const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetSortedScores(const ZQMolBase& query,
                                     const ZQFPDatabaseOptions& options) const;
  ZQIter<ZQSimScore> GetSortedScores(std::uint64_t index, const ZQFPDatabaseOptions& options) const;
  ZQIter<double> GetRawScores(const ZQMolBase& query, const ZQFPDatabaseOptions& options) const;
  ZQIter<double> GetRawScores(std::uint64_t index, const ZQFPDatabaseOptions& options) const;
  unsigned int SortedSearch(ZQSimSearchResult& result, const ZQMolBase& query,
                            const ZQFPDatabaseOptions& options) const;

 protected:
  /// The query fingerprint of a molecule or of a record; without one warns and answers false.
  bool MakeQuery(ZQFingerPrint& fp, const ZQMolBase& mol, const char* caller) const;
  bool MakeQuery(ZQFingerPrint& fp, std::uint64_t index, const char* caller) const;

  bool valid_;
  unsigned int popcountMethod_ = 0;
  std::string filename_;
  /// Open while the object is made, so that header and records come from one file, whatever takes
  /// its name meanwhile.
  zqifstream in_;
  ZQFastFPDatabaseParams params_;
};

}  // namespace ZQKorvex
