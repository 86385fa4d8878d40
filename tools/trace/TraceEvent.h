// An event of a trace and when it was. Traces of the virtual table have all kinds; captures of a real table's USB have
// frames and what else is on the cable.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "simulator/ground/JournalEntry.h"

namespace J4Tool {

using Kind = J4Bench::JournalEntry::Kind;

struct TraceEvent {
    int64_t time = 0;  ///< microseconds
    J4Bench::JournalEntry entry{};

    bool IsFrame() const { return entry.kind == Kind::Sent || entry.kind == Kind::Received; }
};

using TraceListener = std::function<void(const TraceEvent&)>;

/// Reads a file of either kind and tells its events in their order.
/// @return whether it is a capture, and so has no calls
/// @throws ToolError with file, place and reason for what can't be read
bool ReadTrace(const std::string& fileName, const TraceListener& listener);

}  // namespace J4Tool
