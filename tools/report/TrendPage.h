// The page of many measurements of a chart, self-contained as the report is.
#pragma once

#include <string>

#include "tools/report/TrendData.h"

namespace J4Tool {

/// @return the page, UTF-8
std::string MakeTrendPage(const TrendData& data);

}  // namespace J4Tool
