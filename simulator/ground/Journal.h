// The ordered record of what happens between application, instrument's library and table: as text that an option gives,
// and as a trace, a file with a line of JSON for each event. Both are off until switched on.
#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "simulator/ground/BenchApi.h"
#include "simulator/ground/BenchClock.h"
#include "simulator/ground/TraceFile.h"

namespace J4Bench {

class J4BENCH_API Journal {
public:
    /// The clock must live as long as the journal.
    explicit Journal(const BenchClock& clock) : clock(clock) {}

    /// Switches the text on or off.
    void Enable(bool on) { enabled = on; }
    bool Enabled() const { return enabled; }

    /// Begins a trace, in a new file; without a name the running one ends.
    /// @return false when the file can't be written; the trace before goes on then
    bool TraceTo(const std::filesystem::path& file);
    bool Tracing() const { return trace.IsOpen(); }

    /// Whether anybody wants to know; who has to build an event asks first.
    bool Recording() const { return Enabled() || Tracing(); }

    void Add(const JournalEntry& entry) { Add(entry, clock.Now()); }
    /// @param moment  microseconds of the bench's clock
    void Add(const JournalEntry& entry, int64_t moment);

    /// Gives all lines of the text, each ended by a line feed, and forgets them. A line is for instance "library
    /// J4_SetOption MeasurementMode SingleReflectance = 0", "wire > ;a034", "wire < :$a00020000fd" or "usb control 0 0".
    std::string Take();

    /// The text is off and empty; a trace goes on.
    void Forget();

private:
    const BenchClock& clock;
    bool enabled = false;
    std::string lines;
    TraceFile trace;
};

}  // namespace J4Bench
