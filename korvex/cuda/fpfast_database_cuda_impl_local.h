#pragma once

/// The back end that keeps the fingerprints in the memory of a GPU. The file is mapped as by the
/// memory-mapped back end, and its fingerprints are copied to the device once, when it is opened,
/// if they fit; otherwise every query uploads them in pieces. Fingerprints must have a multiple of
/// 1024 bits.
///
/// Scores, hits, their order and bins equal those of the other back ends to the last bit. Queries
/// for all pairs count the bits of the records on the device; all others use the stored counts.
/// `SortedSearch` isn't offered. A query that fails on the device has reported why, and returns
/// nothing; the next one starts afresh, unless the device itself has failed. Queries from several
/// threads run one after another.

#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "korvex/cuda/device_records_local.h"
#include "korvex/fpfast_database_mmap_impl_local.h"

namespace ZQKorvex {

class ZQFastFPCUDADatabaseImpl : public ZQFastFPMemoryMapDatabaseImpl {
 public:
  explicit ZQFastFPCUDADatabaseImpl(const std::string& filename);

  unsigned int GetMemoryType() const override { return ZQFastFPDatabaseMemoryType::CUDA; }
  std::string GetMemoryTypeString() const override { return "cuda"; }
  using ZQFastFPMemoryMapDatabaseImpl::GetSortedScores;
  ZQIter<ZQSimScore> GetScores(const ZQFingerPrint& query,
                               const ZQFPDatabaseOptions& options) const override;
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const override;
  std::vector<ZQIter<ZQSimScore>> GetSortedScores(
      const std::vector<ZQFingerPrint>& queries, const ZQFPDatabaseOptions& options) const override;
  ZQIter<double> GetRawScores(const ZQFingerPrint& query,
                              const ZQFPDatabaseOptions& options) const override;
  ZQIter<float> GetAllScores(const ZQFPDatabaseOptions& options) const override;
  ZQFPHistogram GetHistogram(const ZQFPDatabaseOptions& options, unsigned long bins) const override;
  ZQFPVariogram GetVariogram(const std::vector<float>& values, const ZQFPDatabaseOptions& options,
                             unsigned long bins) const override;
  ZQIter<ZQSimScorePair> GetSparseMatrix(const ZQFPDatabaseOptions& options) const override;
  unsigned int SortedSearch(ZQSimSearchResult& result, const ZQFingerPrint& query,
                            const ZQFPDatabaseOptions& options) const override;
  using ZQFastFPMemoryMapDatabaseImpl::GetFingerPrint;
  bool GetFingerPrint(std::vector<std::uint64_t>& words, std::uint64_t& moleculeIndex,
                      std::uint64_t& popcount, std::uint64_t index) const override;

  /// Whether the device has room for a result of this many elements of 4 bytes, and for the
  /// fingerprints if they aren't there.
  bool CanAllocateOutput(unsigned long elements) const;
  /// The largest number of neighbours of any fingerprint, itself included, whose score isn't below
  /// the cutoff; without a cutoff all. 0 after a failure.
  unsigned long GetMaxCount(const ZQFPDatabaseOptions& options) const;
  /// Whether the fingerprints are on the device.
  bool IsPushed() const { return pushed_; }

 private:
  struct Queries;

  /// Chooses the device. False if none is compatible.
  bool ChooseDevice();
  /// Copies the fingerprints to the device.
  void push_data();
  /// The room on the device for results, and for fingerprints that aren't there: elements of 4
  /// bytes.
  std::uint64_t GetCapacity() const;

  /// Checks the object and makes its device current. Empty after a warning.
  std::optional<ZQRecordSource> Begin(const char* caller) const;
  /// Uploads queries. Those of another type are left out, after a warning.
  std::optional<Queries> Upload(std::span<const ZQFingerPrint> queries,
                                const ZQRecordSource& source, const char* caller) const;

  /// The records of a piece of a scan, whose result takes so many bytes for each.
  std::uint64_t GetPieceSize(std::uint64_t bytesPerRecord, const char* caller) const;
  /// The bands of a query for all pairs, whose result takes so many bytes for each pair and for
  /// each row.
  ZQPairBands GetBands(std::uint64_t bytesPerPair, std::uint64_t bytesPerRow,
                       const char* caller) const;

  /// Finds the hits of every query, piece by piece: calls `take(query, hits)` with those of a piece
  /// in file order. `getBar(query)` is called for each piece. Pieces grow with the number of
  /// records done if the bar does.
  template <class GetBar, class Take>
  bool FindHits(const ZQRecordSource& source, const Queries& queries,
                const ZQFPDatabaseOptions& options, bool barGrows, const char* caller,
                GetBar getBar, Take take) const;
  std::optional<unsigned long> CountMaxNeighbors(const ZQRecordSource& source,
                                                 const ZQFPDatabaseOptions& options) const;
  /// The neighbours of all records. `k` is at most the limit, and smaller only if no record has
  /// more neighbours within the cutoff.
  bool FindNeighbors(std::vector<ZQSimScorePair>& out, const ZQRecordSource& source,
                     const ZQFPDatabaseOptions& options, unsigned int k) const;

  ZQDeviceBuffers buffers_;
  bool pushed_ = false;
  int device_ = -1;
  bool cantAllocate_ = false;
  mutable std::mutex mutex_;
};

}  // namespace ZQKorvex
