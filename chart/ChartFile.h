// A file of a chart, of whatever form: CGATS.17, CxF3, or comma-separated values.
#pragma once

#include <string>

#include "chart/cgats/CgatsFile.h"

namespace J4Chart::ChartFile {

/// Its tables: of comma-separated values where the name ends in ".csv", of CxF3 where the file begins as XML does, of
/// CGATS.17 otherwise.
/// @throws CgatsError
CgatsFile Read(const std::string& fileName);

/// Whether a name ends so, in capitals or not.
bool HasEnding(const std::string& fileName, const std::string& ending);

}  // namespace J4Chart::ChartFile
