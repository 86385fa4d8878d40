// The patches that a straight line over the chart crosses.
#pragma once

#include <cstddef>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/LineFit.h"
#include "tools/Point.h"

namespace J4Tool {

struct CrossedPatches {
    std::vector<size_t> patches;              ///< in the order of the line
    std::vector<LineFit::Stretch> stretches;  ///< one for each

    CrossedPatches(const ChartLayout& layout, Point start, Point end);
};

}  // namespace J4Tool
