// The file of a trace: a line of JSON for each event, on the disk when it is written, so that a program which crashes
// leaves what came before. j4tavla trace reads it.
#pragma once

#include <cstdint>
#include <filesystem>
#include <fstream>

#include "trace/JournalEntry.h"

namespace J4Bench {

using J4Trace::JournalEntry;

class TraceFile {
public:
    /// Makes the file anew, with a line that tells what it is.
    /// @return false when that failed
    bool Open(const std::filesystem::path& file);
    bool IsOpen() const { return stream.is_open(); }

    /// Adds a line to an open file, and closes one that takes no more.
    /// @param moment  microseconds of the bench's clock
    void Write(const JournalEntry& entry, int64_t moment);

private:
    std::ofstream stream;
};

}  // namespace J4Bench
