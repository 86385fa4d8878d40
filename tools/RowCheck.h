// Tells whether the patches that a row gave are those of the row: by their number, and where the chart has
// references by their colours, which give away a row that was read twice, backwards, or one patch off.
#pragma once

#include <string>
#include <vector>

#include "chart/colour/Colorimetry.h"
#include "chart/colour/Spectrum.h"
#include "tools/ChartLayout.h"

namespace J4Tool {

class RowCheck {
public:
    using Spectrum = J4Chart::Spectrum;

    /// Differences (CIEDE2000, mean of a row) up to here are taken for differences of print and instrument, whatever
    /// other row fits better.
    static constexpr double Tolerance = 2.0;

    /// Another row must fit at least so much better to be taken for the one that was read.
    static constexpr double ClearlyBetter = 0.5;

    explicit RowCheck(const ChartLayout& layout);

    /// @param measured  in the order of the row
    /// @return what is wrong; empty when the row is good
    std::string Fault(size_t row, const std::vector<Spectrum>& measured) const;

    /// What may be wrong with patches that the instrument itself recognised, though their number is right: a patch cut
    /// in two and two taken for one, or a light end that was lost and a gap taken for a patch.
    /// @return empty where the row has references, which Fault() looks at
    std::string Doubt(size_t row, const std::vector<Spectrum>& recognised) const;

    /// Patches that are farther from their references than a print explains: clearly more than the row's others.
    /// @param measured  in the order of the row, whole
    /// @return none where the row has no references
    std::vector<size_t> Outliers(size_t row, const std::vector<Spectrum>& measured) const;

private:
    using Colours = std::vector<J4Chart::Colorimetry::Triple>;

    static double MeanDifference(const Colours& measured, const Colours& references, bool reversed, int shift);

    std::vector<Colours> rows;  ///< empty for a row without references
    std::vector<size_t> counts;
};

}  // namespace J4Tool
