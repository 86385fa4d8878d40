#include "chart/colour/DifferenceSummary.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace J4Chart {

namespace {

constexpr size_t worstCount = 10;

// The histogram has up to about thirty classes of a round width. Below the smallest width differences are
// rounding, and fewer classes than a handful would say nothing.
constexpr double wantedBins = 30.0;
constexpr double smallestWidth = 0.001;
constexpr size_t fewestBins = 5;

double RoundWidth(double atLeast)
{
    const double power = std::pow(10.0, std::floor(std::log10(atLeast)));
    for (const double factor : {1.0, 2.0, 5.0}) {
        if (factor * power >= atLeast * (1.0 - 1e-9)) {
            return factor * power;
        }
    }
    return 10.0 * power;
}

double Percentile(const std::vector<double>& sorted, double part)
{
    const double place = part * static_cast<double>(sorted.size() - 1);
    const size_t below = static_cast<size_t>(place);
    const size_t above = std::min(below + 1, sorted.size() - 1);
    return std::lerp(sorted[below], sorted[above], place - static_cast<double>(below));
}

}  // namespace

DifferenceSummary::DifferenceSummary(const std::vector<double>& differences)
{
    for (size_t index = 0; index < differences.size(); ++index) {
        if (!std::isnan(differences[index])) {
            worst.push_back(index);
        }
    }
    count = worst.size();
    std::stable_sort(worst.begin(), worst.end(),
                     [&](size_t first, size_t second) { return differences[first] > differences[second]; });
    std::vector<double> sorted;
    sorted.reserve(count);
    std::transform(worst.rbegin(), worst.rend(), std::back_inserter(sorted),
                   [&](size_t index) { return differences[index]; });
    worst.resize(std::min(count, worstCount));

    mean = std::accumulate(sorted.begin(), sorted.end(), 0.0) / static_cast<double>(count);
    percentile95 = Percentile(sorted, 0.95);
    maximum = sorted.back();

    binWidth = RoundWidth(std::max(maximum / wantedBins, smallestWidth));
    // Decimal fractions are a little off as binary ones: 0.3 belongs to the class that begins there.
    const auto binOf = [&](double difference) { return static_cast<size_t>(difference / binWidth + 1e-9); };
    const size_t used = static_cast<size_t>(std::ceil(maximum / binWidth - 1e-9));
    bins.assign(std::max(used, fewestBins), 0);
    for (const double difference : sorted) {
        ++bins[std::min(binOf(difference), bins.size() - 1)];
    }
}

}  // namespace J4Chart
