#include "simulator/chart/PrintedChart.h"

#include <gtest/gtest.h>

#include <numbers>

#include "simulator/chart/Aperture.h"
#include "simulator/chart/WhiteTile.h"

namespace J4Bench {
namespace {

TEST(PrintedChart, ApertureSeesTheShareOfWhatLiesUnderIt)
{
    J4Chart::Chart chart;
    chart.paper.emplace().fill(0.9f);
    for (const auto& [x, reflectance] : {std::pair(20.0, 0.5f), {30.0, 0.7f}, {30.0, 0.1f}}) {
        chart.patches.emplace_back().spectrum.emplace().fill(reflectance);
        chart.places.push_back(J4Chart::Place::Upright({x, 30}, 10, 10));
    }
    chart.blemishes = {{{40, 20}, {60, 20}, 1, 0.3f}, {{35, 26}, {35, 26}, 5, 0.2f}};  // a scratch and a speck
    PrintedChart printed(chart);
    struct Case {
        Point place;
        double reflectance;
        ChartOffset offset{};  // of a chart whose middle is at 250, 300
    };
    const Case cases[] = {
        {{200, 300}, 0.5},                // inside
        {{250, 300}, 0.3},                // half and half, the last one on top
        {{150, 300}, (0.5 + 0.9) / 2},    // over the outer edge
        {{250, 350}, (0.9 + 0.3) / 2},    // over both patches and the paper
        {{500, 300}, 0.9},                // beside the chart
        {{223, 300}, 0.5},                // just inside still
        {{350, 260}, 0.2},                // whole in the speck, which lies over a patch and paper
        {{500, 200}, 0.9 - 0.6 * 0.281},  // across the scratch
        {{400, 200}, 0.9 - 0.6 * 0.165},  // over its round end
        {{600, 300}, 0.9 - 0.6 * 0.281, {{100, 100}, 0}},
        {{100, 700}, 0.5, {{-100, 400}, 0}},
        {{250, 250}, 0.5, {{0, 0}, 90}},
        {{250, 350}, 0.1, {{0, 0}, 90}},
        {{307, 175}, 0.5, {{100, -100}, 30}},  // 43 to the left and 25 down from the middle
    };
    for (const Case& test : cases) {
        printed.SetOffset(test.offset);
        // An edge through the middle of the grid may give its cells to either side.
        EXPECT_NEAR(printed.ReflectanceAt(test.place, ApertureDiameter)[10], test.reflectance, 0.03)
            << test.place.x << "/" << test.place.y;
    }
    chart.places.front() = J4Chart::Place::Upright({80, 30}, 24, 8).Turned(std::numbers::pi / 2);
    EXPECT_NEAR(PrintedChart(chart).ReflectanceAt({800, 380}, ApertureDiameter)[10], 0.5, 1e-6) << "a turned patch";
    EXPECT_EQ(PrintedChart().ReflectanceAt({200, 300}, ApertureDiameter)[10], 0.85f);
}

TEST(WhiteTile, DirtShowsWhenTheApertureMovesHalfAMillimetre)
{
    Spectrum clean;
    clean.fill(0.9f);
    const auto seen = [&](double y, bool dirty) { return WhiteTile::Seen(clean, {0, y}, ApertureDiameter, dirty)[0]; };
    EXPECT_EQ(seen(0, false), 0.9f);
    EXPECT_EQ(seen(-5, false), 0.9f);
    EXPECT_LT(seen(0, true), 0.9f);
    EXPECT_LT(seen(-5, true), seen(0, true) - 0.005f);
}

}  // namespace
}  // namespace J4Bench
