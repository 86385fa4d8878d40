// Small files for the tests of the report.
#pragma once

#include <sstream>
#include <string>

#include "tests/support/ChartText.h"
#include "tools/report/ReportData.h"

namespace J4Tool {

/// A file with the given fields, rows and head, each row a line.
inline ColourFile SourceOf(const std::string& fields, const std::string& rows, const std::string& head = "")
{
    std::istringstream input(J4Test::CgatsText(fields, rows, head));
    return ColourFile::Read("chart.cgats", J4Chart::CgatsFile::Read(input));
}

}  // namespace J4Tool
