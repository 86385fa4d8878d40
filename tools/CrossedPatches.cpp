#include "tools/CrossedPatches.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace J4Tool {

namespace {

/// Narrows the part of a line on which |from + step * t| <= 1.
void Clip(double from, double step, double& first, double& last)
{
    if (std::abs(step) < 1e-12) {
        if (std::abs(from) > 1.0) {
            last = first - 1.0;
        }
        return;
    }
    const double one = (-1.0 - from) / step;
    const double other = (1.0 - from) / step;
    first = std::max(first, std::min(one, other));
    last = std::min(last, std::max(one, other));
}

}  // namespace

CrossedPatches::CrossedPatches(const ChartLayout& layout, Point start, Point end)
{
    constexpr double shortest = 0.5;  // mm; a line that only grazes a patch says nothing of it
    const double length = Distance(start, end);
    const Point along{(end.x - start.x) / length, (end.y - start.y) / length};
    std::vector<std::pair<LineFit::Stretch, size_t>> found;
    for (size_t i = 0; i < layout.Patches().size(); ++i) {
        const J4Chart::Place& patch = layout.Places()[i];
        const double area = patch.along.x * patch.across.y - patch.along.y * patch.across.x;
        // Coordinates in which the patch reaches from -1 to 1.
        const auto u = [&](Point p) { return (p.x * patch.across.y - p.y * patch.across.x) / area; };
        const auto v = [&](Point p) { return (p.y * patch.along.x - p.x * patch.along.y) / area; };
        const Point from{start.x - patch.centre.x, start.y - patch.centre.y};
        double first = 0.0;
        double last = length;
        Clip(u(from), u(along), first, last);
        Clip(v(from), v(along), first, last);
        if (last - first > shortest) {
            found.push_back({{first, last}, i});
        }
    }
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first.begin < b.first.begin; });
    for (const auto& [stretch, patch] : found) {
        const double begin = stretches.empty() ? stretch.begin : std::max(stretch.begin, stretches.back().end);
        if (stretch.end - begin > shortest) {
            stretches.push_back({begin, stretch.end});
            patches.push_back(patch);
        }
    }
}

}  // namespace J4Tool
