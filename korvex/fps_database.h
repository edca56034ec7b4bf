#pragma once

/// The fingerprints of an FPS file (fps.h) in memory, for searches by the scans of the fast
/// database: bits of any origin, whose type need not be known. Immutable once constructed; all
/// queries are const and may be made on any threads. Takes the bits, padded to a multiple of 256,
/// and the id of each record, and 24 bytes more.
///
/// As with `ZQFastFPDatabase`, a query checks its arguments first; if a check fails, or if memory
/// runs out, it warns and returns the empty value. Scores are those of a fast database, with
/// exactly `NumBits` bits for Euclid and Manhattan.

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "korvex/fingerprint.h"
#include "korvex/fpdatabaseoptions.h"
#include "korvex/fphistogram.h"
#include "korvex/fps.h"

namespace ZQKorvex {

class ZQ_EXPORT ZQFPSDatabase {
 public:
  /// Reads a file. Lines that are no fingerprints are left out after a warning each. A file that
  /// can't be read to its end, or has more than 4294967295 records, leaves an invalid object after
  /// an error.
  explicit ZQFPSDatabase(const std::string& filename);
  /// The same for a stream, by `ZQFPSReader::Open`. The name is for messages.
  ZQFPSDatabase(zqistream& in, const std::string& name);
  ~ZQFPSDatabase();
  ZQFPSDatabase(const ZQFPSDatabase&) = delete;
  ZQFPSDatabase& operator=(const ZQFPSDatabase&) = delete;

  bool IsValid() const;
  const ZQFPSHeader& GetHeader() const;
  /// The type of the fingerprints, by `ZQGetFPSType`; null if it is none of korvex.
  const ZQFPTypeBase* GetFPTypeBase() const;
  std::uint64_t NumFingerPrints() const;
  unsigned int NumBits() const;

  /// The id of a record; empty past the end.
  std::string_view GetId(std::uint64_t index) const;
  /// The first record of this id, or `NumFingerPrints`. Compares with one id after another.
  std::uint64_t FindId(std::string_view id) const;
  /// A record as a fingerprint of `NumBits` bits, with the type if there is one. False, after the
  /// warning "%s : fingerprint index out of range!", past the end.
  bool GetFingerPrint(ZQFingerPrint& fp, std::uint64_t index) const;

  // The queries of `ZQFastFPDatabase`. Indices count the records that were read. A query
  // fingerprint of another number of bits has no hits, after the warning "%s : a query of %u bits,
  // expected %u!"; its type isn't checked, and it need not have one.
  ZQIter<ZQSimScore> GetSortedScores(const ZQFingerPrint& query,
                                     const ZQFPDatabaseOptions& options) const;
  std::vector<ZQIter<ZQSimScore>> GetSortedScores(const std::vector<ZQFingerPrint>& queries,
                                                  const ZQFPDatabaseOptions& options) const;
  ZQFPHistogram GetHistogram(const ZQFPDatabaseOptions& options, unsigned long bins) const;
  ZQIter<ZQSimScorePair> GetSparseMatrix(const ZQFPDatabaseOptions& options) const;

 private:
  class ZQ_LOCAL Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ZQKorvex
