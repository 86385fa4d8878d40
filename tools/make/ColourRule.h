// Lists of colours that are made by a rule, for people who have none.
#pragma once

#include <string>

#include "chart/cgats/CgatsTable.h"

namespace J4Tool::ColourRule {

/// What the names of the lists mean, a line each.
extern const char* const Help;

/// @param name  "rgb", "rgb2" to "rgb10", "cmyk", "cmyk2" to "cmyk6"; see Help
/// @throws ToolError for any other name
J4Chart::CgatsTable Make(const std::string& name);

}  // namespace J4Tool::ColourRule
