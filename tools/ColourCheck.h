// Holds a measured chart against the colours of its layout: how much they differ, and whether the differences are
// those of a print or of a chart that lies wrong or is another one. Where the layout has device values alone, they still
// tell a chart that lies the wrong way round, or is another one.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/colour/DifferenceSummary.h"
#include "tools/ChartLayout.h"
#include "tools/Measurements.h"

namespace J4Tool {

class ColourCheck {
public:
    ColourCheck(const ChartLayout& layout, const Measurements& measurements);

    /// False where the layout tells no colours, or nothing is measured.
    bool HasColours() const { return !isExpected && !compared.empty(); }

    /// Whether Fault would see another chart, or this one turned round: there are colours, or device values, enough of
    /// them, and they differ.
    bool CanTellCharts() const;

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

    /// How much of the measured colours the layout's explain, each channel by a straight line.
    struct Order {
        double explained = 0.0;  ///< squares
        double all = 0.0;
        double spread = 0.0;  ///< of the layout's colours, CIE 1976, root mean square
    };
    Order OrderOfColours() const;

    const ChartLayout& layout;
    const Measurements& measurements;
    std::vector<double> differences;  ///< CIEDE2000, in the layout's order; not a number where there is none
    std::vector<size_t> compared;
    std::vector<std::optional<J4Chart::Colorimetry::Triple>> wanted;
    bool isExpected = false;  ///< by device values, and not told
};

}  // namespace J4Tool
