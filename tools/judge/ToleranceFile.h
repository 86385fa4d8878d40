// Reads tolerances from a text in TOML. What is not known in it is refused, so that no rule is lost by a slip of the pen.
#pragma once

#include <string>

#include "tools/judge/Tolerances.h"

namespace J4Tool {

class ToleranceFile {
public:
    /// @throws ToolError with file, line and reason
    static Tolerances Load(const std::string& fileName);

    /// @param text      the whole file
    /// @param fileName  for the errors
    /// @throws ToolError with file, line and reason
    static Tolerances Read(const std::string& text, const std::string& fileName);
};

}  // namespace J4Tool
