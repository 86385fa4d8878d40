// A file that a command is going to write, checked before any work is done for it: nothing is overwritten that was not
// meant, and nobody else writes it meanwhile. "-" is standard output.
#pragma once

#include <memory>
#include <string>
#include <vector>

#include "tools/FileLock.h"

namespace J4Tool {

class OutputFile {
public:
    /// @param replace  whether a file that exists may be replaced
    /// @param inputs   files that the command reads; none of them is ever written
    /// @throws ToolError when it can't or must not be written: an empty name, a folder, a link, a device, a file that
    ///         is read or exists, one that another program writes, no room or no right to write there
    OutputFile(const std::string& name, bool replace, const std::vector<std::string>& inputs);

    bool IsStandardOutput() const { return name == "-"; }

    /// As it was given; "standard output" for that.
    std::string Name() const { return IsStandardOutput() ? "standard output" : name; }

    /// Writes the file so that it is there whole or not at all.
    /// @throws ToolError
    void Write(const std::string& content) const;

    /// @throws ToolError where two files that one command writes are the same, standard output too
    static void RequireDifferent(const std::vector<std::string>& names);

    /// @throws ToolError for what is there and no regular file
    static void RequireRegular(const std::string& name);

private:
    std::string name;
    std::shared_ptr<FileLock> lock;
};

/// @throws ToolError when something that was written to standard output did not arrive
void FlushStandardOutput();

}  // namespace J4Tool
