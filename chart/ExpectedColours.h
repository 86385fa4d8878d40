// What a chart's device values let expect of its colours, where nothing better is known. That is far from what a press makes
// of them, and near enough to tell whether the patches lie in the order of the layout.
#pragma once

#include <optional>
#include <vector>

#include "chart/Chart.h"

namespace J4Chart {

/// CIELab (D50) by PrintModel for RGB or CMYK.
/// @return one for each patch; nothing where it has other inks, whose colours nobody knows before they are printed, or no
///         numbers
std::vector<std::optional<Colorimetry::Triple>> ExpectedColours(const Chart& chart);

}  // namespace J4Chart
