// The spectrum that travels through the bench.
#pragma once

#include "Generic/Colour/Spectrum.h"

namespace J4Bench {

using Kestrelon::DeviceDriver::Generic::FirstWavelength;
using Kestrelon::DeviceDriver::Generic::Spectrum;
using Kestrelon::DeviceDriver::Generic::SpectrumLength;
using Kestrelon::DeviceDriver::Generic::WavelengthStep;

}  // namespace J4Bench
