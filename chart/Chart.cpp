#include "chart/Chart.h"

#include <algorithm>

namespace J4Chart {

std::optional<Colorimetry::Triple> Patch::Colour() const
{
    if (spectrum) {
        return Colorimetry::Lab(*spectrum);
    }
    return lab || !xyz ? lab : Colorimetry::LabOfTristimulus(*xyz);
}

std::string Chart::Condition(const std::string& keyword) const
{
    const auto found = std::find_if(conditions.rbegin(), conditions.rend(),
                                    [&keyword](const auto& condition) { return condition.first == keyword; });
    return found == conditions.rend() ? std::string() : found->second;
}

}  // namespace J4Chart
