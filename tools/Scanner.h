// Scans the open rows of a chart one after the other, checks each, and tries a row again that failed.
#pragma once

#include <functional>
#include <vector>

#include "chart/ScanMotion.h"
#include "tools/Measurements.h"
#include "tools/RowCheck.h"
#include "tools/RowPlan.h"
#include "tools/ScanListener.h"
#include "tools/Session.h"

namespace J4Tool {

class Scanner {
public:
    struct Settings {
        double margin = J4Chart::ScanMotion::UsualMargin;  ///< bare paper before and behind a row, mm
        int retries = 2;                                   ///< how often a failed row is tried again
        bool bothWays = true;
    };

    Scanner(Session& session, const ChartLayout& layout, const Settings& settings, ScanListener& listener)
        : session(session), layout(layout), settings(settings), listener(listener), check(layout)
    {}

    /// Is asked before each travel: true ends the scan.
    std::function<bool()> stop = [] { return false; };

    /// Is called after each good row, with what is measured so far.
    std::function<void()> keep = [] {};

    /// Scans the rows that are open, from where the arm stands.
    /// @return the rows that failed in every attempt
    /// @throws ToolError when there is no sense in going on: table or instrument are gone, or a row lies outside
    ///         the work area; what was measured before is in measurements
    std::vector<size_t> Run(Measurements& measurements);

    ScanState State(const Measurements& measurements) const;

private:
    /// @return false when the row has failed for good or the scan is stopped
    bool ScanRow(const RowPlan::Pass& pass, Measurements& measurements);

    /// @return what is wrong; empty when the row was good and is stored
    std::string Attempt(const RowPlan::Pass& pass, Measurements& measurements);

    Session& session;
    const ChartLayout& layout;
    Settings settings;
    ScanListener& listener;
    RowCheck check;
};

}  // namespace J4Tool
