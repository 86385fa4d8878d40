#include "tools/judge/Tolerances.h"

#include <cmath>

namespace J4Tool {

namespace ColourDifference = J4Chart::ColourDifference;

std::string Tolerances::Rule::QuantityText() const
{
    switch (quantity) {
    case Quantity::Lightness:
        return "dL*";
    case Quantity::Chroma:
        return "dC*ab";
    case Quantity::Hue:
        return "dH*ab";
    case Quantity::Grey:
        return "dCh";
    default:
        return formula->name;
    }
}

double Tolerances::Rule::ValueOf(const J4Chart::Colorimetry::Triple& reference,
                                 const J4Chart::Colorimetry::Triple& measured) const
{
    switch (quantity) {
    case Quantity::Lightness:
        return std::abs(ColourDifference::PartsOf(reference, measured).lightness);
    case Quantity::Chroma:
        return std::abs(ColourDifference::PartsOf(reference, measured).chroma);
    case Quantity::Hue:
        return std::abs(ColourDifference::PartsOf(reference, measured).hue);
    case Quantity::Grey:
        return std::hypot(measured[1] - reference[1], measured[2] - reference[2]);
    default:
        return formula->difference(reference, measured);
    }
}

}  // namespace J4Tool
