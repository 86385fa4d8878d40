#include "tools/ChartLayout.h"

#include <utility>

#include <gtest/gtest.h>

#include "tests/tools/LayoutText.h"
#include "tools/ToolError.h"

namespace J4Tool {
namespace {

/// Names of the patches of all rows in the order of the scan, rows separated by "/".
std::string RowNames(const ChartLayout& layout)
{
    std::string names;
    for (const ChartLayout::Row& row : layout.Rows()) {
        names += names.empty() ? "" : "/";
        for (const size_t patch : row) {
            names += layout.Patches()[patch].name;
        }
    }
    return names;
}

TEST(ChartLayout, FindsTheRowsInWhateverOrderTheyStand)
{
    EXPECT_EQ(RowNames(LayoutOf(CgatsText("SAMPLE_ID X Y WIDTH HEIGHT",
                                          "d 60 14.4 10 8\nb 40 10 10 8\na 30 13 10 8\nc 50 14 10 8\n"))),
              "ab/cd");
}

TEST(ChartLayout, GridsAndCornersGiveTheSamePlaces)
{
    const std::string six = CgatsText("SAMPLE_ID", "a\nb\nc\nd\ne\nf\n", "PATCH_GAP \"7 7\"\n");
    J4Chart::Grid columns;
    columns.columns = 3;
    J4Chart::Grid grid = columns;
    grid.size = Point{10, 8};
    grid.gap = Point{2, 2};
    grid.start = Point{200, 300};
    const std::string half =
        CgatsText("SAMPLE_ID X Y WIDTH HEIGHT", "a 0 0 5 4\nb 6 0 5 4\nc 12 0 5 4\nd 0 5 5 4\ne 6 5 5 4\nf 12 5 5 4\n");
    struct Case {
        const char* what;
        ChartLayout layout;
        bool corners;
        double width;
    };
    Case cases[] = {
        {"arguments go before keywords", LayoutOf(six, grid), false, 10},
        {"arguments go before places", LayoutOf(half, grid), false, 10},
        {"half size with corners", LayoutOf(half, {}, true), true, 10},
        {"columns with corners, gap of 7 for a size of 1", LayoutOf(six, columns, true), true, 1.5},
    };
    for (Case& test : cases) {
        SCOPED_TRACE(test.what);
        if (test.corners) {
            test.layout.PlaceCorners({{{200, 300}, {224, 300}, {200, 310}}});
        }
        EXPECT_EQ(RowNames(test.layout), "abc/def");
        for (size_t i = 0; i < 6; ++i) {
            EXPECT_NEAR(test.layout.Places()[i].centre.x, 200.0 + 12.0 * static_cast<double>(i % 3), 1e-9);
            EXPECT_NEAR(test.layout.Places()[i].centre.y, 300.0 + 10.0 * static_cast<double>(i / 3), 1e-9);
            EXPECT_NEAR(test.layout.Places()[i].Width(), test.width, 1e-9);
        }
    }
}

TEST(ChartLayout, CornersTurnTheChart)
{
    ChartLayout layout = GridLayout(2, 3);
    layout.PlaceCorners({{{300, 200}, {300, 224}, {290, 200}}});  // a quarter turn to the left
    const J4Chart::Place& place = layout.Places()[4];
    const std::pair<double, double> numbers[] = {{place.centre.x, 290}, {place.centre.y, 212}, {place.along.x, 0},
                                                 {place.along.y, 5},    {place.across.x, -4},  {place.across.y, 0}};
    for (const auto& [is, shouldBe] : numbers) {
        EXPECT_NEAR(is, shouldBe, 1e-9);
    }
    EXPECT_THROW(layout.PlaceCorners({{{300, 200}, {310, 200}, {320, 200}}}), ToolError);
    EXPECT_THROW(GridLayout(1, 3).Corners(), ToolError);
}

TEST(ChartLayout, WithoutPatchesOrAFileThereIsNone)
{
    EXPECT_THROW(LayoutOf(CgatsText("SAMPLE_ID X Y WIDTH HEIGHT", "")), J4Chart::CgatsError);
    EXPECT_THROW(ChartLayout::Load("no such file.cgats", {}, false), ToolError);
}

}  // namespace
}  // namespace J4Tool
