// A spectrum that a caller hands over: 36 numbers, which may be anything.
#pragma once

#include <algorithm>
#include <cmath>
#include <optional>

#include "simulator/ground/Spectrum.h"

namespace J4Bench {

/// The caller's numbers; nothing when they are missing or one of them is no usable factor.
/// @param values  null or 36 numbers
inline std::optional<Spectrum> Factors(const float* values, bool mayBeZero)
{
    if (values == nullptr || !std::all_of(values, values + SpectrumLength, [mayBeZero](float value) {
            return std::isfinite(value) && (mayBeZero || value > 0.0f);
        })) {
        return std::nullopt;
    }
    Spectrum spectrum;
    std::copy(values, values + SpectrumLength, spectrum.begin());
    return spectrum;
}

}  // namespace J4Bench
