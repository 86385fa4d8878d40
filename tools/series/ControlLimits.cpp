#include "tools/series/ControlLimits.h"

#include <cmath>
#include <numeric>

namespace J4Tool {

std::optional<ControlLimits> ControlLimits::Of(const std::vector<double>& baseline)
{
    if (baseline.size() < 2) {
        return std::nullopt;
    }
    // Three over the mean range of two values of a normal distribution with standard deviation 1.
    constexpr double factor = 2.66;
    double ranges = 0.0;
    for (size_t i = 1; i < baseline.size(); ++i) {
        ranges += std::abs(baseline[i] - baseline[i - 1]);
    }
    const double mean = std::accumulate(baseline.begin(), baseline.end(), 0.0) / static_cast<double>(baseline.size());
    const double reach = factor * ranges / static_cast<double>(baseline.size() - 1);
    return ControlLimits{mean, mean - reach, mean + reach};
}

}  // namespace J4Tool
