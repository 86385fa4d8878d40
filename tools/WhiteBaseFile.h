// White bases as CGATS.17 files: one data set with the reflectance of the white tile.
#pragma once

#include <string>

#include "chart/colour/Spectrum.h"

namespace J4Tool {

/// @param date  when the table received it, for the head of the file
/// @throws ToolError
void SaveWhiteBase(const std::string& fileName, const J4Chart::Spectrum& whiteBase, const std::string& date,
                   const std::string& tableSerial);

/// @throws ToolError for a file without exactly one data set of 36 reflectance factors above 0 and up to 2
J4Chart::Spectrum LoadWhiteBase(const std::string& fileName);

}  // namespace J4Tool
