#include "chart/colour/ToneValue.h"

#include <cmath>

namespace J4Chart {

double ToneValue::OfReflectances(double paper, double solid, double tone)
{
    return 100.0 * (paper - tone) / (paper - solid);
}

double ToneValue::OfDensities(double paper, double solid, double tone)
{
    return 100.0 * (1.0 - std::pow(10.0, paper - tone)) / (1.0 - std::pow(10.0, paper - solid));
}

double ToneValue::OfTristimulus(const Colorimetry::Triple& paper, const Colorimetry::Triple& solid,
                                const Colorimetry::Triple& tone)
{
    const auto distance = [](const Colorimetry::Triple& first, const Colorimetry::Triple& second) {
        return Colorimetry::Distance(Colorimetry::LightnessOfEach(first), Colorimetry::LightnessOfEach(second));
    };
    return 100.0 * distance(paper, tone) / distance(paper, solid);
}

}  // namespace J4Chart
