// A file of a chart, of whatever form: CGATS.17 or comma-separated values.
#pragma once

#include <string>

#include "chart/cgats/CgatsFile.h"

namespace J4Chart::ChartFile {

/// Its tables; one whose name ends in ".csv" is read as comma-separated values, any other as CGATS.17.
/// @throws CgatsError
CgatsFile Read(const std::string& fileName);

/// Whether a name ends so, in capitals or not.
bool HasEnding(const std::string& fileName, const std::string& ending);

}  // namespace J4Chart::ChartFile
