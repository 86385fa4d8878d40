#include "tools/ChartFinder.h"

#include <Eigen/Core>
#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>
#include <utility>

#include "tools/CrossedPatches.h"
#include "tools/Formatted.h"
#include "tools/LeastSquares.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

/// How well a travel tells a place at best, mm.
constexpr double BestPlace = 0.02;

/// An edge this far from its place is no matter of placement.
constexpr double LargestResidual = 0.7;  // mm

/// Where the chart is searched for: this share of its rows and columns lies outside of the outer looks.
constexpr double Inside = 0.2;

/// Below it a look takes too long, mm/s.
constexpr int SlowestLook = 20;

[[noreturn]] void ThrowAmbiguous()
{
    throw ToolError(ExitCode::Check, "it can't be told which of two places, a patch apart, is the chart's",
                    "Lay it where the layout says, or give its corners with --corners.");
}

}  // namespace

ChartFinder::ChartFinder(Session& session, const ChartLayout& layout, const WorkArea& area, const RowSpeed& speed,
                         std::function<void(const std::string&)> say)
    : layout(layout), area(area), speed(speed), say(std::move(say)), scan(session), search(layout)
{
    Point least{std::numeric_limits<double>::max(), std::numeric_limits<double>::max()};
    Point most{-least.x, -least.y};
    for (const J4Chart::Place& patch : layout.Places()) {
        least = {std::min(least.x, patch.centre.x), std::min(least.y, patch.centre.y)};
        most = {std::max(most.x, patch.centre.x), std::max(most.y, patch.centre.y)};
    }
    finding.placement.middle = Times(Plus(least, most), 0.5);
}

ChartFinder::Line ChartFinder::Column(double share) const
{
    const ChartLayout::Row& firstRow = layout.Rows().front();
    const auto index = static_cast<size_t>(std::lround(share * static_cast<double>(firstRow.size() - 1)));
    const J4Chart::Place& first = layout.Places()[firstRow[index]];
    const Point along = Unit(first.along);
    const auto distance = [&](size_t patch) {
        return std::abs(Dot(Minus(layout.Places()[patch].centre, first.centre), along));
    };
    // A last row may be shorter than the others; a line that runs askew meets edges askew.
    const auto inColumn = [&](const ChartLayout::Row& row) {
        return *std::min_element(row.begin(), row.end(), [&](size_t a, size_t b) { return distance(a) < distance(b); });
    };
    const auto lastRow = std::find_if(layout.Rows().rbegin(), layout.Rows().rend(), [&](const ChartLayout::Row& row) {
        return distance(inColumn(row)) <= Length(first.along);
    });
    const J4Chart::Place& last = layout.Places()[inColumn(*lastRow)];
    const Point way = Minus(last.centre, first.centre);
    const double sign = Dot(first.across, way) < 0.0 ? -1.0 : 1.0;
    return {Minus(first.centre, Times(first.across, sign)), Plus(last.centre, Times(last.across, sign))};
}

ChartFinder::Line ChartFinder::Row(double share) const
{
    const auto index = static_cast<size_t>(std::lround(share * static_cast<double>(layout.Rows().size() - 1)));
    const ChartLayout::Row& row = layout.Rows()[index];
    const J4Chart::Place& first = layout.Places()[row.front()];
    const J4Chart::Place& last = layout.Places()[row.back()];
    return {Minus(first.centre, first.along), Plus(last.centre, last.along)};
}

bool ChartFinder::Travel(const Line& line, bool bothWays)
{
    const bool seen = TravelOnce(line);
    if (bothWays && seen) {
        TravelOnce({line.end, line.start});
    }
    Solve();
    return seen;
}

std::optional<ChartFinder::Seen> ChartFinder::Take(const Line& line)
{
    // A first look finds the patches, with as much paper before and behind as the speed will need.
    Seen seen;
    seen.along = Unit(Minus(line.end, line.start));
    const CrossedPatches inside(layout, line.start, line.end);
    seen.shortest = std::numeric_limits<double>::infinity();
    for (const LineFit::Stretch& stretch : inside.stretches) {
        seen.shortest = std::min(seen.shortest, stretch.end - stretch.begin);
    }
    if (inside.stretches.empty()) {
        return std::nullopt;
    }
    const Placement& placement = finding.placement;
    seen.speed = speed.For(seen.shortest);
    // Paper has to be seen evenly behind the rim, wherever that is. A slower look needs less of it.
    const auto margin = [&] { return RowSpeed::Margin(seen.speed) + reach * seen.shortest; };
    const auto hasRoom = [&] {
        return area.Holds(placement.Of(Minus(line.start, Times(seen.along, margin())))) &&
               area.Holds(placement.Of(Plus(line.end, Times(seen.along, margin()))));
    };
    while (seen.speed > SlowestLook && !hasRoom()) {
        seen.speed = std::max(SlowestLook, seen.speed / 2);
    }
    // A chart that lies a patch off shows its rim there.
    const double longest = margin() + (1.0 - reach) * seen.shortest;
    Point start = Minus(line.start, Times(seen.along, longest));
    Point end = Plus(line.end, Times(seen.along, longest));
    seen.stretches = CrossedPatches(layout, start, end).stretches;

    // At the limits of the work area the rim itself may be out of reach; the edges inside tell too.
    const double length = Length(Minus(end, start));
    const std::optional<double> before = Trimmed(start, seen.along, length);
    const std::optional<double> behind = Trimmed(end, Times(seen.along, -1.0), length);
    if (!before || !behind) {
        return std::nullopt;
    }
    start = Plus(start, Times(seen.along, *before));
    end = Minus(end, Times(seen.along, *behind));
    for (LineFit::Stretch& stretch : seen.stretches) {
        stretch = {stretch.begin - *before, stretch.end - *before};
    }
    seen.start = start;
    seen.samples = scan.Take(placement.Of(start), placement.Of(end), seen.speed);
    search.Add(seen.samples, placement.Of(start), Unit(placement.Turned(seen.along)), seen.speed);
    return seen;
}

bool ChartFinder::TravelOnce(const Line& line)
{
    const std::optional<Seen> seen = Take(line);
    if (!seen) {
        return false;
    }
    const Placement& placement = finding.placement;
    LineFit::Settings settings;
    settings.blur = seen->samples.blur;
    settings.largestOffset = reach * seen->shortest + seen->speed * expectation.latencyError;
    const LineFit fit(seen->samples.spectra, seen->samples.places, seen->stretches, settings);
    if (!fit.Located()) {
        return false;
    }
    if (fit.IsOfOthers() || fit.Residual() > LargestResidual) {
        throw ToolError(ExitCode::Check,
                        "what lies on the bed is not the chart of the layout, or lies quite elsewhere: the edges of "
                        "its patches are " +
                            Formatted("%.1f mm", fit.Residual()) + " off, and " +
                            Formatted("%.0f %%", 100.0 * fit.Unexplained()) +
                            " of what was seen there is not explained",
                        "Look whether it is this chart, the right way round, and where the layout says; or let the "
                        "instrument find it "
                        "with --align, which bears half a patch and two degrees.");
    }
    constexpr double leastDistinctness = 1.5;
    if (fit.Distinctness() < leastDistinctness && std::abs(fit.Offset()) > 0.3 * seen->shortest) {
        ThrowAmbiguous();
    }
    const Point at = Plus(seen->start, Times(seen->along, fit.Pivot()));
    const Point direction = Unit(placement.Turned(seen->along));
    measured.push_back({at, direction, Dot(direction, placement.Of(at)) - fit.Offset(),
                        std::hypot(fit.OffsetError(), BestPlace), static_cast<double>(seen->speed)});
    edges += fit.VisibleEdges();
    squares += fit.Residual() * fit.Residual() * static_cast<double>(fit.VisibleEdges());
    return true;
}

std::optional<double> ChartFinder::Trimmed(Point start, Point along, double length) const
{
    constexpr double step = 0.5;  // mm
    for (double by = 0.0; by < 0.4 * length; by += step) {
        if (area.Holds(finding.placement.Of(Plus(start, Times(along, by))))) {
            return by;
        }
    }
    return std::nullopt;
}

/// Least squares over all travels so far, with what is expected as far as it holds.
void ChartFinder::Solve()
{
    Placement& placement = finding.placement;
    const auto rows = static_cast<Eigen::Index>(measured.size()) + 4;
    for (int round = 0; round < 4; ++round) {
        Eigen::MatrixXd slopes = Eigen::MatrixXd::Zero(rows, 4);
        Eigen::VectorXd left = Eigen::VectorXd::Zero(rows);
        for (size_t i = 0; i < measured.size(); ++i) {
            const Measured& travel = measured[i];
            const auto row = static_cast<Eigen::Index>(i);
            const Point arm = Minus(Minus(placement.Of(travel.at), placement.middle), placement.shift);
            left(row) = travel.place + travel.speed * finding.latency - Dot(travel.direction, placement.Of(travel.at));
            slopes.row(row) << travel.direction.x, travel.direction.y, Dot(travel.direction, {-arm.y, arm.x}),
                -travel.speed;
            slopes.row(row) /= travel.error;
            left(row) /= travel.error;
        }
        const double usual[] = {expectation.shiftError, expectation.shiftError, expectation.rotationError,
                                expectation.latencyError};
        const double now[] = {placement.shift.x - expectation.shift.x, placement.shift.y - expectation.shift.y,
                              placement.rotation - expectation.rotation, finding.latency - expectation.latency};
        for (Eigen::Index i = 0; i < 4; ++i) {
            slopes(rows - 4 + i, i) = 1.0 / usual[i];
            left(rows - 4 + i) = -now[i] / usual[i];
        }
        const Eigen::Vector4d step = SolveLeastSquares(slopes, left);
        placement.shift = {placement.shift.x + step(0), placement.shift.y + step(1)};
        placement.rotation += step(2);
        finding.latency += step(3);
    }
}

ChartFinder::Finding ChartFinder::Look()
{
    say("looking where the chart lies");
    const Placement expected = finding.placement;
    measured.clear();
    edges = 0;
    squares = 0.0;
    Travel(Row(0.0), true);
    int columns = 0;
    // The outer columns tell most; where they are of one colour, those inside.
    for (const double share : {0.0, 1.0, 0.5, 0.25, 0.75, 0.12, 0.37, 0.62, 0.87}) {
        columns += Travel(Column(share), columns == 0) ? 1 : 0;
        if (columns == 2) {
            break;
        }
    }
    if (layout.Rows().size() > 1) {
        Travel(Row(1.0), false);
    }
    if (layout.Rows().size() > 2) {
        Travel(Row(0.5), false);
    }
    finding.isSure = columns > 0;
    finding.residual = edges > 0 ? std::sqrt(squares / static_cast<double>(edges)) : 0.0;
    finding.edges = edges;
    // Each line alone, and all of them where only the rims tell, may fit a patch off.
    if (const std::optional<PlacementSearch::Result> best = search.Best(expected);
        best && search.Apart(best->placement, finding.placement) > 0.5) {
        finding.placement = best->placement;
    }
    return finding;
}

ChartFinder::Finding ChartFinder::Find()
{
    say("finding the chart");
    // Lines well inside cross the chart wherever it lies, and all its rims.
    const auto there = [&](const Line& line) { Take(line); };
    const auto andBack = [&](const Line& line) {
        Take(line);
        Take({line.end, line.start});
    };
    std::optional<PlacementSearch::Result> best;
    // A chart found farther off than the search is good for may lie farther still: it is looked for again around there.
    constexpr int mostRounds = 4;
    for (int round = 0; !best || best->isFar; ++round) {
        if (round == mostRounds) {
            ThrowAmbiguous();
        }
        andBack(Row(Inside));
        andBack(Column(Inside));
        there(Row(0.5));
        there(Row(1.0 - Inside));
        there(Column(0.5));
        there(Column(1.0 - Inside));
        best = search.Best(finding.placement);
        if (!best) {
            return finding;
        }
        if (best->isAmbiguous) {
            ThrowAmbiguous();
        }
        finding.placement = best->placement;
        finding.latency = best->latency;
    }
    expectation = {best->placement.shift, best->placement.rotation, best->latency, 0.5, 0.002, 0.001};
    reach = 0.3;
    Look();
    constexpr double samePlace = 0.15;  // patches
    if (search.Apart(finding.placement, best->placement) > samePlace) {
        ThrowAmbiguous();
    }
    return finding;
}

std::string ChartFinder::Fault(const Finding& found) const
{
    constexpr double room = 0.2;  // mm
    double worst = 0.0;
    std::string patchName;
    for (size_t i = 0; i < layout.Places().size(); ++i) {
        const J4Chart::Place& patch = layout.Places()[i];
        const Point off = Minus(found.placement.Of(patch.centre), patch.centre);
        const double along = std::abs(Dot(off, Unit(patch.along))) - Length(patch.along);
        const double across =
            std::abs(Dot(off, Unit(patch.across))) - (Length(patch.across) - 0.5 * LineFit::Aperture - room);
        if (std::max(along, across) > worst) {
            worst = std::max(along, across);
            patchName = layout.Patches()[i].name;
        }
    }
    if (patchName.empty()) {
        return {};
    }
    return "the chart lies " + Words(found) + " from where the layout has it: patch " + patchName +
           ", and perhaps others, would be mixed with its neighbours";
}

std::string ChartFinder::Words(const Finding& found) const
{
    const Placement& placement = found.placement;
    return Formatted("%.1f", placement.shift.x) + " mm in x and " + Formatted("%.1f", placement.shift.y) +
           " mm in y, turned by " + Formatted("%.2f", placement.rotation * 180.0 / std::numbers::pi) + " degrees,";
}

}  // namespace J4Tool
