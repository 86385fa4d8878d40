#include "simulator/chart/PrintedChart.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "chart/ChartReader.h"
#include "simulator/chart/Aperture.h"

namespace J4Bench {

namespace {

constexpr float DefaultPaper = 0.85f;
constexpr double TenthsPerMillimetre = 10.0;

}  // namespace

PrintedChart::PrintedChart() { paper.fill(DefaultPaper); }

PrintedChart::PrintedChart(const J4Chart::Chart& chart) : PrintedChart()
{
    paper = chart.paper.value_or(paper);
    for (size_t i = 0; i < chart.patches.size(); ++i) {
        const J4Chart::Place& place = chart.places[i];
        patches.push_back({{place.centre.x * TenthsPerMillimetre, place.centre.y * TenthsPerMillimetre},
                           place.Width() * TenthsPerMillimetre,
                           place.Height() * TenthsPerMillimetre,
                           *chart.patches[i].spectrum});
    }
    if (!patches.empty()) {
        const auto byX = [](const Patch& a, const Patch& b) { return a.centre.x < b.centre.x; };
        const auto byY = [](const Patch& a, const Patch& b) { return a.centre.y < b.centre.y; };
        const auto [left, right] = std::minmax_element(patches.begin(), patches.end(), byX);
        const auto [lower, upper] = std::minmax_element(patches.begin(), patches.end(), byY);
        middle = {(left->centre.x + right->centre.x) / 2, (lower->centre.y + upper->centre.y) / 2};
    }
}

PrintedChart PrintedChart::Load(const std::string& fileName)
{
    J4Chart::ChartReader::Wanted wanted;
    wanted.places = true;
    wanted.spectra = true;
    return PrintedChart(J4Chart::ChartReader::Read(J4Chart::CgatsFile::Read(fileName), wanted));
}

Point PrintedChart::Uncovered(Point place) const
{
    const double turn = offset.degrees * std::numbers::pi / 180.0;
    const Point shifted{place.x - offset.shift.x, place.y - offset.shift.y};
    const Point arm{shifted.x - middle.x, shifted.y - middle.y};
    return {shifted.x + arm.x * (std::cos(turn) - 1.0) + arm.y * std::sin(turn),
            shifted.y + arm.y * (std::cos(turn) - 1.0) - arm.x * std::sin(turn)};
}

Spectrum PrintedChart::ReflectanceAt(Point place, double apertureDiameter) const
{
    const Point centre = Uncovered(place);  // a round aperture is the same in every direction
    // Only the few patches near the aperture take part in the test of each sub-point.
    std::vector<const Patch*> around;
    for (const Patch& patch : patches) {
        if (std::abs(patch.centre.x - centre.x) <= (patch.width + apertureDiameter) / 2 &&
            std::abs(patch.centre.y - centre.y) <= (patch.height + apertureDiameter) / 2) {
            around.push_back(&patch);
        }
    }
    std::vector<size_t> hits(around.size(), 0);
    size_t onPaper = 0;
    for (const Point& point : UnitDisc()) {
        const double x = centre.x + point.x * apertureDiameter;
        const double y = centre.y + point.y * apertureDiameter;
        size_t top = around.size();
        while (top > 0 && (std::abs(x - around[top - 1]->centre.x) > around[top - 1]->width / 2 ||
                           std::abs(y - around[top - 1]->centre.y) > around[top - 1]->height / 2)) {
            --top;
        }
        ++(top == 0 ? onPaper : hits[top - 1]);
    }
    const double all = static_cast<double>(UnitDisc().size());
    Spectrum mean{};
    for (size_t band = 0; band < mean.size(); ++band) {
        double sum = static_cast<double>(onPaper) * static_cast<double>(paper[band]);
        for (size_t i = 0; i < around.size(); ++i) {
            sum += static_cast<double>(hits[i]) * static_cast<double>(around[i]->reflectance[band]);
        }
        mean[band] = static_cast<float>(sum / all);
    }
    return mean;
}

}  // namespace J4Bench
