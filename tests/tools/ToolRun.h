// Runs the tool as its users do, and keeps what it said.
#pragma once

#include <string>
#include <vector>

namespace J4Tool {

struct ToolRun {
    /// @param arguments  as typed into a shell
    explicit ToolRun(const std::string& arguments);

    int exitCode = -1;
    std::string output;  ///< standard output
    std::string errors;  ///< standard error

    bool Said(const std::string& text) const { return output.find(text) != std::string::npos; }
    bool Complained(const std::string& text) const { return errors.find(text) != std::string::npos; }
};

std::string ContentOf(const std::string& fileName);

}  // namespace J4Tool
