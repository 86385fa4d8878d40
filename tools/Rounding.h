// Computed figures against their limits.
#pragma once

namespace J4Tool {

/// Of the arithmetic: what meets its limit to the last decimal of a file holds it.
constexpr double Rounding = 1e-9;

inline bool IsAbove(double value, double limit) { return value > limit + Rounding; }

}  // namespace J4Tool
