#pragma once

/// Records on a GPU, and the loops over pieces of them that fit its memory.
///
/// All work of a query is in two streams: pieces are uploaded in one while kernels run in the
/// other. A failed operation has reported its reason.

#include <algorithm>
#include <array>
#include <cstdint>
#include <memory>
#include <vector>

#include "contract/nubrel/gpu.h"
#include "contract/nubrel/kernels.h"
#include "korvex/fpfast_scorer_local.h"
#include "korvex/pairtracer_local.h"

namespace ZQKorvex {

inline constexpr int zqKernelStream = 0;
inline constexpr int zqUploadStream = 1;

/// A buffer that both sides use, as all are, of at least one byte.
std::unique_ptr<ZQCUBufferCache> ZQMakeBuffer(int device, std::uint64_t bytes,
                                              int stream = zqKernelStream);

/// The words of records, and their number of bits, in two buffers.
struct ZQDeviceBuffers {
  std::unique_ptr<ZQCUBufferCache> words;
  std::unique_ptr<ZQCUBufferCache> counts;

  bool AreValid() const { return words && words->IsValid() && counts && counts->IsValid(); }
};

/// Where the records are: on the host and, if `pushed` isn't null, all of them on the device too.
struct ZQRecordSource {
  int device;
  ZQRecords records;
  const ZQDeviceBuffers* pushed;
};

// Copy the words, or the stored counts, of the `n` records from `begin` on into a buffer.
bool ZQUploadWords(const ZQRecords& records, std::uint64_t begin, std::uint64_t n,
                   ZQCUBufferCache& words);
bool ZQUploadCounts(const ZQRecords& records, std::uint64_t begin, std::uint64_t n,
                    ZQCUBufferCache& counts);

/// A piece of the records on the device: a part of the pushed ones, or a copy in buffers of its
/// own.
class ZQDevicePiece {
 public:
  /// Holds up to `capacity` records. If `countBits`, their bits are counted on the device;
  /// otherwise the stored counts are used.
  ZQDevicePiece(const ZQRecordSource& source, std::uint64_t capacity, bool countBits)
      : source_(source), capacity_(capacity), countBits_(countBits) {}

  /// Makes the `n` records from `begin` on the piece. They are there once the device has done its
  /// work so far. The buffers are made by the first call.
  bool Load(std::uint64_t begin, std::uint64_t n);
  const ZQCURecords& Get() const { return piece_; }

 private:
  bool MakeBuffers();

  const ZQRecordSource& source_;
  std::uint64_t capacity_;
  bool countBits_;
  ZQDeviceBuffers own_;
  ZQCURecords piece_;
};

/// For the records from `begin` to `end`, in pieces of `size(begin)`: calls `start(piece)`, which
/// adds kernels to the work of the device, uploads the next piece meanwhile and, once all that is
/// done, calls `finish(piece)`, which reads results. All functions return false after a failure.
template <class Size, class Start, class Finish>
bool ZQForPieces(std::array<ZQDevicePiece, 2>& pieces, std::uint64_t begin, std::uint64_t end,
                 Size size, Start start, Finish finish) {
  const auto load = [&](ZQDevicePiece& piece) {
    const std::uint64_t n = std::min<std::uint64_t>(size(begin), end - begin);
    const bool loaded = piece.Load(begin, n);
    begin += n;
    return loaded;
  };
  if (begin >= end) return true;
  if (!load(pieces[0]) || !ZQCUDeviceSynchronize()) return false;
  for (std::size_t turn = 0;; ++turn) {
    const ZQCURecords& piece = pieces[turn % 2].Get();
    if (!start(piece)) return false;
    const bool more = begin < end;
    if (more && !load(pieces[(turn + 1) % 2])) {
      ZQCUDeviceSynchronize();  // the kernels may still read the buffers
      return false;
    }
    if (!ZQCUDeviceSynchronize() || !finish(piece)) return false;
    if (!more) return true;
  }
}

/// Numbers of records: those of the rows and the columns of all pairs that are scored at once.
struct ZQPairBands {
  std::uint64_t rows = 0;
  std::uint64_t columns = 0;
  bool oneShot = false;  ///< the device has room for everything at once
};

/// For all pairs of records, which the options' tracer counts, row band by row band: calls
/// `beginBand(rows)`, then `start` and `finish` with the rows and each piece of columns, as above,
/// then `endBand(rows)`. With `upperTriangle` without the pieces that end before the first row.
template <class BeginBand, class Start, class Finish, class EndBand>
bool ZQForPairs(const ZQRecordSource& source, const ZQFPDatabaseOptions& options, ZQPairBands bands,
                bool upperTriangle, BeginBand beginBand, Start start, Finish finish,
                EndBand endBand) {
  const std::uint64_t count = source.records.count;
  std::uint64_t numPairs = 0;
  for (std::uint64_t begin = 0; begin < count; begin += bands.rows) {
    numPairs += std::min(bands.rows, count - begin) * (upperTriangle ? count - begin : count);
  }
  ZQPairTracer tracer(options, numPairs);
  ZQDevicePiece rows(source, bands.rows, true);
  std::array<ZQDevicePiece, 2> columns{ZQDevicePiece(source, bands.columns, true),
                                       ZQDevicePiece(source, bands.columns, true)};
  for (std::uint64_t begin = 0; begin < count; begin += bands.rows) {
    if (!rows.Load(begin, std::min(bands.rows, count - begin)) || !beginBand(rows.Get()) ||
        !ZQForPieces(
            columns, upperTriangle ? begin : 0, count, [&](std::uint64_t) { return bands.columns; },
            [&](const ZQCURecords& piece) { return start(rows.Get(), piece); },
            [&](const ZQCURecords& piece) {
              if (!finish(rows.Get(), piece)) return false;
              tracer.Count(rows.Get().count * piece.count);
              return true;
            }) ||
        !endBand(rows.Get())) {
      return false;
    }
  }
  tracer.Finish();
  return true;
}

}  // namespace ZQKorvex
