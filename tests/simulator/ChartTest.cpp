#include "simulator/chart/Chart.h"

#include <gtest/gtest.h>

#include <sstream>

#include "simulator/chart/Aperture.h"
#include "simulator/chart/WhiteTile.h"
#include "tests/simulator/ChartText.h"

namespace J4Bench {
namespace {

TEST(Chart, ReadsEveryFormThatItPromises)
{
    struct Case {
        const char* what;
        std::string text;
        const char* name;
        Point centre;
    };
    const Case cases[] = {
        {"plain", ChartText({{"A1", 20, 30, 10, 8, 0.5}}), "A1", {200, 300}},
        {"CR LF, comments, empty lines, blanks",
         Replaced(Replaced(ChartText({{"A1", 20, 30, 10, 8, 0.5}}), "\n", "  # end\r\n\r\n"), "\t", "   "),
         "A1",
         {200, 300}},
        {"quoted name",
         Replaced(ChartText({{"A1", 20, 30, 10, 8, 0.5}}), "\nA1", "\n\"deep red # 1\""),
         "deep red # 1",
         {200, 300}},
        {"name by SAMPLE_ID",
         Replaced(ChartText({{"A1", 20, 30, 10, 8, 0.5}}), "SAMPLE_NAME", "SAMPLE_ID"),
         "A1",
         {200, 300}},
        {"other spectral names",
         Replaced(ChartText({{"A1", 20, 30, 10, 8, 0.5}}), "SPECTRAL_NM", "SPEC_"),
         "A1",
         {200, 300}},
        {"corner", ChartText({{"A1", 20, 30, 10, 8, 0.5}}, "LAYOUT_ORIGIN \"CORNER\"\n"), "A1", {250, 340}},
        {"unknown keywords",
         ChartText({{"A1", 20, 30, 10, 8, 0.5}}, "MATERIAL \"a b\"\nKEYWORD \"X1\"\nX1 7\n"),
         "A1",
         {200, 300}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        Chart chart;
        CgatsFile::Error error;
        std::istringstream input(test.text);
        ASSERT_TRUE(chart.Load(input, error)) << error.Text();
        ASSERT_EQ(chart.Patches().size(), 1u);
        const Patch& patch = chart.Patches().front();
        EXPECT_EQ(patch.name, test.name);
        EXPECT_DOUBLE_EQ(patch.centre.x, test.centre.x);
        EXPECT_DOUBLE_EQ(patch.centre.y, test.centre.y);
        EXPECT_FLOAT_EQ(patch.reflectance[35], 0.5f);
    }
}

TEST(Chart, BrokenFileNamesLineAndReasonAndLeavesTheChart)
{
    const std::string good = ChartText({{"A1", 20, 30, 10, 8, 0.5}, {"A2", 30, 30, 10, 8, 0.25}});
    struct Case {
        std::string text;
        const char* error;
    };
    const Case cases[] = {
        {"", "BEGIN_DATA_FORMAT is missing"},
        {Replaced(good, "BEGIN_DATA_FORMAT\n", ""), "line 6: BEGIN_DATA before the data format"},
        {Replaced(good, "END_DATA_FORMAT\n", ""), "line 9: END_DATA_FORMAT is missing"},
        {Replaced(good, "BEGIN_DATA\n", ""), "line 9: BEGIN_DATA is missing"},
        {Replaced(good, "END_DATA\n", ""), "line 9: END_DATA is missing"},
        {Replaced(good, "\nA2\t30", "\nA2"), "line 9: 40 values instead of 41"},
        {Replaced(good, "\nA2\t", "\n\"A2\t"), "line 9: a quoted text has no end"},
        {Replaced(good, "FIELDS 41", "FIELDS 40"), "line 2: NUMBER_OF_FIELDS is 40, but there are 41"},
        {Replaced(good, "SETS 2", "SETS 3"), "line 6: NUMBER_OF_SETS is 3, but there are 2"},
        {Replaced(good, "SPECTRAL_NM550", "SPECTRAL_NM555"), "the field SPECTRAL_NM550 is missing"},
        {Replaced(good, "SAMPLE_NAME", "NAME"), "the field SAMPLE_NAME or SAMPLE_ID is missing"},
        {Replaced(good, "\tWIDTH", "\tBREADTH"), "the field WIDTH is missing"},
        {Replaced(good, "0.25", "0,25"), "line 9: SPECTRAL_NM380 '0,25' is not a reflectance factor from 0 to 2"},
        {Replaced(good, "0.25", "25"), "line 9: SPECTRAL_NM380 '25' is not a reflectance factor from 0 to 2"},
        {Replaced(good, "0.25", "nan"), "line 9: SPECTRAL_NM380 'nan' is not a reflectance factor from 0 to 2"},
        {Replaced(good, "A2\t30", "A2\tleft"), "line 9: X 'left' is not a place in millimetres"},
        {Replaced(good, "\t10\t", "\t0\t"), "line 8: WIDTH '0' is not a length in millimetres above 0"},
        {"LAYOUT_ORIGIN \"MIDDLE\"\n" + good, "line 1: LAYOUT_ORIGIN 'MIDDLE' is neither CENTRE nor CORNER"},
        {"PAPER_REFLECTANCE \"0.9 0.8\"\n" + good, "line 1: PAPER_REFLECTANCE has 2 values instead of 1 or 36"},
        {"PAPER_REFLECTANCE white\n" + good,
         "line 1: PAPER_REFLECTANCE 'white' is not a reflectance factor from 0 to 2"},
    };
    Chart chart;
    CgatsFile::Error error;
    std::istringstream first(ChartText({{"old", 20, 30, 10, 8, 0.75}}));
    ASSERT_TRUE(chart.Load(first, error));
    for (const Case& test : cases) {
        SCOPED_TRACE(test.error);
        std::istringstream input(test.text);
        EXPECT_FALSE(chart.Load(input, error));
        EXPECT_EQ(error.Text(), test.error);
        ASSERT_EQ(chart.Patches().size(), 1u);
        EXPECT_EQ(chart.Patches().front().name, "old");
    }
    EXPECT_FALSE(chart.Load("no such file.cgats", error));
    EXPECT_EQ(error.Text(), "the file can't be opened");
}

TEST(Chart, ApertureSeesTheShareOfWhatLiesUnderIt)
{
    Chart chart;
    CgatsFile::Error error;
    std::istringstream input(
        ChartText({{"left", 20, 30, 10, 10, 0.5}, {"right", 30, 30, 10, 10, 0.1}}, "PAPER_REFLECTANCE 0.9\n"));
    ASSERT_TRUE(chart.Load(input, error)) << error.Text();
    struct Case {
        Point place;
        double reflectance;
    };
    const Case cases[] = {
        {{200, 300}, 0.5},              // inside
        {{250, 300}, 0.3},              // half and half
        {{150, 300}, (0.5 + 0.9) / 2},  // over the outer edge
        {{250, 350}, (0.9 + 0.3) / 2},  // over both patches and the paper
        {{500, 300}, 0.9},              // beside the chart
        {{223, 300}, 0.5},              // just inside still
    };
    for (const Case& test : cases) {
        // An edge through the middle of the grid may give its cells to either side.
        EXPECT_NEAR(chart.ReflectanceAt(test.place, ApertureDiameter)[10], test.reflectance, 0.03)
            << test.place.x << "/" << test.place.y;
    }
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
