#include "simulator/ground/Journal.h"

#include <utility>

namespace J4Bench {

namespace {

using Kind = JournalEntry::Kind;

/// What the text has of an event; empty where that has none.
std::string LineOf(const JournalEntry& entry)
{
    switch (entry.kind) {
    case Kind::Library: {
        std::string line = "library " + entry.name;
        for (const std::string& argument : entry.arguments) {
            line += " " + argument;
        }
        if (entry.status) {
            line += " = " + std::to_string(*entry.status);
        } else if (entry.result) {
            line += " = " + *entry.result;
        }
        for (size_t at = 0; (at = line.find('\n', at)) != std::string::npos;) {
            line.replace(at, 1, " | ");
        }
        return line;
    }
    case Kind::Sent:
        return "wire > " + entry.name;
    case Kind::Received:
        return "wire < " + entry.name;
    case Kind::Usb:
        return "usb " + entry.name;
    default:
        return {};
    }
}

}  // namespace

bool Journal::TraceTo(const std::filesystem::path& file)
{
    if (file.empty()) {
        trace = TraceFile();
        return true;
    }
    TraceFile next;
    if (!next.Open(file)) {
        return false;
    }
    trace = std::move(next);
    return true;
}

void Journal::Add(const JournalEntry& entry, int64_t moment)
{
    if (enabled) {
        if (const std::string line = LineOf(entry); !line.empty()) {
            lines += line;
            lines += '\n';
        }
    }
    trace.Write(entry, moment);
}

std::string Journal::Take() { return std::exchange(lines, {}); }

void Journal::Forget()
{
    enabled = false;
    lines.clear();
}

}  // namespace J4Bench
