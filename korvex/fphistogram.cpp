#include "korvex/fphistogram.h"

#include <algorithm>
#include <cmath>
#include <functional>
#include <limits>
#include <numeric>
#include <type_traits>
#include <utility>

#include "korvex/checked_local.h"
#include "korvex/memory_local.h"

namespace ZQKorvex {

namespace {

/// Values up to this far outside the range are rounding errors.
constexpr double tolerance = 1e-5;

template <class T>
std::vector<T> MakeBins(unsigned long bins, const char* caller) {
  return ZQCatch([bins] { return std::vector<T>(bins); },
                 [bins, caller](const std::exception&) {
                   ZQThrow.Warning("%s : not enough memory for %lu bins!", caller, bins);
                   return std::vector<T>();
                 });
}

template <class T>
ZQIter<T> MakeIter(std::vector<T>&& values) {
  return new ZQVectorIter<T>(std::move(values));
}

template <class Real>
unsigned long BinIdx(Real x, const ZQFPHistogram& histogram) {
  const double value = x;
  const double minValue = histogram.GetMinValue();
  const double maxValue = histogram.GetMaxValue();
  if (!ZQ_ASSERT(!ZQIsNaN(value))) return 0;
  ZQ_ASSERT(value <= maxValue + tolerance);
  ZQ_ASSERT(value >= minValue - tolerance);
  if (value <= minValue || histogram.NumBins() == 0) return 0;
  const unsigned long last = histogram.NumBins() - 1;
  if (value >= maxValue) return last;
  Real lower = 0;
  Real binSize = 0;
  if constexpr (std::is_same_v<Real, float>) {
    lower = ZQCheckedFloat(minValue);
    binSize = ZQCheckedFloat(histogram.GetBinSize());
  } else {
    lower = minValue;
    binSize = histogram.GetBinSize();
  }
  const Real position = std::floor((x - lower) / binSize);
  constexpr auto limit = static_cast<Real>(1UL << std::numeric_limits<Real>::digits);
  if (!(position <= limit)) [[unlikely]] {
    ZQReportConversion(position, static_cast<unsigned long>(limit));
    return last;
  }
  return std::min(static_cast<unsigned long>(position), last);
}

}  // namespace

ZQFPHistogram::ZQFPHistogram(unsigned long bins, double minValue, double maxValue)
    : ZQFPHistogram(MakeBins<unsigned long>(bins, "ZQFPHistogram::ZQFPHistogram()"), minValue,
                    maxValue) {}

ZQFPHistogram::ZQFPHistogram(std::vector<unsigned long> counts, double minValue, double maxValue)
    : counts_(std::move(counts)),
      minValue_(minValue),
      maxValue_(maxValue),
      binSize_((maxValue - minValue) / ZQCheckedDouble(counts_.size())) {}

unsigned long ZQFPHistogram::GetBinIdx(double x) const { return BinIdx(x, *this); }
unsigned long ZQFPHistogram::GetBinIdx(float x) const { return BinIdx(x, *this); }

unsigned long ZQFPHistogram::AddSample(double x) {
  const unsigned long bin = GetBinIdx(x);
  if (bin < counts_.size()) ++counts_[bin];
  return bin;
}

unsigned long ZQFPHistogram::AddSample(float x) {
  const unsigned long bin = GetBinIdx(x);
  if (bin < counts_.size()) ++counts_[bin];
  return bin;
}

void ZQFPHistogram::RemoveSample(float x) {
  const unsigned long bin = GetBinIdx(x);
  if (bin < counts_.size() && ZQ_ASSERT(counts_[bin] > 0)) --counts_[bin];
}

unsigned long ZQFPHistogram::NumSamples() const {
  return std::accumulate(counts_.begin(), counts_.end(), 0UL);
}

ZQFPHistogram& ZQFPHistogram::operator+=(const ZQFPHistogram& other) {
  const auto refuse = [](const char* what) {
    ZQThrow.Warning("ZQFPHistogram::operator+=() : cannot merge histogram due to different %s!",
                    what);
  };
  if (!ZQ_ASSERT(minValue_ == other.minValue_)) {
    refuse("min limit");
  } else if (!ZQ_ASSERT(maxValue_ == other.maxValue_)) {
    refuse("max limit");
  } else if (!ZQ_ASSERT(counts_.size() == other.counts_.size())) {
    refuse("bin size");
  } else {
    std::transform(counts_.begin(), counts_.end(), other.counts_.begin(), counts_.begin(),
                   std::plus<>());
  }
  return *this;
}

ZQIter<unsigned int> ZQFPHistogram::GetCounts() const {
  std::vector<unsigned int> counts(counts_.size());
  std::transform(counts_.begin(), counts_.end(), counts.begin(), ZQCheckedUnsigned);
  return MakeIter(std::move(counts));
}

ZQIter<double> ZQFPHistogram::GetBinCenters() const {
  std::vector<double> centers(counts_.size());
  for (std::size_t i = 0; i < centers.size(); ++i) centers[i] = CenterOf(i);
  return MakeIter(std::move(centers));
}

ZQIter<double> ZQFPHistogram::GetDensity() const {
  std::vector<double> density(counts_.size());
  const double share = 1.0 / ZQCheckedDouble(NumSamples());
  std::transform(counts_.begin(), counts_.end(), density.begin(),
                 [share](unsigned long count) { return ZQCheckedDouble(count) * share; });
  return MakeIter(std::move(density));
}

ZQIter<double> ZQFPHistogram::GetBinBoundaries() const {
  std::vector<double> boundaries(counts_.size() + 1);
  for (std::size_t i = 0; i < counts_.size(); ++i) {
    boundaries[i] = static_cast<double>(i) * binSize_ + minValue_;
  }
  boundaries.back() = 1.0;
  return MakeIter(std::move(boundaries));
}

double ZQFPHistogram::Mean() const {
  double mean = 0.0;
  std::size_t bin = 0;
  for (auto density = GetDensity(); density; ++density) mean += *density * CenterOf(bin++);
  return mean;
}

double ZQFPHistogram::Std() const {
  const double mean = Mean();
  double variance = 0.0;
  std::size_t bin = 0;
  for (auto density = GetDensity(); density; ++density) {
    const double deviation = CenterOf(bin++) - mean;
    variance += deviation * deviation * *density;
  }
  return std::sqrt(variance);
}

ZQFPVariogram::ZQFPVariogram(unsigned long bins, double minValue, double maxValue)
    : ZQFPHistogram(bins, minValue, maxValue),
      sums_(MakeBins<double>(NumBins(), "ZQFPVariogram::ZQFPVariogram()")) {}

ZQFPVariogram::ZQFPVariogram(const std::vector<unsigned long>& counts,
                             const std::vector<double>& sums, double minValue, double maxValue)
    : ZQFPHistogram(counts, minValue, maxValue) {
  if (ZQ_ASSERT(counts.size() == sums.size())) sums_ = sums;
}

unsigned long ZQFPVariogram::AddSample(float x, float y) {
  const unsigned long bin = ZQFPHistogram::AddSample(x);
  if (bin < sums_.size()) sums_[bin] += double{y * y};
  return bin;
}

ZQIter<double> ZQFPVariogram::GetVariogram() const {
  std::vector<double> values(counts_.size(), 0.0);
  for (std::size_t i = 0; i < sums_.size(); ++i) {
    if (counts_[i] > 0) values[i] = 0.5 * sums_[i] / ZQCheckedDouble(counts_[i]);
  }
  return MakeIter(std::move(values));
}

}  // namespace ZQKorvex
