#pragma once

#include <string>
#include <vector>

#include "korvex/fphistogram.h"

namespace KorvexProgram {

/// The distribution of scores as an SVG element, with the bins that hold hits marked (class
/// "kept"). Heights are logarithmic: nearly all records score low.
std::string PlotScores(const ZQKorvex::ZQFPHistogram& histogram, const std::vector<double>& hits);

}  // namespace KorvexProgram
