#include "tools/ScanPlan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "chart/MotionProfile.h"
#include "tools/RowPlan.h"
#include "tools/RowReader.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

/// The instrument's recognition is said to need patches so long, and takes paper between them for a patch where it is
/// about so wide, mm.
constexpr double ShortestRecognised = 10.0;
constexpr double WidestGap = 6.0;

/// Below it a travel that needs little paper at its ends takes too long, mm/s.
constexpr int SlowestFit = 20;

/// What motions and measurements take beside the way itself, and the usual speed between rows; seen on the virtual
/// table.
constexpr double ScanOverhead = 0.8;  // s
constexpr double SpotSeconds = 0.34;  // s, with the step to it
constexpr double MoveSpeed = 300.0;   // mm/s

double ShortestOf(const ChartLayout& layout, size_t row)
{
    double shortest = std::numeric_limits<double>::infinity();
    for (const size_t patch : layout.Rows()[row]) {
        shortest = std::min(shortest, layout.Places()[patch].Width());
    }
    return shortest;
}

}  // namespace

ScanPlan::ScanPlan(const ChartLayout& layout, const WorkArea& area, const RowSpeed& speed, const Settings& settings)
    : layout(layout), area(area)
{
    for (size_t row = 0; row < layout.Rows().size(); ++row) {
        rows.push_back(PlanRow(row, speed, settings));
    }
}

double ScanPlan::Seconds() const
{
    return std::accumulate(rows.begin(), rows.end(), 0.0, [](double sum, const Row& row) { return sum + row.seconds; });
}

ScanPlan::Row ScanPlan::PlanRow(size_t row, const RowSpeed& speed, const Settings& settings) const
{
    const auto refuse = [row](const std::string& reason, const std::string& advice) {
        throw ToolError(ExitCode::Position, "row " + std::to_string(row + 1) + " can't be measured: " + reason, advice);
    };
    if (const std::string fault = SpotsFault(row); !fault.empty()) {
        refuse(fault, "Lay the chart where the arm reaches all of it; 'j4tavla info' shows the work area.");
    }
    Row plan;
    plan.fitSpeed = speed.For(ShortestOf(layout, row));
    const std::string marginFault = PassFault(row, settings.margin);
    const bool recognises = !layout.HasSizes() || (!settings.spotsOnly && CanBeRecognised(row));
    if (recognises && !marginFault.empty() && (settings.marginIsWanted || !layout.HasSizes())) {
        refuse("with its margin of " + std::to_string(std::lround(settings.margin)) + " mm " + marginFault,
               "Lay the chart farther inside, or take a smaller --margin.");
    }
    if (layout.HasSizes() && !settings.spotsOnly) {
        // A slower travel needs less paper to reach its speed.
        while (plan.fitSpeed > SlowestFit && !PassFault(row, RowSpeed::Margin(plan.fitSpeed)).empty()) {
            plan.fitSpeed = std::max(SlowestFit, plan.fitSpeed / 2);
        }
        if (PassFault(row, RowSpeed::Margin(plan.fitSpeed)).empty()) {
            plan.ways.push_back(ReadingWay::Fitted);
        }
    }
    // Recognition gives one spectrum a patch and hides a speck in it: without a reference to hold it against, raw
    // samples come first, which show it and take as long.
    if (recognises && marginFault.empty() && (plan.ways.empty() || HasReferences(row))) {
        plan.ways.insert(plan.ways.begin(), ReadingWay::Recognised);
    }
    if (layout.HasSizes()) {
        plan.ways.push_back(ReadingWay::Spot);
    }
    switch (plan.ways.front()) {
    case ReadingWay::Recognised:
        plan.speed = speed.ForRecognition();
        plan.seconds = Seconds(row, ReadingWay::Recognised, plan.speed, settings.margin);
        break;
    case ReadingWay::Fitted:
        plan.speed = plan.fitSpeed;
        plan.seconds = Seconds(row, ReadingWay::Fitted, plan.speed, RowSpeed::Margin(plan.speed));
        break;
    case ReadingWay::Spot:
        plan.seconds = Seconds(row, ReadingWay::Spot, 0, 0.0);
        break;
    }
    return plan;
}

std::string ScanPlan::PassFault(size_t row, double margin) const
{
    const RowPlan::Pass pass = RowPlan::Along(layout, row, margin, false);
    const std::string fault = area.Fault(pass.start);
    return fault.empty() ? area.Fault(pass.end) : fault;
}

std::string ScanPlan::SpotsFault(size_t row) const
{
    for (const size_t patch : layout.Rows()[row]) {
        for (const Point& spot : RowReader::Spots(layout.Places()[patch])) {
            if (const std::string fault = area.Fault(spot); !fault.empty()) {
                return "patch " + layout.Patches()[patch].name + ": " + fault;
            }
        }
    }
    return {};
}

bool ScanPlan::HasReferences(size_t row) const
{
    const ChartLayout::Row& patches = layout.Rows()[row];
    return std::all_of(patches.begin(), patches.end(),
                       [this](size_t patch) { return layout.Patches()[patch].Colour().has_value(); });
}

bool ScanPlan::CanBeRecognised(size_t row) const
{
    const ChartLayout::Row& patches = layout.Rows()[row];
    for (size_t i = 0; i < patches.size(); ++i) {
        const J4Chart::Place& patch = layout.Places()[patches[i]];
        if (patch.Width() < ShortestRecognised) {
            return false;
        }
        if (i > 0) {
            const J4Chart::Place& before = layout.Places()[patches[i - 1]];
            const double gap = Distance(before.centre, patch.centre) - Length(patch.along) - Length(before.along);
            if (gap > WidestGap) {
                return false;
            }
        }
    }
    return true;
}

double ScanPlan::Seconds(size_t row, ReadingWay way, int speed, double margin) const
{
    constexpr double acceleration = J4Chart::ScanMotion::UsualAcceleration;
    const ChartLayout::Row& patches = layout.Rows()[row];
    const double toTheRow =
        J4Chart::MotionProfile(2.0 * layout.Places()[patches.front()].Height(), MoveSpeed, acceleration).Duration();
    if (way == ReadingWay::Spot) {
        return toTheRow + RowReader::FirstSpots * SpotSeconds * static_cast<double>(patches.size());
    }
    const RowPlan::Pass pass = RowPlan::Along(layout, row, margin, false);
    const double length = Distance(pass.start, pass.end);
    return toTheRow + ScanOverhead + J4Chart::MotionProfile(length, speed, acceleration).Duration();
}

}  // namespace J4Tool
