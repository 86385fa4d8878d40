// The text of a file with one table, for commands that write one.
#pragma once

#include <string>

#include "chart/cgats/CgatsTable.h"

namespace J4Tool {

/// @param complaint  of a table that no file can hold, for instance of a name with both kinds of quotes: "the layout
///                   can't be written"
/// @param hint       what to do then
/// @throws ToolError
std::string TableText(J4Chart::CgatsTable table, const std::string& complaint, const std::string& hint);

}  // namespace J4Tool
