#include "apps/plot.h"

#include <algorithm>
#include <cmath>

#include "apps/output.h"

namespace KorvexProgram {

namespace {

constexpr double width = 560;
constexpr double height = 240;
constexpr double left = 46;
constexpr double right = 12;
constexpr double top = 12;
constexpr double bottom = 34;
constexpr double inner = width - left - right;

class Plot {
 public:
  // A count of `10^decades` has the full height.
  explicit Plot(double decades) : greatest_(Logarithm(std::pow(10.0, decades))) {
    svg_.append(R"(<svg class="plot" xmlns="http://www.w3.org/2000/svg" viewBox="0 0 )")
        .append(Decimals(width, 0))
        .append(" ")
        .append(Decimals(height, 0))
        .append(R"(" role="img" aria-label="Distribution of the scores">)");
  }

  void AddText(double x, double y, const char* anchor, const std::string& text) {
    svg_ += "<text";
    AddNumbers({{"x", x}, {"y", y}});
    svg_.append(" text-anchor=\"").append(anchor).append("\" dominant-baseline=\"middle\">");
    svg_.append(text).append("</text>");
  }
  // A horizontal line at a count.
  void AddLine(double count) {
    const double y = height - bottom - HeightOf(count);
    svg_ += "<line";
    AddNumbers({{"x1", left}, {"x2", width - right}, {"y1", y}, {"y2", y}});
    svg_ += " />";
    AddText(left - 6, y, "end", Decimals(count, 0));
  }
  // The bar of a bin from one score to another.
  void AddBar(double lower, double upper, double count, bool isKept) {
    constexpr double gap = 1;
    svg_ += isKept ? "<rect class=\"kept\"" : "<rect";
    AddNumbers({{"x", left + lower * inner + gap / 2},
                {"y", height - bottom - HeightOf(count)},
                {"width", (upper - lower) * inner - gap},
                {"height", HeightOf(count)}});
    svg_.append("><title>").append(Decimals(lower, 2)).append(" to ").append(Decimals(upper, 2));
    svg_.append(": ").append(Decimals(count, 0)).append("</title></rect>");
  }
  std::string Finish() { return svg_ + "</svg>"; }

 private:
  struct Number {
    const char* name;
    double value;
  };
  static double Logarithm(double count) { return std::log10(count + 1); }
  double HeightOf(double count) const {
    return (height - top - bottom) * Logarithm(count) / greatest_;
  }
  void AddNumbers(std::initializer_list<Number> numbers) {
    for (const Number& number : numbers) {
      svg_.append(" ").append(number.name).append("=\"");
      svg_.append(Decimals(number.value, 1)).append("\"");
    }
  }

  double greatest_;
  std::string svg_;
};

}  // namespace

std::string PlotScores(const ZQKorvex::ZQFPHistogram& histogram, const std::vector<double>& hits) {
  std::vector<double> counts;
  for (auto count = histogram.GetCounts(); count; ++count) counts.push_back(*count);
  if (counts.empty()) return {};
  std::vector<bool> isKept(counts.size());
  for (const double hit : hits) isKept[histogram.GetBinIdx(static_cast<float>(hit))] = true;
  const double most = std::max(1.0, *std::ranges::max_element(counts));
  const double decades = std::max(1.0, std::ceil(std::log10(most)));
  Plot plot(decades);
  for (int decade = 0; decade <= static_cast<int>(decades); ++decade) {
    plot.AddLine(std::pow(10.0, decade));
  }
  const auto bins = static_cast<double>(counts.size());
  for (std::size_t i = 0; i < counts.size(); ++i) {
    const auto lower = static_cast<double>(i);
    if (counts[i] != 0.0) plot.AddBar(lower / bins, (lower + 1) / bins, counts[i], isKept[i]);
  }
  for (const double tick : {0.0, 0.2, 0.4, 0.6, 0.8, 1.0}) {
    plot.AddText(left + tick * inner, height - bottom + 12, "middle", Decimals(tick, 1));
  }
  plot.AddText(left + inner / 2, height - 6, "middle", "score");
  return plot.Finish();
}

}  // namespace KorvexProgram
