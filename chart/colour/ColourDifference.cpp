#include "chart/colour/ColourDifference.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace J4Chart::ColourDifference {

using Colorimetry::LChOfLab;

namespace {

constexpr double Radians(double degrees) { return degrees * std::numbers::pi / 180.0; }

double Seventh(double value) { return std::pow(value, 7.0); }

/// Of a chroma: near 1 for vivid colours, near 0 for greys.
double Saturation(double chroma)
{
    constexpr double twentyFiveToTheSeventh = 6103515625.0;
    return std::sqrt(Seventh(chroma) / (Seventh(chroma) + twentyFiveToTheSeventh));
}

}  // namespace

const std::array<Formula, 5> Formulas = {{
    {"CIEDE2000", Ciede2000},
    {"CIE 1976", Cie1976},
    {"CIE 1994", Cie1994},
    {"CMC(2:1)", [](const Triple& reference, const Triple& sample) { return Cmc(reference, sample, 2.0, 1.0); }},
    {"CMC(1:1)", [](const Triple& reference, const Triple& sample) { return Cmc(reference, sample, 1.0, 1.0); }},
}};

const Formula* FindFormula(const std::string& name)
{
    const auto found = std::find_if(Formulas.begin(), Formulas.end(),
                                    [&name](const Formula& formula) { return name == formula.name; });
    return found == Formulas.end() ? nullptr : &*found;
}

Parts PartsOf(const Triple& reference, const Triple& sample)
{
    const auto [lightness1, chroma1, hue1] = LChOfLab(reference);
    const auto [lightness2, chroma2, hue2] = LChOfLab(sample);
    double hue = hue2 - hue1;
    hue += hue > 180.0 ? -360.0 : hue < -180.0 ? 360.0 : 0.0;
    return {lightness2 - lightness1, chroma2 - chroma1,
            2.0 * std::sqrt(chroma1 * chroma2) * std::sin(Radians(hue / 2.0))};
}

double Cie1976(const Triple& reference, const Triple& sample) { return Colorimetry::Distance(reference, sample); }

double Cie1994(const Triple& reference, const Triple& sample)
{
    const Parts parts = PartsOf(reference, sample);
    const double chroma = LChOfLab(reference)[1];
    return std::hypot(parts.lightness, parts.chroma / (1.0 + 0.045 * chroma), parts.hue / (1.0 + 0.015 * chroma));
}

double Cmc(const Triple& reference, const Triple& sample, double l, double c)
{
    const Parts parts = PartsOf(reference, sample);
    const auto [lightness, chroma, hue] = LChOfLab(reference);
    const bool blueToRed = hue >= 164.0 && hue <= 345.0;
    const double t = blueToRed ? 0.56 + std::abs(0.2 * std::cos(Radians(hue + 168.0)))
                               : 0.36 + std::abs(0.4 * std::cos(Radians(hue + 35.0)));
    const double fourth = std::pow(chroma, 4.0);
    const double f = std::sqrt(fourth / (fourth + 1900.0));
    const double lightnessWeight = lightness < 16.0 ? 0.511 : 0.040975 * lightness / (1.0 + 0.01765 * lightness);
    const double chromaWeight = 0.0638 * chroma / (1.0 + 0.0131 * chroma) + 0.638;
    const double hueWeight = chromaWeight * (f * t + 1.0 - f);
    return std::hypot(parts.lightness / (l * lightnessWeight), parts.chroma / (c * chromaWeight),
                      parts.hue / hueWeight);
}

double Ciede2000(const Triple& first, const Triple& second)
{
    // Greys are spread along a*, so that their differences there weigh more.
    const double meanChroma = (std::hypot(first[1], first[2]) + std::hypot(second[1], second[2])) / 2.0;
    const double spread = 1.0 + 0.5 * (1.0 - Saturation(meanChroma));
    const double a1 = first[1] * spread;
    const double a2 = second[1] * spread;
    const auto [lightness1, chroma1, hue1] = LChOfLab({first[0], a1, first[2]});
    const auto [lightness2, chroma2, hue2] = LChOfLab({second[0], a2, second[2]});

    // Hue is cyclic: the difference goes the short way round, the mean lies on it. A grey has no hue.
    const bool grey = chroma1 * chroma2 == 0.0;
    double hueDifference = grey ? 0.0 : hue2 - hue1;
    double meanHue = grey ? hue1 + hue2 : (hue1 + hue2) / 2.0;
    if (hueDifference > 180.0 || hueDifference < -180.0) {
        hueDifference += hueDifference > 180.0 ? -360.0 : 360.0;
        meanHue += hue1 + hue2 < 360.0 ? 180.0 : -180.0;
    }

    const double lightness = (lightness1 + lightness2) / 2.0 - 50.0;
    const double chroma = (chroma1 + chroma2) / 2.0;
    const double t = 1.0 - 0.17 * std::cos(Radians(meanHue - 30.0)) + 0.24 * std::cos(Radians(2.0 * meanHue)) +
                     0.32 * std::cos(Radians(3.0 * meanHue + 6.0)) - 0.20 * std::cos(Radians(4.0 * meanHue - 63.0));
    const double lightnessWeight = 1.0 + 0.015 * lightness * lightness / std::sqrt(20.0 + lightness * lightness);
    const double chromaWeight = 1.0 + 0.045 * chroma;
    const double hueWeight = 1.0 + 0.015 * chroma * t;
    const double fromBlue = (meanHue - 275.0) / 25.0;
    const double turn = -2.0 * Saturation(chroma) * std::sin(Radians(60.0 * std::exp(-fromBlue * fromBlue)));

    const double l = (lightness2 - lightness1) / lightnessWeight;
    const double c = (chroma2 - chroma1) / chromaWeight;
    const double h = 2.0 * std::sqrt(chroma1 * chroma2) * std::sin(Radians(hueDifference / 2.0)) / hueWeight;
    // The turn never outweighs the squares, but rounding may take the sum of near equals below 0.
    return std::sqrt(std::max(0.0, l * l + c * c + h * h + turn * c * h));
}

}  // namespace J4Chart::ColourDifference
