#include "tools/ColourCheck.h"

#include <Eigen/Core>
#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "chart/ExpectedColours.h"
#include "chart/colour/ColourDifference.h"
#include "tools/FixedText.h"
#include "tools/LeastSquares.h"

namespace J4Tool {

namespace ColourDifference = J4Chart::ColourDifference;
namespace Colorimetry = J4Chart::Colorimetry;
using Colorimetry::Triple;

namespace {

constexpr size_t Sides = 4;
constexpr std::array<const char*, Sides> SideNames = {"before it in its row", "behind it in its row", "above it",
                                                      "below it"};

/// The patches beside each patch: in its row, and the nearest of the rows beside it.
std::vector<std::array<std::optional<size_t>, Sides>> Neighbours(const ChartLayout& layout)
{
    std::vector<std::array<std::optional<size_t>, Sides>> all(layout.Patches().size());
    const auto& rows = layout.Rows();
    for (size_t row = 0; row < rows.size(); ++row) {
        for (size_t column = 0; column < rows[row].size(); ++column) {
            auto& beside = all[rows[row][column]];
            const J4Chart::Place& here = layout.Places()[rows[row][column]];
            const auto nearestIn = [&](const ChartLayout::Row& other) {
                const auto distance = [&](size_t patch) {
                    const J4Chart::Place& there = layout.Places()[patch];
                    return Distance(there.centre, here.centre);
                };
                return *std::min_element(other.begin(), other.end(),
                                         [&](size_t a, size_t b) { return distance(a) < distance(b); });
            };
            if (column > 0) {
                beside[0] = rows[row][column - 1];
            }
            if (column + 1 < rows[row].size()) {
                beside[1] = rows[row][column + 1];
            }
            if (row > 0) {
                beside[2] = nearestIn(rows[row - 1]);
            }
            if (row + 1 < rows.size()) {
                beside[3] = nearestIn(rows[row + 1]);
            }
        }
    }
    return all;
}

}  // namespace

ColourCheck::ColourCheck(const ChartLayout& layout, const Measurements& measurements)
    : layout(layout), measurements(measurements)
{
    for (const J4Chart::Patch& patch : layout.Patches()) {
        wanted.push_back(patch.Colour());
    }
    if (std::none_of(wanted.begin(), wanted.end(), [](const auto& colour) { return colour.has_value(); })) {
        isExpected = true;
        wanted = J4Chart::ExpectedColours(layout.AsChart());
    }
    differences.assign(wanted.size(), std::numeric_limits<double>::quiet_NaN());
    for (size_t i = 0; i < differences.size(); ++i) {
        if (wanted[i] && measurements[i]) {
            differences[i] = ColourDifference::Ciede2000(*wanted[i], Colorimetry::Lab(measurements[i]->spectrum));
            compared.push_back(i);
        }
    }
}

J4Chart::DifferenceSummary ColourCheck::Summary() const { return J4Chart::DifferenceSummary(differences); }

std::string ColourCheck::Words() const
{
    const J4Chart::DifferenceSummary summary = Summary();
    std::string text = "difference from the layout's colours (CIEDE2000): mean " + FixedText(summary.Mean(), 2) +
                       ", 95th percentile " + FixedText(summary.Percentile95(), 2) + ", maximum " +
                       FixedText(summary.Maximum(), 2) + "; worst";
    constexpr size_t shown = 3;
    for (size_t i = 0; i < std::min(shown, summary.Worst().size()); ++i) {
        const size_t patch = summary.Worst()[i];
        text += (i > 0 ? ", " : " ") + layout.Patches()[patch].name + " " + FixedText(differences[patch], 2);
    }
    return text;
}

std::string ColourCheck::Fault() const
{
    const std::string fault = isExpected ? "" : MixtureFault();
    return fault.empty() ? OtherChartFault() : fault;
}

/// Light adds up in tristimulus values: a patch of which the instrument saw the share w beside it in a neighbour measures
/// (1 - w) of itself and w of the neighbour. A print's own differences are allowed for as an offset and a factor of
/// each channel.
std::string ColourCheck::MixtureFault() const
{
    constexpr size_t fewest = 12;            // with less, chance decides
    constexpr double largestShare = 0.08;    // of a neighbour
    constexpr double largestRest = 0.5;      // of the squares that are left without the neighbours
    constexpr double leastDifference = 1.0;  // CIEDE2000, mean: below it nothing is wrong enough
    if (compared.size() < fewest || Summary().Mean() < leastDifference) {
        return {};
    }
    const auto neighbours = Neighbours(layout);
    const auto reference = [this](size_t patch) {
        return Colorimetry::TristimulusOfLab(*wanted[patch], Colorimetry::White());
    };
    constexpr Eigen::Index own = 6;
    Eigen::MatrixXd slopes = Eigen::MatrixXd::Zero(3 * static_cast<Eigen::Index>(compared.size()), own + Sides);
    Eigen::VectorXd left(slopes.rows());
    Eigen::Index line = 0;
    for (const size_t patch : compared) {
        const Triple here = reference(patch);
        const Triple measured = Colorimetry::TristimulusValues(measurements[patch]->spectrum);
        for (Eigen::Index channel = 0; channel < 3; ++channel, ++line) {
            const auto c = static_cast<size_t>(channel);
            left(line) = measured[c] - here[c];
            slopes(line, 2 * channel) = 1.0;
            slopes(line, 2 * channel + 1) = here[c];
            for (size_t side = 0; side < Sides; ++side) {
                const auto beside = neighbours[patch][side];
                if (beside && wanted[*beside]) {
                    slopes(line, own + static_cast<Eigen::Index>(side)) = reference(*beside)[c] - here[c];
                }
            }
        }
    }
    const auto rest = [&](const Eigen::MatrixXd& some, Eigen::VectorXd& solution) {
        solution = SolveLeastSquares(some, left);
        return (left - some * solution).squaredNorm();
    };
    Eigen::VectorXd solution;
    const double without = rest(slopes.leftCols(own), solution);
    const double with = rest(slopes, solution);
    Eigen::Index side = 0;
    const double share = solution.tail(Sides).maxCoeff(&side);
    if (share < largestShare || with > largestRest * without) {
        return {};
    }
    return "the colours are those of patches mixed with their neighbours: " + FixedText(100.0 * share, 0) +
           " % of each is of the patch " + SideNames[static_cast<size_t>(side)];
}

ColourCheck::Order ColourCheck::OrderOfColours() const
{
    Order order;
    for (size_t channel = 0; channel < 3; ++channel) {
        Eigen::VectorXd x(static_cast<Eigen::Index>(compared.size()));
        Eigen::VectorXd y(x.size());
        for (Eigen::Index i = 0; i < x.size(); ++i) {
            const size_t patch = compared[static_cast<size_t>(i)];
            x(i) = (*wanted[patch])[channel];
            y(i) = Colorimetry::Lab(measurements[patch]->spectrum)[channel];
        }
        x.array() -= x.mean();
        y.array() -= y.mean();
        const double xx = x.squaredNorm();
        const double xy = std::max(0.0, x.dot(y));  // light for dark explains nothing
        order.explained += xx > 0.0 ? xy * xy / xx : 0.0;
        order.all += y.squaredNorm();
        order.spread += xx;
    }
    order.spread = std::sqrt(order.spread / static_cast<double>(compared.size()));
    return order;
}

bool ColourCheck::CanTellCharts() const
{
    constexpr size_t fewest = 5;
    constexpr double leastSpread = 5.0;  // below it all of the colours look alike
    return compared.size() >= fewest && OrderOfColours().spread >= leastSpread;
}

std::string ColourCheck::OtherChartFault() const
{
    constexpr double leastMean = 12.0;  // CIEDE2000
    constexpr double leastShare = 0.5;
    const double mean = compared.empty() ? 0.0 : Summary().Mean();
    if (mean < leastMean || !CanTellCharts()) {
        return {};
    }
    const Order order = OrderOfColours();
    if (order.explained > leastShare * order.all) {
        return {};
    }
    if (isExpected) {
        return "the colours have little to do with the device values of the layout: their order is another one";
    }
    return "the colours have little to do with those of the layout: they differ by " + FixedText(mean, 0) +
           " (CIEDE2000, mean), without order";
}

}  // namespace J4Tool
