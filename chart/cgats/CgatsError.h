// What is wrong with a file of a chart, which is a CGATS file as a rule, and where.
#pragma once

#include <stdexcept>
#include <string>

namespace J4Chart {

class CgatsError : public std::runtime_error {
public:
    /// The text is for instance "line 12: 40 values instead of 41".
    /// @param line  0 for the file as a whole
    CgatsError(int line, const std::string& reason)
        : std::runtime_error(line > 0 ? "line " + std::to_string(line) + ": " + reason : reason)
    {}
};

}  // namespace J4Chart
