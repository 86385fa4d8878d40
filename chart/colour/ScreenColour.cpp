#include "chart/colour/ScreenColour.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace J4Chart {

namespace {

using Colorimetry::Triple;
using Matrix = std::array<Triple, 3>;

// CIE 15: white of D50, Y = 1, for the 2 degree observer.
constexpr Triple whiteD50 = {0.9642, 1.0, 0.8251};

// From XYZ under D50 to XYZ under D65: Bradford cone responses, scaled by the ratio of the two whites.
constexpr Matrix fromD50ToD65 = {
    {{0.9555766, -0.0230393, 0.0631636}, {-0.0282895, 1.0099416, 0.0210077}, {0.0122982, -0.0204830, 1.3299098}}};

// IEC 61966-2-1: from XYZ under D65 to linear sRGB.
constexpr Matrix toLinear = {
    {{3.2404542, -1.5371385, -0.4985314}, {-0.9692660, 1.8760108, 0.0415560}, {0.0556434, -0.2040259, 1.0572252}}};

// What rounding of the matrices may leave outside of 0 to 1 for white and black.
constexpr double tolerance = 0.002;

Triple Apply(const Matrix& matrix, const Triple& vector)
{
    Triple result{};
    for (size_t row = 0; row < matrix.size(); ++row) {
        for (size_t column = 0; column < vector.size(); ++column) {
            result[row] += matrix[row][column] * vector[column];
        }
    }
    return result;
}

/// IEC 61966-2-1: the transfer curve, as a code value of 8 bits.
int CodeValue(double linear)
{
    const double clipped = std::clamp(linear, 0.0, 1.0);
    const double encoded = clipped <= 0.0031308 ? 12.92 * clipped : 1.055 * std::pow(clipped, 1.0 / 2.4) - 0.055;
    return static_cast<int>(std::lround(255.0 * encoded));
}

}  // namespace

ScreenColour ScreenColourOf(const Triple& lab)
{
    const Triple xyz = Colorimetry::TristimulusOfLab(lab, whiteD50);
    ScreenColour colour{"#", true};
    for (const double channel : Apply(toLinear, Apply(fromD50ToD65, xyz))) {
        const int value = CodeValue(channel);
        colour.code += "0123456789abcdef"[value / 16];
        colour.code += "0123456789abcdef"[value % 16];
        colour.inGamut = colour.inGamut && channel >= -tolerance && channel <= 1.0 + tolerance;
    }
    return colour;
}

}  // namespace J4Chart
