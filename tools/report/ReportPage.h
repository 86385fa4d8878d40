// The report as one HTML page that needs nothing but itself: the template with style, scripts, plotting library
// and data put in.
#pragma once

#include <string>

#include "tools/report/ReportData.h"

namespace J4Tool {

/// @return the page, UTF-8
std::string MakeReportPage(const ReportData& data);

}  // namespace J4Tool
