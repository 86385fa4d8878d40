// The spectrum that travels through the bench.
#pragma once

#include "chart/colour/Spectrum.h"

namespace J4Bench {

using J4Chart::FirstWavelength;
using J4Chart::Spectrum;
using J4Chart::SpectrumLength;
using J4Chart::WavelengthStep;

}  // namespace J4Bench
