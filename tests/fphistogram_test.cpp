#include "korvex/fphistogram.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "mol_helpers.h"

using namespace ZQKorvex;

namespace {

template <class T>
std::vector<T> All(ZQIter<T> iter) {
  std::vector<T> values;
  for (; iter; ++iter) values.push_back(*iter);
  return values;
}

}  // namespace

TEST(Histogram, BinsOfDoublesAndFloats) {
  const ZQFPHistogram ten(10, 0.0, 1.0);
  struct Case {
    double x;
    unsigned long asDouble;
    unsigned long asFloat;
  };
  for (const Case& c : {Case{0.0, 0, 0}, Case{-0.000001, 0, 0}, Case{0.3, 2, 3}, Case{0.55, 5, 5},
                        Case{0.999999, 9, 9}, Case{1.0, 9, 9}, Case{1.000001, 9, 9}}) {
    EXPECT_EQ(ten.GetBinIdx(c.x), c.asDouble) << c.x;
    EXPECT_EQ(ten.GetBinIdx(static_cast<float>(c.x)), c.asFloat) << c.x;
  }
}

TEST(Histogram, ValuesOutsideTheRangeAreAssertionFailures) {
  ZQFPHistogram histogram(10, 0.0, 1.0);
  CapturedReports reports;
  for (const auto& [x, bin] : {std::pair(1.001, 9UL), std::pair(-0.001, 0UL), std::pair(1e300, 9UL),
                               std::pair(std::numeric_limits<double>::quiet_NaN(), 0UL)}) {
    EXPECT_EQ(histogram.AddSample(x), bin);
    EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  }
  histogram.RemoveSample(0.5F);  // an empty bin
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  histogram.RemoveSample(0.95F);
  EXPECT_EQ(histogram.NumSamples(), 3U);
}

TEST(Histogram, Reading) {
  const ZQFPHistogram histogram(std::vector<unsigned long>{1, 0, 2, 1}, 0.0, 2.0);
  EXPECT_EQ(All(histogram.GetCounts()), (std::vector<unsigned int>{1, 0, 2, 1}));
  EXPECT_EQ(All(histogram.GetBinCenters()), (std::vector<double>{0.25, 0.75, 1.25, 1.75}));
  EXPECT_EQ(All(histogram.GetBinBoundaries()), (std::vector<double>{0.0, 0.5, 1.0, 1.5, 1.0}));
  EXPECT_EQ(All(histogram.GetDensity()), (std::vector<double>{0.25, 0.0, 0.5, 0.25}));
  EXPECT_DOUBLE_EQ(histogram.Mean(), 1.125);
  EXPECT_DOUBLE_EQ(histogram.Std(),
                   std::sqrt((0.875 * 0.875 + 2 * 0.125 * 0.125 + 0.625 * 0.625) / 4));
  const ZQFPHistogram empty(3, 0.0, 1.0);
  for (const double density : All(empty.GetDensity())) EXPECT_TRUE(std::isnan(density));
  CapturedReports reports;
  const ZQFPHistogram huge(std::vector<unsigned long>{5000000000}, 0.0, 1.0);
  All(huge.GetCounts());
  EXPECT_EQ(reports.Count(ZQErrorLevel::Fatal), 1U);
}

TEST(Histogram, MergesOnlyTheSameBins) {
  ZQFPHistogram histogram(4, 0.0, 1.0);
  histogram.AddSample(0.6);
  ZQFPHistogram other(4, 0.0, 1.0);
  other.AddSample(0.6);
  other.AddSample(0.1);
  histogram += other;
  EXPECT_EQ(All(histogram.GetCounts()), (std::vector<unsigned int>{1, 0, 2, 0}));
  CapturedReports reports;
  const std::string text = "ZQFPHistogram::operator+=() : cannot merge histogram due to different ";
  for (const auto& [bins, minValue, maxValue, what] :
       {std::tuple(4UL, 0.1, 1.0, "min limit!"), std::tuple(4UL, 0.0, 2.0, "max limit!"),
        std::tuple(5UL, 0.0, 1.0, "bin size!")}) {
    ZQFPHistogram different(bins, minValue, maxValue);
    different.AddSample(0.6);
    histogram += different;
    EXPECT_EQ(reports.Take(), (Texts{"Assertion", text + what}));
  }
  EXPECT_EQ(histogram.NumSamples(), 3U);
}

TEST(Histogram, WithoutBinsTakesNothing) {
  CapturedReports reports;
  for (const unsigned long bins : {0UL, 1UL << 62}) {
    ZQFPVariogram variogram(bins, 0.0, 1.0);
    variogram.ZQFPHistogram::AddSample(0.5);
    variogram.AddSample(0.5F, 1.0F);
    EXPECT_EQ(variogram.NumSamples(), 0U);
    EXPECT_FALSE(variogram.GetVariogram());
  }
  EXPECT_EQ(
      reports.Take(),
      Texts{"ZQFPHistogram::ZQFPHistogram() : not enough memory for 4611686018427387904 bins!"});
}

TEST(Variogram, HalfTheMeanSquare) {
  ZQFPVariogram variogram(2, 0.0, 1.0);
  EXPECT_EQ(variogram.AddSample(0.9F, 3.0F), 1U);
  variogram.AddSample(0.8F, -1.0F);
  EXPECT_EQ(All(variogram.GetVariogram()), (std::vector<double>{0.0, 2.5}));
  CapturedReports reports;
  const ZQFPVariogram uneven({1, 2}, {1.0}, 0.0, 1.0);
  EXPECT_EQ(reports.Take(), Texts{"Assertion"});
  EXPECT_EQ(All(uneven.GetVariogram()), (std::vector<double>{0.0, 0.0}));
}
