// A trace as a page that can be played: the bed with the way of the arm, rows, samples and failures on a time line, and the
// dialogue beside it.
#pragma once

#include <cstddef>
#include <string>

namespace J4Tool {

class TracePage {
public:
    /// Reads the trace.
    /// @param isWhole  the dialogue has a line for each call also where many are alike
    /// @throws ToolError with file, place and reason
    TracePage(const std::string& fileName, bool isWhole);

    /// The page, UTF-8.
    const std::string& Text() const { return text; }

    size_t Events() const { return events; }
    size_t Motions() const { return motions; }
    size_t Scans() const { return scans; }
    size_t Failures() const { return failures; }

    /// Where the file is cut, for people; empty when it is whole.
    const std::string& Cut() const { return cut; }

    /// What people need to know of the failures of a program that is well.
    static constexpr const char* FailuresRemark =
        "some are part of the procedure, such as the search for the instrument in the table";

private:
    std::string text;
    std::string cut;
    size_t events = 0;
    size_t motions = 0;
    size_t scans = 0;
    size_t failures = 0;
};

}  // namespace J4Tool
