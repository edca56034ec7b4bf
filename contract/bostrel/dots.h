#pragma once

/// Progress of a long run. On a terminal, a bar with count, rate and time left, redrawn at most ten
/// times a second; otherwise only the closing line of `Total`. Not synchronised.

#include <chrono>
#include <string>

#include "contract/bostrel/export.h"

namespace Bostrel {

class ZQ_EXPORT ZQDots {
 public:
  /// `total` is the expected count, 0 if unknown; `what` names the things counted, in the
  /// plural ("molecules"). Draws to standard error.
  explicit ZQDots(unsigned int total = 0, std::string what = "items");
  /// Sets the expected count if it wasn't known at construction.
  void SetTotal(unsigned int total) { total_ = total; }
  unsigned int GetTotal() const { return total_; }
  /// Counts `n` more.
  void Update(unsigned int n);
  /// Ends the bar and writes one line: count, time and rate.
  void Total();
  unsigned int GetCount() const { return count_; }

 private:
  void Draw(double seconds);

  unsigned int total_;
  std::string what_;
  unsigned int count_ = 0;
  bool onTerminal_;
  std::chrono::steady_clock::time_point start_;
  std::chrono::steady_clock::time_point nextDraw_;
};

}  // namespace Bostrel
