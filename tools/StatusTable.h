// The statuses of the library for people: name, advice, and the exit code that they lead to.
#pragma once

#include <cstdint>
#include <string>

#include "tools/ExitCode.h"

namespace J4Tool {

struct StatusEntry {
    int32_t status;
    const char* name;
    const char* advice;
    ExitCode exitCode;
    bool mayPass;  ///< the same call may succeed when it is tried again
};

/// The entry of a status; one that speaks of the instrument's library for any status that is not of the table's.
const StatusEntry& FindStatus(int32_t status);

/// For instance "status 102 (J4_ResultIllegalPosition)".
std::string StatusText(int32_t status);

}  // namespace J4Tool
