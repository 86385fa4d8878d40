#include "tools/RowCheck.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "chart/colour/ColourDifference.h"

namespace J4Tool {

namespace ColourDifference = J4Chart::ColourDifference;
namespace Colorimetry = J4Chart::Colorimetry;

RowCheck::RowCheck(const ChartLayout& layout)
{
    for (const ChartLayout::Row& row : layout.Rows()) {
        Colours& colours = rows.emplace_back();
        counts.push_back(row.size());
        for (const size_t patch : row) {
            if (const auto colour = layout.Patches()[patch].Colour()) {
                colours.push_back(*colour);
            }
        }
        if (colours.size() != row.size()) {
            colours.clear();
        }
    }
}

/// Mean over the patches that both have, when the measured ones are taken to lie shift patches further on.
double RowCheck::MeanDifference(const Colours& measured, const Colours& references, bool reversed, int shift)
{
    const int count = static_cast<int>(measured.size());
    double sum = 0.0;
    int compared = 0;
    for (int i = 0; i < count; ++i) {
        const int place = i + shift;
        if (place < 0 || place >= count) {
            continue;
        }
        const int reference = reversed ? count - 1 - place : place;
        sum +=
            ColourDifference::Ciede2000(references[static_cast<size_t>(reference)], measured[static_cast<size_t>(i)]);
        ++compared;
    }
    return compared > 0 ? sum / compared : std::numeric_limits<double>::max();
}

std::string RowCheck::Fault(size_t row, const std::vector<Spectrum>& measured) const
{
    if (measured.size() != counts[row]) {
        return std::to_string(measured.size()) + " patches were found instead of " + std::to_string(counts[row]);
    }
    if (rows[row].empty()) {
        return {};
    }
    Colours colours;
    for (const Spectrum& spectrum : measured) {
        colours.push_back(Colorimetry::Lab(spectrum));
    }
    const double own = MeanDifference(colours, rows[row], false, 0);
    if (own <= Tolerance) {
        return {};
    }
    double best = own * ClearlyBetter;
    std::string fault;
    const auto consider = [&](double difference, const std::string& meaning) {
        if (difference < best) {
            best = difference;
            fault = meaning;
        }
    };
    for (size_t other = 0; other < rows.size(); ++other) {
        if (rows[other].size() != colours.size()) {
            continue;
        }
        for (const bool reversed : {false, true}) {
            if (other == row && !reversed) {
                continue;
            }
            const std::string which = other == row ? "" : "row " + std::to_string(other + 1) + " was read instead";
            consider(MeanDifference(colours, rows[other], reversed, 0),
                     which + (other == row ? "the row was read in the wrong direction"
                                           : (reversed ? ", in the wrong direction" : "")));
        }
    }
    constexpr size_t fewestForShift = 4;  // with less a single patch could decide
    if (colours.size() >= fewestForShift) {
        consider(MeanDifference(colours, rows[row], false, 1), "the patches are shifted by one, the first is missing");
        consider(MeanDifference(colours, rows[row], false, -1), "the patches are shifted by one, the last is missing");
    }
    return fault;
}

std::string RowCheck::Doubt(size_t row, const std::vector<Spectrum>& recognised) const
{
    constexpr double leastContrast = 3.0;  // CIE 1976
    if (!rows[row].empty()) {
        return {};
    }
    for (size_t i = 0; i < recognised.size(); ++i) {
        const Colorimetry::Triple lab = Colorimetry::Lab(recognised[i]);
        if (lab[0] > 80.0 && std::hypot(lab[1], lab[2]) < 10.0) {
            return "a patch as light as paper can't be told from paper";
        }
        if (i > 0 && Colorimetry::Distance(lab, Colorimetry::Lab(recognised[i - 1])) < leastContrast) {
            return "two neighbours are too alike to be told apart";
        }
    }
    return {};
}

std::vector<size_t> RowCheck::Outliers(size_t row, const std::vector<Spectrum>& measured) const
{
    constexpr double least = 1.0;  // CIEDE2000
    constexpr double timesUsual = 2.5;
    std::vector<double> differences;
    for (size_t i = 0; i < rows[row].size(); ++i) {
        differences.push_back(ColourDifference::Ciede2000(rows[row][i], Colorimetry::Lab(measured[i])));
    }
    if (differences.empty()) {
        return {};
    }
    std::vector<double> sorted = differences;
    std::sort(sorted.begin(), sorted.end());
    const double limit = std::max(least, timesUsual * sorted[sorted.size() / 2]);
    std::vector<size_t> outliers;
    for (size_t i = 0; i < differences.size(); ++i) {
        if (differences[i] > limit) {
            outliers.push_back(i);
        }
    }
    return outliers;
}

}  // namespace J4Tool
