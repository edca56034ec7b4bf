#pragma once

/// Scores of one fingerprint against a block of records, the base of all scan kernels.
///
/// Two methods give the same counts of common bits. The plain one ANDs each pair into a scratch
/// buffer and calls the given popcount function. If that function is one of the library's own, the
/// loops of a variant (fpfast_variants_local.h) replace it. The rest of the computation is shared,
/// so that a score depends only on the words and the stored counts of the two fingerprints.
///
/// A stored count above the number of bits is taken as that number, and a score is never outside
/// 0.0 to 1.0. So no file content causes a NaN, a failed conversion or an access outside a
/// histogram.

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include "korvex/fpfast_variants_local.h"

namespace ZQKorvex {

/// The records that a kernel reads: each is an id, a population count and `numWords` words.
struct ZQRecords {
  const std::uint64_t* data;
  std::uint64_t count;
  std::uint64_t numWords;
  /// Of a fingerprint, the rest of whose words is padding without bits.
  std::uint64_t numBits = 64 * numWords;

  std::uint64_t Stride() const { return numWords + 2; }
  const std::uint64_t* At(std::uint64_t index) const { return data + index * Stride(); }
  /// The address of a record, also of one past the end.
  std::uintptr_t AddressOf(std::uint64_t index) const {
    return reinterpret_cast<std::uintptr_t>(data) + 8 * index * Stride();
  }
  std::uint64_t Id(std::uint64_t index) const { return At(index)[0]; }
  std::uint64_t Count(std::uint64_t index) const { return std::min(At(index)[1], numBits); }
  const std::uint64_t* Words(std::uint64_t index) const { return At(index) + 2; }
};

/// A fingerprint that is scored against records.
struct ZQScoredRow {
  const std::uint64_t* words;
  std::uint64_t count;
};

class ZQScorer {
 public:
  ZQScorer(const ZQFPDatabaseOptions& options, const ZQRecords& records, ZQPopCountFunc popcount);

  /// Scores the row against the `n` records from `begin` on, at most `zqBlockRecords`. Prefetches
  /// the records from `next` on, which the caller scans next.
  void Scan(const ZQScoredRow& row, std::uint64_t begin, std::size_t n, std::uint64_t next,
            double* scores);
  /// What to prefetch meanwhile in a batch of records that ends at `end`, after which the batch
  /// from `nextBatch` on is scanned.
  std::uint64_t NextOf(std::uint64_t begin, std::uint64_t end, std::uint64_t nextBatch) const {
    const std::uint64_t next = begin + recordsAhead_;
    return next < end ? next : nextBatch + (next - end);
  }
  /// The same for records of a database that are scanned in order.
  void Scan(const ZQScoredRow& row, std::uint64_t begin, std::size_t n, double* scores) {
    Scan(row, begin, n, begin + recordsAhead_, scores);
  }

  /// Loads `n` records, at most `zqBlockRecords`, to be scored against many rows.
  void SetColumns(std::uint64_t begin, std::size_t n);
  /// Scores a row against those records.
  void ScoreColumns(const ZQScoredRow& row, double* scores);

  /// A record as a row.
  ZQScoredRow RowOf(std::uint64_t index) const {
    return {records_.Words(index), records_.Count(index)};
  }
  const ZQScanVariant& Variant() const { return variant_; }

 private:
  void CountPlainly(const ZQScoredRow& row, std::uint64_t begin, std::size_t n);
  void ReadCounts(std::uint64_t begin, std::size_t n);
  void Score(const ZQScoredRow& row, std::size_t n, double* scores);

  const ZQRecords records_;
  const ZQScoreTerms terms_;
  const ZQPopCountFunc popcount_;
  const unsigned int measure_;
  const ZQScanVariant& variant_;
  const std::uint64_t recordsAhead_;
  const bool fused_;  // the variant's loops run, not the popcount function

  std::vector<std::uint64_t> scratch_;
  struct alignas(64) Line {
    std::uint64_t words[8];
  };
  std::vector<Line> packed_;
  std::uint64_t columns_ = 0;
  std::size_t numColumns_ = 0;
  alignas(64) std::array<double, zqBlockRecords> recordCounts_{};
  alignas(64) std::array<std::uint32_t, zqBlockRecords> common_{};
};

}  // namespace ZQKorvex
