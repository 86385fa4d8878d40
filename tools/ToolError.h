// The one exception of the tool: what failed, what the person at the table can do about it, and the exit code.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>
#include <utility>

#include "tools/ExitCode.h"

namespace J4Tool {

class ToolError : public std::runtime_error {
public:
    /// @param what    what failed, without a full stop
    /// @param advice  what to do, a sentence; empty where nothing can be told
    /// @param status  of the library's call that failed; 0 for a failure that is not the library's
    ToolError(ExitCode code, const std::string& what, std::string advice = {}, int32_t status = 0)
        : std::runtime_error(what), code(code), advice(std::move(advice)), status(status)
    {}

    ExitCode code;
    std::string advice;
    int32_t status;
};

}  // namespace J4Tool
