// An event of a trace and when it was. Traces of the virtual table have all kinds; captures of a real table's USB have
// frames and what else is on the cable.
#pragma once

#include <cstdint>

#include "trace/JournalEntry.h"

namespace J4Trace {

struct TraceEvent {
    int64_t time = 0;  ///< microseconds
    JournalEntry entry{};

    bool IsFrame() const { return entry.IsFrame(); }
};

/// No event is later: some thirty years, in microseconds.
inline constexpr int64_t LatestTime = 1000000000000000;

}  // namespace J4Trace
