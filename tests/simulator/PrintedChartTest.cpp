#include "simulator/chart/PrintedChart.h"

#include <gtest/gtest.h>

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
    const PrintedChart printed(chart);
    struct Case {
        Point place;
        double reflectance;
    };
    const Case cases[] = {
        {{200, 300}, 0.5},              // inside
        {{250, 300}, 0.3},              // half and half, the last one on top
        {{150, 300}, (0.5 + 0.9) / 2},  // over the outer edge
        {{250, 350}, (0.9 + 0.3) / 2},  // over both patches and the paper
        {{500, 300}, 0.9},              // beside the chart
        {{223, 300}, 0.5},              // just inside still
    };
    for (const Case& test : cases) {
        // An edge through the middle of the grid may give its cells to either side.
        EXPECT_NEAR(printed.ReflectanceAt(test.place, ApertureDiameter)[10], test.reflectance, 0.03)
            << test.place.x << "/" << test.place.y;
    }
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
