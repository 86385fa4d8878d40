// The spectrum that every part of the system means: reflectance factors at 380 to 730 nm in steps of 10 nm.
#pragma once

#include <array>
#include <cstddef>

#include "chart/colour/CieTables.h"

namespace J4Chart {

inline constexpr int SpectrumLength = CieBands;
inline constexpr int FirstWavelength = CieFirstWavelength;  ///< nm
inline constexpr int WavelengthStep = CieWavelengthStep;    ///< nm

/// Reflectance factors, 1.0 is the perfect diffuser.
using Spectrum = std::array<float, SpectrumLength>;

/// Bands of a spectrum, counted from 0, the last one included.
struct BandRange {
    size_t first = 0;
    size_t last = SpectrumLength - 1;

    bool operator==(const BandRange&) const = default;
};

}  // namespace J4Chart
