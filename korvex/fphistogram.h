#pragma once

/// The distribution of scores over bins of equal width, and the variogram, which relates the
/// distance of two fingerprints to the difference of a property of their molecules. Neither class
/// is synchronised: use one object in one thread.

#include <cstddef>
#include <vector>

#include "contract/bostrel/iter.h"
#include "korvex/siblings.h"

namespace ZQKorvex {

class ZQ_EXPORT ZQFPHistogram {
 public:
  /// Makes empty bins from `minValue` to `maxValue`. If memory runs out, warns "... : not enough
  /// memory for %lu bins!" and has no bins; samples are then ignored.
  ZQFPHistogram(unsigned long bins, double minValue, double maxValue);
  /// Restores a histogram from its counts.
  ZQFPHistogram(std::vector<unsigned long> counts, double minValue, double maxValue);

  /// The bin of a value; the last bin is closed above. A NaN, or a value more than 1e-5 outside the
  /// range, is an assertion failure; it is assigned to the nearest bin, a NaN to the first. The two
  /// overloads compute in double and in single precision and may differ at a bin's edge.
  unsigned long GetBinIdx(double x) const;
  unsigned long GetBinIdx(float x) const;
  /// Counts a value; returns its bin.
  unsigned long AddSample(double x);
  unsigned long AddSample(float x);
  /// Removes a value. An empty bin is an assertion failure and stays empty.
  void RemoveSample(float x);
  unsigned long NumSamples() const;
  /// Adds the counts of a histogram with the same bins. If the bins differ, an assertion fails, it
  /// warns ("ZQFPHistogram::operator+=() : cannot merge histogram due to different min limit!",
  /// "... max limit!", "... bin size!") and adds nothing.
  ZQFPHistogram& operator+=(const ZQFPHistogram& other);

  unsigned long NumBins() const { return counts_.size(); }
  double GetMinValue() const { return minValue_; }
  double GetMaxValue() const { return maxValue_; }
  double GetBinSize() const { return binSize_; }

  ZQIter<unsigned int> GetCounts() const;
  ZQIter<double> GetBinCenters() const;
  /// Count divided by number of samples: NaN in every bin if there are no samples.
  ZQIter<double> GetDensity() const;
  /// One value more than bins: the lower edge of each bin, then 1.0, the maximum of every
  /// similarity, even if `maxValue` differs.
  ZQIter<double> GetBinBoundaries() const;
  /// Mean and standard deviation of the samples, each approximated by its bin's center.
  double Mean() const;
  double Std() const;

 protected:
  std::vector<unsigned long> counts_;

 private:
  double CenterOf(std::size_t bin) const {
    return static_cast<double>(bin) * binSize_ + (0.5 * binSize_ + minValue_);
  }

  double minValue_;
  double maxValue_;
  double binSize_;
};

class ZQ_EXPORT ZQFPVariogram : public ZQFPHistogram {
 public:
  ZQFPVariogram(unsigned long bins, double minValue, double maxValue);
  /// Restores a variogram. Vectors of unequal length are an assertion failure; the sums are then
  /// discarded.
  ZQFPVariogram(const std::vector<unsigned long>& counts, const std::vector<double>& sums,
                double minValue, double maxValue);

  /// Counts a pair at distance `x` whose values differ by `y`; returns the bin.
  unsigned long AddSample(float x, float y);
  /// The semivariance of each bin, half the mean square of `y`; 0.0 for an empty bin.
  ZQIter<double> GetVariogram() const;

 private:
  std::vector<double> sums_;
};

}  // namespace ZQKorvex
