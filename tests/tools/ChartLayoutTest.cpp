#include "tools/ChartLayout.h"

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

std::string Layout(const std::string& fields, const std::string& rows, const std::string& head = "")
{
    return "CGATS.17\n" + head + "BEGIN_DATA_FORMAT\n" + fields + "\nEND_DATA_FORMAT\nBEGIN_DATA\n" + rows +
           "END_DATA\n";
}

TEST(ChartLayout, FindsTheRowsInWhateverOrderTheyStand)
{
    const ChartLayout layout = ChartLayout::FromTable(
        TableOf(Layout("SAMPLE_ID X Y WIDTH HEIGHT CMYK_C CMYK_M CMYK_Y CMYK_K LAB_L LAB_A LAB_B",
                       "d 40 20.4 10 8 0 0 0 1 40 1 2\nb 40 10 10 8 1 2 3 4 50 0 0\na 30 11 10 8 5 6 7 8 60 0 0\n"
                       "c 30 20 10 8 9 10 11 12.50 70 0 0\n")),
        {}, false);
    EXPECT_EQ(RowNames(layout), "ab/cd");
    EXPECT_EQ(layout.DeviceFields(), (std::vector<std::string>{"CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K"}));
    EXPECT_EQ(layout.Patches()[3].device, (std::vector<std::string>{"9", "10", "11", "12.50"}));
    EXPECT_EQ(layout.Patches()[0].reference, (ChartLayout::Triple{40, 1, 2}));
}

TEST(ChartLayout, GridsAndCornersGiveTheSamePlaces)
{
    const std::string six = "a\nb\nc\nd\ne\nf\n";
    GridOptions grid;
    grid.columns = 3;
    grid.size = Point{10, 8};
    grid.gap = Point{2, 2};
    grid.start = Point{200, 300};
    GridOptions columnsOnly;
    columnsOnly.columns = 3;
    const std::string places = "a 0 0 5 4\nb 6 0 5 4\nc 12 0 5 4\nd 0 5 5 4\ne 6 5 5 4\nf 12 5 5 4\n";
    const std::array<Point, 3> corners = {{{200, 300}, {224, 300}, {200, 310}}};
    struct Case {
        const char* what;
        ChartLayout layout;
        bool corners;
        double width;
    };
    Case cases[] = {
        {"options", ChartLayout::FromTable(TableOf(Layout("SAMPLE_ID", six)), grid, false), false, 10},
        {"keywords",
         ChartLayout::FromTable(TableOf(Layout("SAMPLE_ID", six,
                                               "LAYOUT_ROWS 2\nPATCH_SIZE \"10 8\"\nPATCH_GAP \"2 2\"\n"
                                               "LAYOUT_START \"200 300\"\n")),
                                {}, false),
         false, 10},
        {"places at corners",
         ChartLayout::FromTable(TableOf(Layout("SAMPLE_ID X Y WIDTH HEIGHT",
                                               "a 195 296 10 8\nb 207 296 10 8\nc 219 296 10 8\nd 195 306 10 8\n"
                                               "e 207 306 10 8\nf 219 306 10 8\n",
                                               "LAYOUT_ORIGIN \"CORNER\"\n")),
                                {}, false),
         false, 10},
        {"half size with corners",
         ChartLayout::FromTable(TableOf(Layout("SAMPLE_ID X Y WIDTH HEIGHT", places)), {}, true), true, 10},
        {"columns with corners", ChartLayout::FromTable(TableOf(Layout("SAMPLE_ID", six)), columnsOnly, true), true,
         12},
    };
    for (Case& test : cases) {
        SCOPED_TRACE(test.what);
        if (test.corners) {
            test.layout.PlaceCorners(corners);
        }
        EXPECT_EQ(RowNames(test.layout), "abc/def");
        for (size_t i = 0; i < 6; ++i) {
            EXPECT_NEAR(test.layout.Patches()[i].centre.x, 200.0 + 12.0 * static_cast<double>(i % 3), 1e-9);
            EXPECT_NEAR(test.layout.Patches()[i].centre.y, 300.0 + 10.0 * static_cast<double>(i / 3), 1e-9);
            EXPECT_NEAR(test.layout.Patches()[i].half.x, test.width / 2, 1e-9);
        }
    }
}

TEST(ChartLayout, CornersTurnTheChart)
{
    ChartLayout layout = GridLayout(2, 3);
    layout.PlaceCorners({{{300, 200}, {300, 224}, {290, 200}}});  // a quarter turn to the left
    EXPECT_NEAR(layout.Patches()[4].centre.x, 290, 1e-9);
    EXPECT_NEAR(layout.Patches()[4].centre.y, 212, 1e-9);
    EXPECT_NEAR(layout.Patches()[4].half.x, 0, 1e-9);
    EXPECT_NEAR(layout.Patches()[4].half.y, 5, 1e-9);
    EXPECT_THROW(layout.PlaceCorners({{{300, 200}, {310, 200}, {320, 200}}}), ToolError);
    EXPECT_THROW(GridLayout(1, 3).CornerPatches(), ToolError);
}

TEST(ChartLayout, RefusalsTellLineAndReason)
{
    struct Case {
        std::string text;
        const char* reason;
    };
    GridOptions none;
    const Case cases[] = {
        {Layout("NAME", "a\n"), "the field SAMPLE_NAME or SAMPLE_ID is missing"},
        {Layout("SAMPLE_ID", ""), "there are no patches"},
        {Layout("SAMPLE_ID", "a\n"), "there are neither places"},
        {Layout("SAMPLE_ID", "a\nb\n", "LAYOUT_COLUMNS 2\n"), "the size of the patches"},
        {Layout("SAMPLE_ID", "a\nb\nc\n", "LAYOUT_COLUMNS 2\nLAYOUT_ROWS 3\n"), "3 patches do not fill 3 rows of 2"},
        {Layout("SAMPLE_ID", "a\n", "PATCH_SIZE \"1 2 3\"\nLAYOUT_COLUMNS 1\n"), "line 2: PATCH_SIZE has 3 values"},
        {Layout("SAMPLE_ID X Y WIDTH", "a 1 2 3\n"), "the field HEIGHT is missing"},
        {Layout("SAMPLE_ID X Y WIDTH HEIGHT", "a 1 2 3 left\n"), "line 6: HEIGHT 'left' is not a number from 0.1"},
        {Layout("SAMPLE_ID X Y WIDTH HEIGHT", "a 1 2 0 4\n"), "line 6: WIDTH '0' is not a number from 0.1"},
        {Layout("SAMPLE_ID X Y WIDTH HEIGHT LAB_L LAB_A LAB_B", "a 1 2 3 4 x 0 0\n"), "line 6: LAB_L 'x'"},
    };
    for (const Case& test : cases) {
        try {
            ChartLayout::FromTable(TableOf(test.text), none, false);
            ADD_FAILURE() << "accepted, wanted: " << test.reason;
        } catch (const ToolError& error) {
            EXPECT_EQ(std::string(error.what()).rfind(test.reason, 0), 0u) << error.what();
            EXPECT_EQ(error.code, ExitCode::File);
        }
    }
}

}  // namespace
}  // namespace J4Tool
