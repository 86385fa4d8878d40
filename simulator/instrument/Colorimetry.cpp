#include "simulator/instrument/Colorimetry.h"

#include <algorithm>
#include <cmath>

#include "Generic/Colour/CieTables.h"

namespace J4Bench::Colorimetry {

namespace {

static_assert(CieBands == SpectrumLength && CieFirstWavelength == FirstWavelength &&
              CieWavelengthStep == WavelengthStep);

constexpr double LowestReflectance = 0.0001;

Triple WeightedSums(const Spectrum& reflectance)
{
    Triple sums{};
    double diffuser = 0.0;
    for (size_t band = 0; band < reflectance.size(); ++band) {
        const CieBand& weight = cieTable[band];
        const double power = weight.d50 * static_cast<double>(reflectance[band]);
        sums[0] += power * weight.x;
        sums[1] += power * weight.y;
        sums[2] += power * weight.z;
        diffuser += weight.d50 * weight.y;
    }
    for (double& sum : sums) {
        sum *= 100.0 / diffuser;
    }
    return sums;
}

const Triple& White()
{
    static const Triple white = [] {
        Spectrum diffuser;
        diffuser.fill(1.0f);
        return WeightedSums(diffuser);
    }();
    return white;
}

/// The cube root with the straight piece near black, CIE 15.
double LabFunction(double ratio)
{
    constexpr double delta = 6.0 / 29.0;
    return ratio > delta * delta * delta ? std::cbrt(ratio) : ratio / (3.0 * delta * delta) + 4.0 / 29.0;
}

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

Triple TristimulusValues(const Spectrum& reflectance)
{
    return WeightedSums(reflectance);
}

Triple Lab(const Spectrum& reflectance)
{
    const Triple values = TristimulusValues(reflectance);
    const double x = LabFunction(values[0] / White()[0]);
    const double y = LabFunction(values[1] / White()[1]);
    const double z = LabFunction(values[2] / White()[2]);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

Triple LCh(const Spectrum& reflectance)
{
    const Triple lab = Lab(reflectance);
    constexpr double degrees = 57.29577951308232;
    const double hue = std::atan2(lab[2], lab[1]) * degrees;
    return {lab[0], std::hypot(lab[1], lab[2]), hue < 0.0 ? hue + 360.0 : hue};
}

Triple Chromaticity(const Spectrum& reflectance)
{
    const Triple values = TristimulusValues(reflectance);
    const double sum = values[0] + values[1] + values[2];
    if (sum <= 0.0) {
        const double whiteSum = White()[0] + White()[1] + White()[2];
        return {White()[0] / whiteSum, White()[1] / whiteSum, 0.0};
    }
    return {values[0] / sum, values[1] / sum, values[1]};
}

double Distance(const Triple& first, const Triple& second)
{
    return std::hypot(first[0] - second[0], first[1] - second[1], first[2] - second[2]);
}

Densities DensitiesOf(const Spectrum& reflectance)
{
    const double luminance = TristimulusValues(reflectance)[1] / 100.0;
    return {BandDensity(reflectance, 600, 700), BandDensity(reflectance, 500, 590), BandDensity(reflectance, 400, 490),
            -std::log10(std::max(luminance, LowestReflectance))};
}

}  // namespace J4Bench::Colorimetry
