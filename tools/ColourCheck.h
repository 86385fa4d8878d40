// Holds a measured chart against the colours of its layout: how much they differ, and whether the differences are
// those of a print or of a chart that lies wrong or is another one.
#pragma once

#include <string>

#include "chart/colour/DifferenceSummary.h"
#include "tools/ChartLayout.h"
#include "tools/Measurements.h"

namespace J4Tool {

class ColourCheck {
public:
    ColourCheck(const ChartLayout& layout, const Measurements& measurements);

    /// False where the layout tells no colours, or nothing is measured.
    bool HasColours() const { return !compared.empty(); }

    /// Of the patches that are measured and have a colour in the layout, CIEDE2000.
    J4Chart::DifferenceSummary Summary() const;

    /// Mean, 95th percentile, maximum and the three worst patches, for people.
    std::string Words() const;

    /// What is wrong: each patch mixed with a neighbour, or colours that have nothing to do with the layout's; empty
    /// when there is nothing to say.
    std::string Fault() const;

private:
    std::string MixtureFault() const;
    std::string OtherChartFault() const;

    const ChartLayout& layout;
    const Measurements& measurements;
    std::vector<double> differences;  ///< CIEDE2000, in the layout's order; not a number where there is none
    std::vector<size_t> compared;
};

}  // namespace J4Tool
