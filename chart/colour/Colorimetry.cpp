#include "chart/colour/Colorimetry.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace J4Chart::Colorimetry {

namespace {

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

/// The cube root with the straight piece near black, CIE 15.
double LabFunction(double ratio)
{
    constexpr double delta = 6.0 / 29.0;
    return ratio > delta * delta * delta ? std::cbrt(ratio) : ratio / (3.0 * delta * delta) + 4.0 / 29.0;
}

/// The inverse of LabFunction().
double RatioOf(double f)
{
    constexpr double delta = 6.0 / 29.0;
    return f > delta ? f * f * f : 3.0 * delta * delta * (f - 4.0 / 29.0);
}

constexpr double Radians(double degrees) { return degrees * std::numbers::pi / 180.0; }

/// Hue angle in degrees, 0 up to 360; 0 for a grey.
double HueDegrees(double a, double b)
{
    if (a == 0.0 && b == 0.0) {
        return 0.0;
    }
    const double hue = std::atan2(b, a) * 180.0 / std::numbers::pi;
    return hue < 0.0 ? hue + 360.0 : hue;
}

double Seventh(double value) { return std::pow(value, 7.0); }

/// Of a chroma: near 1 for vivid colours, near 0 for greys.
double Saturation(double chroma)
{
    constexpr double twentyFiveToTheSeventh = 6103515625.0;
    return std::sqrt(Seventh(chroma) / (Seventh(chroma) + twentyFiveToTheSeventh));
}

}  // namespace

Triple TristimulusValues(const Spectrum& reflectance) { return WeightedSums(reflectance); }

const Triple& White()
{
    static const Triple white = [] {
        Spectrum diffuser;
        diffuser.fill(1.0f);
        return WeightedSums(diffuser);
    }();
    return white;
}

Triple LabOfTristimulus(const Triple& values)
{
    const double x = LabFunction(values[0] / White()[0]);
    const double y = LabFunction(values[1] / White()[1]);
    const double z = LabFunction(values[2] / White()[2]);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

Triple TristimulusOfLab(const Triple& lab, const Triple& white)
{
    const double y = (lab[0] + 16.0) / 116.0;
    return {white[0] * RatioOf(y + lab[1] / 500.0), white[1] * RatioOf(y), white[2] * RatioOf(y - lab[2] / 200.0)};
}

Triple Lab(const Spectrum& reflectance) { return LabOfTristimulus(TristimulusValues(reflectance)); }

Triple LCh(const Spectrum& reflectance)
{
    const Triple lab = Lab(reflectance);
    return {lab[0], std::hypot(lab[1], lab[2]), HueDegrees(lab[1], lab[2])};
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

double Ciede2000(const Triple& first, const Triple& second)
{
    // Greys are spread along a*, so that their differences there weigh more.
    const double meanChroma = (std::hypot(first[1], first[2]) + std::hypot(second[1], second[2])) / 2.0;
    const double spread = 1.0 + 0.5 * (1.0 - Saturation(meanChroma));
    const double a1 = first[1] * spread;
    const double a2 = second[1] * spread;
    const double chroma1 = std::hypot(a1, first[2]);
    const double chroma2 = std::hypot(a2, second[2]);
    const double hue1 = HueDegrees(a1, first[2]);
    const double hue2 = HueDegrees(a2, second[2]);

    // Hue is cyclic: the difference goes the short way round, the mean lies on it. A grey has no hue.
    const bool grey = chroma1 * chroma2 == 0.0;
    double hueDifference = grey ? 0.0 : hue2 - hue1;
    double meanHue = grey ? hue1 + hue2 : (hue1 + hue2) / 2.0;
    if (hueDifference > 180.0 || hueDifference < -180.0) {
        hueDifference += hueDifference > 180.0 ? -360.0 : 360.0;
        meanHue += hue1 + hue2 < 360.0 ? 180.0 : -180.0;
    }

    const double lightness = (first[0] + second[0]) / 2.0 - 50.0;
    const double chroma = (chroma1 + chroma2) / 2.0;
    const double t = 1.0 - 0.17 * std::cos(Radians(meanHue - 30.0)) + 0.24 * std::cos(Radians(2.0 * meanHue)) +
                     0.32 * std::cos(Radians(3.0 * meanHue + 6.0)) - 0.20 * std::cos(Radians(4.0 * meanHue - 63.0));
    const double lightnessWeight = 1.0 + 0.015 * lightness * lightness / std::sqrt(20.0 + lightness * lightness);
    const double chromaWeight = 1.0 + 0.045 * chroma;
    const double hueWeight = 1.0 + 0.015 * chroma * t;
    const double fromBlue = (meanHue - 275.0) / 25.0;
    const double turn = -2.0 * Saturation(chroma) * std::sin(Radians(60.0 * std::exp(-fromBlue * fromBlue)));

    const double l = (second[0] - first[0]) / lightnessWeight;
    const double c = (chroma2 - chroma1) / chromaWeight;
    const double h = 2.0 * std::sqrt(chroma1 * chroma2) * std::sin(Radians(hueDifference / 2.0)) / hueWeight;
    // The turn never outweighs the squares, but rounding may take the sum of near equals below 0.
    return std::sqrt(std::max(0.0, l * l + c * c + h * h + turn * c * h));
}

}  // namespace J4Chart::Colorimetry
