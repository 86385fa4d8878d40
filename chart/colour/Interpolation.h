// Cubic interpolation between sampled values by the polynomial of Lagrange, as ASTM E2022 uses it: through two samples
// on either side, in the first and the last interval through the three nearest. Beyond the ends the last value holds.
#pragma once

#include <cstddef>
#include <vector>

namespace J4Chart::Interpolation {

struct Term {
    size_t sample;
    double weight;
};

/// The value at a place is the sum of the weighted samples; one sample alone where it lies at that place or beyond it.
/// @param places  of the samples, ascending, at least one
std::vector<Term> TermsAt(int place, const std::vector<int>& places);

}  // namespace J4Chart::Interpolation
