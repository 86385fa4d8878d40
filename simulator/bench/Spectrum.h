// The spectrum that travels through the bench: reflectance factors at 380 to 730 nm in steps of 10 nm.
#pragma once

#include <array>
#include <cstddef>

namespace J4Bench {

inline constexpr int SpectrumLength = 36;
inline constexpr int FirstWavelength = 380;  ///< nm
inline constexpr int WavelengthStep = 10;    ///< nm

/// Reflectance factors, 1.0 is the perfect diffuser.
using Spectrum = std::array<float, SpectrumLength>;

}  // namespace J4Bench
