// Scans the open rows of a chart one after the other, checks each, and tries a row again that failed.
#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "chart/ScanMotion.h"
#include "tools/Measurements.h"
#include "tools/RowCheck.h"
#include "tools/RowPlan.h"
#include "tools/RowReader.h"
#include "tools/ScanListener.h"
#include "tools/ScanPlan.h"
#include "tools/Session.h"

namespace J4Tool {

class Scanner {
public:
    struct Settings {
        double margin = J4Chart::ScanMotion::UsualMargin;  ///< bare paper before and behind a row, mm
        int retries = 2;                                   ///< how often a failed row is tried again
        bool bothWays = true;
        size_t repeats = 1;  ///< how often each row is scanned; the readings of a patch are averaged
    };

    Scanner(Session& session, const ChartLayout& layout, const Settings& settings, ScanListener& listener)
        : session(session), layout(layout), settings(settings), listener(listener), check(layout)
    {}

    /// Reads rows in other ways than by recognition, as the plan says; without it all rows are recognised.
    void UseReader(RowReader& rowReader, const ScanPlan& scanPlan)
    {
        reader = &rowReader;
        plan = &scanPlan;
    }

    /// Is asked before each travel: true ends the scan.
    std::function<bool()> stop = [] { return false; };

    /// Is called after each good row, with its number; its patches are in the measurements then.
    std::function<void(size_t row)> keep = [](size_t) {};

    /// Scans the rows that are open, from where the arm stands.
    /// @return the rows that failed in every attempt
    /// @throws ToolError when there is no sense in going on: table or instrument are gone, or a row lies outside
    ///         the work area; what was measured before is in measurements
    std::vector<size_t> Run(Measurements& measurements);

    ScanState State(const Measurements& measurements) const;

private:
    using Readings = std::vector<std::optional<PatchReading>>;

    /// Scans a row as often as it is wanted.
    /// @return false when the row has failed for good or the scan is stopped
    bool ScanRow(const RowPlan::Pass& planned, Measurements& measurements);

    /// Scans it once, in one way after the other.
    /// @return as above
    bool ReadRow(RowPlan::Pass pass, const ScanState& state, Readings& readings);

    RowPlan::Pass Along(size_t row, bool reversed) const;

    /// The same row from the end that is nearer to where the arm stands, where rows may be scanned both ways.
    RowPlan::Pass FromHere(const RowPlan::Pass& pass) const;

    /// The ways to read a row, in the order in which they are tried.
    std::vector<ReadingWay> Ways(size_t row) const;

    /// @param readings  of the row so far; all of it when nothing is wrong
    /// @return what is wrong; empty when the row was good
    std::string Attempt(ReadingWay way, const RowPlan::Pass& pass, Readings& readings);
    std::string Recognise(const RowPlan::Pass& pass, Readings& readings);

    Session& session;
    const ChartLayout& layout;
    Settings settings;
    ScanListener& listener;
    RowCheck check;
    RowReader* reader = nullptr;
    const ScanPlan* plan = nullptr;
    std::optional<Point> here;  ///< about where the arm stands, once a row was tried
};

}  // namespace J4Tool
