#include "simulator/instrument/Densities.h"

#include <algorithm>
#include <cmath>

#include "chart/colour/Colorimetry.h"

namespace J4Bench {

namespace {

constexpr double LowestReflectance = 0.0001;

double BandDensity(const Spectrum& reflectance, int from, int to)
{
    double sum = 0.0;
    int count = 0;
    for (int wavelength = from; wavelength <= to; wavelength += WavelengthStep, ++count) {
        sum += static_cast<double>(reflectance[static_cast<size_t>((wavelength - FirstWavelength) / WavelengthStep)]);
    }
    return -std::log10(std::max(sum / count, LowestReflectance));
}

}  // namespace

Densities DensitiesOf(const Spectrum& reflectance)
{
    const double luminance = J4Chart::Colorimetry::TristimulusValues(reflectance)[1] / 100.0;
    return {BandDensity(reflectance, 600, 700), BandDensity(reflectance, 500, 590), BandDensity(reflectance, 400, 490),
            -std::log10(std::max(luminance, LowestReflectance))};
}

}  // namespace J4Bench
