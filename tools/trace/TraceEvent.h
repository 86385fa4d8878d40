// An event of a trace and when it was. Traces of the virtual table have all kinds; captures of a real table's USB have
// frames and what else is on the cable.
#pragma once

#include <cstdint>
#include <functional>
#include <istream>
#include <string>

#include "simulator/ground/JournalEntry.h"

namespace J4Tool {

using Kind = J4Bench::JournalEntry::Kind;

struct TraceEvent {
    int64_t time = 0;  ///< microseconds
    J4Bench::JournalEntry entry{};

    bool IsFrame() const { return entry.kind == Kind::Sent || entry.kind == Kind::Received; }
};

/// No event is later: some thirty years, in microseconds.
inline constexpr int64_t LatestTime = 1000000000000000;

using TraceListener = std::function<void(const TraceEvent&)>;

/// Reads a file of either kind and tells its events in their order; their times are 0 to LatestTime.
/// @return at what line or record the file ends before that does, for people, as when the disk was full; empty when the
/// file is whole
/// @throws ToolError with file, place and reason for what can't be read
std::string ReadTrace(const std::string& fileName, const TraceListener& listener);

/// The same from a stream.
/// @param fileName  for texts
std::string ReadTrace(std::istream& stream, const std::string& fileName, const TraceListener& listener);

}  // namespace J4Tool
