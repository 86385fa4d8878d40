// Number of values in a spectrum, everywhere in the system.
#pragma once

#include <cstddef>

#include "c_sdk/include/j4tavla.h"

namespace Kestrelon::DeviceDriver::J4T {

inline constexpr std::size_t SpectrumLength = J4_SPECTRUM_LENGTH;

}  // namespace Kestrelon::DeviceDriver::J4T
