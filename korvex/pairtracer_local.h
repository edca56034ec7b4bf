#pragma once

/// Progress of a query over all pairs of records.

#include <algorithm>
#include <cstdint>
#include <exception>
#include <limits>
#include <mutex>
#include <optional>

#include "korvex/fpdatabaseoptions.h"

namespace ZQKorvex {

/// Thrown out of a query that its tracer ends. The public function warns with the text.
class ZQStopped : public std::exception {
 public:
  const char* what() const noexcept override { return "stopped"; }
};

/// For any number of threads.
class ZQPairTracer {
 public:
  ZQPairTracer(const ZQFPDatabaseOptions& options, std::uint64_t numPairs)
      : dots_(options.GetTracer()) {
    if (dots_ && dots_->GetTotal() == 0) dots_->SetTotal(numPairs);
  }
  /// Throws `ZQStopped` if the tracer has ended the query, on each thread that counts.
  void Count(std::uint64_t pairs) {
    if (!dots_) return;
    const std::lock_guard lock(mutex_);
    constexpr std::uint64_t most = std::numeric_limits<unsigned int>::max();
    for (; pairs > most; pairs -= most) dots_->Update(most);
    dots_->Update(static_cast<unsigned int>(pairs));
    if (dots_->IsStopped()) throw ZQStopped();
  }
  /// Writes the closing line.
  void Finish() {
    if (dots_) dots_->Total();
  }

 private:
  std::optional<ZQDots> dots_;
  std::mutex mutex_;
};

/// The number of pairs i < j of so many records; of all ordered pairs unless `symmetric`.
inline std::uint64_t ZQNumPairs(std::uint64_t count, bool symmetric = true) {
  return symmetric ? count * (std::max<std::uint64_t>(count, 1) - 1) / 2 : count * count;
}

}  // namespace ZQKorvex
