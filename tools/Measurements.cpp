#include "tools/Measurements.h"

#include <algorithm>

namespace J4Tool {

std::vector<size_t> OpenRows(const ChartLayout& layout, const Measurements& measurements)
{
    std::vector<size_t> open;
    for (size_t row = 0; row < layout.Rows().size(); ++row) {
        const ChartLayout::Row& patches = layout.Rows()[row];
        if (!std::all_of(patches.begin(), patches.end(),
                         [&](size_t patch) { return measurements[patch].has_value(); })) {
            open.push_back(row);
        }
    }
    return open;
}

size_t CountMeasured(const Measurements& measurements)
{
    return static_cast<size_t>(std::count_if(measurements.begin(), measurements.end(),
                                             [](const auto& spectrum) { return spectrum.has_value(); }));
}

}  // namespace J4Tool
