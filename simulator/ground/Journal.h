// The ordered record of what reached the instrument's library and the table's wire. Off until switched on.
#pragma once

#include <string>

#include "simulator/ground/BenchApi.h"

namespace J4Bench {

class J4BENCH_API Journal {
public:
    void Enable(bool on) { enabled = on; }
    bool Enabled() const { return enabled; }

    /// Appends one line, for instance "library J4_SetOption MeasurementMode SingleReflectance = 0",
    /// "wire > ;a034" or "wire < :$a00020000fd" (carriage returns are left out), "usb control 0 0".
    void Add(const std::string& line);

    /// Gives all lines, each ended by a line feed, and forgets them.
    std::string Take();

private:
    bool enabled = false;
    std::string lines;
};

}  // namespace J4Bench
