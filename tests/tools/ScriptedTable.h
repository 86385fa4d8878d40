// A table for the tests of the scan: functions of the library that find flat patches where the layout has them, and
// do wrong what a test tells them to.
#pragma once

#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/Session.h"

namespace J4Tool {

/// One at a time, as the library is.
class ScriptedTable {
public:
    using Spectra = std::vector<Session::Spectrum>;

    /// What happens to one scan: a status, and what becomes of the spectra.
    struct Event {
        int32_t status = 0;
        std::function<void(Spectra&)> change;
    };

    explicit ScriptedTable(const ChartLayout& layout);
    ~ScriptedTable();

    TableFunctions Functions() const;

    std::deque<Event> events;          ///< of the next scans; without one a scan goes well
    std::vector<std::string> scans;    ///< first patch of each row that was scanned, "<" behind it when backwards
    std::vector<std::string> options;  ///< "KEY=VALUE" as they were set
    std::function<void()> onScan = [] {};

private:
    friend struct ScriptedFunctions;

    const ChartLayout& layout;
    Spectra samples;
    J4_ErrorHandler handler = nullptr;
};

}  // namespace J4Tool
