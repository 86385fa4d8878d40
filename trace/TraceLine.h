// How a trace has its events: a line of JSON for each, behind one that tells what the file is.
#pragma once

#include <cstdint>
#include <string>

#include "trace/TraceEvent.h"

namespace J4Trace {

class TraceLine {
public:
    /// The first line of a file; no line here has its end.
    static std::string Head();
    /// @throws std::exception, with a reason, for what is no JSON of that kind
    static bool IsHead(const std::string& line);

    /// @param time  microseconds
    static std::string Of(int64_t time, const JournalEntry& entry);
    /// @throws std::exception, with a reason, for a line that is no event
    static TraceEvent Event(const std::string& line);
};

}  // namespace J4Trace
