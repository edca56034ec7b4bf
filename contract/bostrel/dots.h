#pragma once

/// Progress of a long run. On a terminal, a bar with count, rate and time left, redrawn at most ten
/// times a second; otherwise only the closing line of `Total`. Or whatever an observer makes of it,
/// which can also end the run. Not synchronised.

#include <chrono>
#include <cstdint>
#include <functional>
#include <string>

#include "contract/bostrel/export.h"

namespace Bostrel {

class ZQ_EXPORT ZQDots {
 public:
  /// Takes the count so far and the total, 0 if unknown; false ends the run.
  using Observer = std::function<bool(std::uint64_t count, std::uint64_t total)>;

  /// `total` is the expected count, 0 if unknown; `what` names the things counted, in the
  /// plural ("molecules"). Draws to standard error.
  explicit ZQDots(unsigned int total = 0, std::string what = "items");
  /// Calls the observer at each update, on the thread that makes it, and writes nothing. It mustn't
  /// throw.
  explicit ZQDots(Observer observer);
  /// Sets the expected count if it wasn't known at construction.
  void SetTotal(std::uint64_t total) { total_ = total; }
  std::uint64_t GetTotal() const { return total_; }
  /// Counts `n` more.
  void Update(unsigned int n);
  /// Whether an observer has ended the run. Whoever counts checks it after each update.
  bool IsStopped() const { return isStopped_; }
  /// Ends the bar and writes one line: count, time and rate.
  void Total();
  std::uint64_t GetCount() const { return count_; }

 private:
  void Draw(double seconds);

  std::uint64_t total_ = 0;
  std::string what_;
  Observer observer_;
  std::uint64_t count_ = 0;
  bool isStopped_ = false;
  bool onTerminal_ = false;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point nextDraw_;
};

}  // namespace Bostrel
