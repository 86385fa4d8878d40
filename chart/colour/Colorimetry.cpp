#include "chart/colour/Colorimetry.h"

#include <cmath>
#include <numbers>

namespace J4Chart::Colorimetry {

namespace {

Triple WeightedSums(const Spectrum& reflectance)
{
    Triple sums{};
    double diffuser = 0.0;
    for (size_t band = 0; band < reflectance.size(); ++band) {
        const CieRow& weight = cieTable[CieRowsPerBand * band];
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

/// Hue angle in degrees, 0 up to 360; 0 for a grey.
double HueDegrees(double a, double b)
{
    if (a == 0.0 && b == 0.0) {
        return 0.0;
    }
    const double hue = std::atan2(b, a) * 180.0 / std::numbers::pi;
    return hue < 0.0 ? hue + 360.0 : hue;
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

Triple LabOfTristimulus(const Triple& values, const Triple& white)
{
    const double x = LabFunction(values[0] / white[0]);
    const double y = LabFunction(values[1] / white[1]);
    const double z = LabFunction(values[2] / white[2]);
    return {116.0 * y - 16.0, 500.0 * (x - y), 200.0 * (y - z)};
}

Triple LightnessOfEach(const Triple& values)
{
    Triple lightness{};
    for (size_t i = 0; i < lightness.size(); ++i) {
        lightness[i] = 116.0 * LabFunction(values[i] / White()[i]) - 16.0;
    }
    return lightness;
}

Triple TristimulusOfLab(const Triple& lab, const Triple& white)
{
    const double y = (lab[0] + 16.0) / 116.0;
    return {white[0] * RatioOf(y + lab[1] / 500.0), white[1] * RatioOf(y), white[2] * RatioOf(y - lab[2] / 200.0)};
}

Triple Lab(const Spectrum& reflectance) { return LabOfTristimulus(TristimulusValues(reflectance)); }

Triple LChOfLab(const Triple& lab) { return {lab[0], std::hypot(lab[1], lab[2]), HueDegrees(lab[1], lab[2])}; }

Triple LCh(const Spectrum& reflectance) { return LChOfLab(Lab(reflectance)); }

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

}  // namespace J4Chart::Colorimetry
