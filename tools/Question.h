// Questions to the person at the table.
#pragma once

#include <string>

namespace J4Tool {

/// True for "y" or "yes"; false for any other answer, and where nobody can answer.
/// @throws ToolError when the program is to end meanwhile
bool AskYesNo(const std::string& question);

/// A line as an answer; empty where nobody can answer.
std::string AskText(const std::string& question);

}  // namespace J4Tool
