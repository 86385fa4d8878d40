// The limits within which a process that has not changed stays: Shewhart's chart of individual values.
#pragma once

#include <optional>
#include <vector>

#include "tools/Rounding.h"

namespace J4Tool {

struct ControlLimits {
    double mean = 0.0;
    double lower = 0.0;
    double upper = 0.0;

    /// The mean, and below and above it 2.66 times the mean moving range: three standard deviations, as the ranges from
    /// one value to the next tell them, which a slow drift does not widen.
    /// @param baseline  in the order of time
    /// @return nothing for fewer than two values
    static std::optional<ControlLimits> Of(const std::vector<double>& baseline);

    bool Has(double value) const { return !IsAbove(value, upper) && !IsAbove(lower, value); }

    /// True where nothing changed in the baseline: any change at all lies outside.
    bool IsOfNoWidth() const { return !IsAbove(upper, lower); }
};

}  // namespace J4Tool
