#include "simulator/chart/PrintedChart.h"

#include <algorithm>
#include <cmath>
#include <numbers>

#include "chart/ChartFile.h"
#include "chart/ChartPages.h"
#include "chart/ChartReader.h"
#include "simulator/chart/Aperture.h"

namespace J4Bench {

namespace {

constexpr float DefaultPaper = 0.85f;

Point Tenths(J4Chart::Point place) { return {place.x * TenthsPerMillimetre, place.y * TenthsPerMillimetre}; }

}  // namespace

PrintedChart::PrintedChart() { paper.fill(DefaultPaper); }

PrintedChart::PrintedChart(const J4Chart::Chart& chart) : PrintedChart()
{
    paper = chart.paper.value_or(paper);
    for (size_t i = 0; i < chart.patches.size(); ++i) {
        const J4Chart::Place& place = chart.places[i];
        areas.push_back({Tenths(place.centre),
                         {2.0 * place.along.x / place.Width(), 2.0 * place.along.y / place.Width()},
                         place.Width() * TenthsPerMillimetre,
                         place.Height() * TenthsPerMillimetre,
                         0.0,
                         *chart.patches[i].spectrum});
    }
    if (!areas.empty()) {
        const auto byX = [](const Area& a, const Area& b) { return a.centre.x < b.centre.x; };
        const auto byY = [](const Area& a, const Area& b) { return a.centre.y < b.centre.y; };
        const auto [left, right] = std::minmax_element(areas.begin(), areas.end(), byX);
        const auto [lower, upper] = std::minmax_element(areas.begin(), areas.end(), byY);
        middle = {(left->centre.x + right->centre.x) / 2, (lower->centre.y + upper->centre.y) / 2};
    }
    for (const J4Chart::Blemish& blemish : chart.blemishes) {
        const Point start = Tenths(blemish.start);
        const Point end = Tenths(blemish.end);
        const double length = std::hypot(end.x - start.x, end.y - start.y);
        Area& area = areas.emplace_back();
        area.centre = {(start.x + end.x) / 2, (start.y + end.y) / 2};
        area.direction = length > 0.0 ? Point{(end.x - start.x) / length, (end.y - start.y) / length} : Point{1.0, 0.0};
        area.length = length;
        area.brim = blemish.width * TenthsPerMillimetre / 2;
        area.reflectance.fill(blemish.reflectance);
    }
}

PrintedChart PrintedChart::Load(const std::string& fileName, std::optional<size_t> page)
{
    J4Chart::ChartReader::Wanted wanted;
    wanted.places = true;
    wanted.spectra = true;
    wanted.otherBands = true;
    return PrintedChart(
        J4Chart::ChartReader::Read(J4Chart::ChartPages::Select(J4Chart::ChartFile::Read(fileName), page), wanted));
}

Point PrintedChart::Uncovered(Point place) const
{
    const double turn = offset.degrees * std::numbers::pi / 180.0;
    const Point shifted{place.x - offset.shift.x, place.y - offset.shift.y};
    const Point arm{shifted.x - middle.x, shifted.y - middle.y};
    return {shifted.x + arm.x * (std::cos(turn) - 1.0) + arm.y * std::sin(turn),
            shifted.y + arm.y * (std::cos(turn) - 1.0) - arm.x * std::sin(turn)};
}

bool PrintedChart::Area::IsNear(Point place, double distance) const
{
    const Point arm{place.x - centre.x, place.y - centre.y};
    const double along = std::max(0.0, std::abs(arm.x * direction.x + arm.y * direction.y) - length / 2);
    const double across = std::max(0.0, std::abs(arm.y * direction.x - arm.x * direction.y) - width / 2);
    return along * along + across * across <= (brim + distance) * (brim + distance);
}

Spectrum PrintedChart::ReflectanceAt(Point place, double apertureDiameter) const
{
    const Point centre = Uncovered(place);  // a round aperture is the same in every direction
    // Only the few areas near the aperture take part in the test of each sub-point.
    std::vector<const Area*> around;
    for (const Area& area : areas) {
        if (area.IsNear(centre, apertureDiameter / 2)) {
            around.push_back(&area);
        }
    }
    std::vector<size_t> hits(around.size(), 0);
    size_t onPaper = 0;
    for (const Point& point : UnitDisc()) {
        const Point seen{centre.x + point.x * apertureDiameter, centre.y + point.y * apertureDiameter};
        size_t top = around.size();
        while (top > 0 && !around[top - 1]->IsNear(seen, 0.0)) {
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
