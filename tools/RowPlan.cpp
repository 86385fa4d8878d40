#include "tools/RowPlan.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

namespace J4Tool {

namespace {

using Pass = RowPlan::Pass;

/// A place beyond the edge of a patch; side is -1 before it and 1 behind it.
Point Beyond(const J4Chart::Place& place, double margin, double side)
{
    const double factor = side * (1.0 + 2.0 * margin / place.Width());
    return {place.centre.x + place.along.x * factor, place.centre.y + place.along.y * factor};
}

Pass Reversed(const Pass& pass) { return {pass.row, !pass.reversed, pass.end, pass.start}; }

/// Goes on with whatever row begins nearest, from a first pass on.
std::vector<Pass> NearestNext(const std::vector<Pass>& forward, size_t first, bool reversedFirst, bool bothWays)
{
    std::vector<Pass> order = {reversedFirst ? Reversed(forward[first]) : forward[first]};
    std::vector<Pass> open = forward;
    open.erase(open.begin() + static_cast<std::ptrdiff_t>(first));
    while (!open.empty()) {
        const Point here = order.back().end;
        double best = std::numeric_limits<double>::max();
        size_t next = 0;
        bool reversed = false;
        for (size_t i = 0; i < open.size(); ++i) {
            const double ahead = Distance(here, open[i].start);
            const double back = bothWays ? Distance(here, open[i].end) : ahead;
            if (std::min(ahead, back) < best) {
                best = std::min(ahead, back);
                next = i;
                reversed = back < ahead;
            }
        }
        order.push_back(reversed ? Reversed(open[next]) : open[next]);
        open.erase(open.begin() + static_cast<std::ptrdiff_t>(next));
    }
    return order;
}

double TravelOf(const std::vector<Pass>& order, Point home)
{
    double sum = 0.0;
    Point here = home;
    for (const Pass& pass : order) {
        sum += Distance(here, pass.start) + Distance(pass.start, pass.end);
        here = pass.end;
    }
    return sum;
}

/// The rows to try as the first one: all of a small chart; of a large one, where that takes too long, the outer
/// ones and the nearest.
std::vector<size_t> FirstRows(const std::vector<Pass>& forward, Point home)
{
    constexpr size_t tryAll = 60;
    std::vector<size_t> rows;
    size_t nearest = 0;
    for (size_t i = 0; i < forward.size(); ++i) {
        if (forward.size() <= tryAll || i == 0 || i + 1 == forward.size()) {
            rows.push_back(i);
        }
        if (Distance(home, forward[i].start) < Distance(home, forward[nearest].start)) {
            nearest = i;
        }
    }
    rows.push_back(nearest);
    return rows;
}

}  // namespace

RowPlan::Pass RowPlan::Along(const ChartLayout& layout, size_t row, double margin, bool reversed)
{
    const ChartLayout::Row& patches = layout.Rows()[row];
    const Pass forward{row, false, Beyond(layout.Places()[patches.front()], margin, -1.0),
                       Beyond(layout.Places()[patches.back()], margin, 1.0)};
    return reversed ? Reversed(forward) : forward;
}

RowPlan::RowPlan(const ChartLayout& layout, double margin, Point home, bool bothWays, const std::vector<size_t>& wanted)
{
    std::vector<Pass> forward;
    for (const size_t row : wanted) {
        forward.push_back(Along(layout, row, margin, false));
    }
    if (forward.empty()) {
        return;
    }
    travel = std::numeric_limits<double>::max();
    for (const size_t first : FirstRows(forward, home)) {
        for (const bool reversedFirst : {false, true}) {
            if (reversedFirst && !bothWays) {
                continue;
            }
            std::vector<Pass> order = NearestNext(forward, first, reversedFirst, bothWays);
            const double length = TravelOf(order, home);
            if (length < travel) {
                travel = length;
                passes = std::move(order);
            }
        }
    }
}

}  // namespace J4Tool
