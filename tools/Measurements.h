// The readings of a chart's patches as far as they are measured, by the layout's order of patches.
#pragma once

#include <optional>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/PatchReading.h"

namespace J4Tool {

using Measurements = std::vector<std::optional<PatchReading>>;

/// The rows that have a patch which is not measured.
std::vector<size_t> OpenRows(const ChartLayout& layout, const Measurements& measurements);

size_t CountMeasured(const Measurements& measurements);

}  // namespace J4Tool
