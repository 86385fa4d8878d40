// The verdict behind a scan. Tolerances and reference are read before the arm moves: no chart is measured for a verdict
// that can't be given.
#pragma once

#include <string>

#include "chart/Chart.h"
#include "tools/ChartLayout.h"
#include "tools/Measurements.h"
#include "tools/judge/Judgement.h"

namespace J4Tool {

class ScanVerdict {
public:
    /// @param toleranceFile  TOML
    /// @param referenceFile  CGATS.17; empty: the layout's own colours
    /// @param layout         what is scanned; must last
    /// @throws ToolError
    ScanVerdict(const std::string& toleranceFile, const std::string& referenceFile, const ChartLayout& layout);

    /// @param measurements  of all patches
    Judgement On(const Measurements& measurements) const;

private:
    Tolerances tolerances;
    const ChartLayout& layout;
    J4Chart::Chart reference;
};

}  // namespace J4Tool
