// Reads traces and captures of USB, a file of either kind, event for event.
#pragma once

#include <functional>
#include <istream>
#include <string>

#include "trace/TraceEvent.h"

namespace J4Tool {

using J4Trace::LatestTime;
using J4Trace::TraceEvent;
using Kind = J4Trace::JournalEntry::Kind;

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
