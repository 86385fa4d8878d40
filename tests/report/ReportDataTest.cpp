#include "tools/report/ReportData.h"

#include <gmock/gmock.h>

#include "tests/report/SourceOf.h"
#include "tools/ToolError.h"

namespace J4Tool {
namespace {

const std::string labFields = "SAMPLE_ID SAMPLE_NAME LAB_L LAB_A LAB_B";

TEST(ReportData, DifferencesByBothFormulasAndThoseOfTheTolerances)
{
    // Pairs of Sharma, Wu and Dalal (2005) with their CIEDE2000.
    const ColourFile measured = SourceOf(labFields,
                                         "1 A1 50 0 -82.7485\n"
                                         "2 A2 50 -1 2\n"
                                         "3 A3 73 25 -18\n"
                                         "4 A4 10 0 0\n");
    const ColourFile reference = SourceOf(labFields,
                                          "9 A3 50 2.5 0\n"
                                          "8 A2 50 0 0\n"
                                          "7 A1 50 2.6772 -79.7751\n"
                                          "6 A9 50 0 0\n");
    Tolerances tolerances;
    tolerances.rules.resize(2);
    tolerances.rules[0].limits[0] = 40.0;
    tolerances.rules[1].formula = J4Chart::ColourDifference::FindFormula("CIE 1994");
    tolerances.rules[1].limits[2] = 40.0;
    EXPECT_FALSE(ReportData(measured, &reference).Verdict());
    const ReportData data(measured, &reference, &tolerances);
    ASSERT_TRUE(data.Verdict());
    EXPECT_EQ(data.Verdict()->Overall(), Judgement::Verdict::NotJudged) << "A4 has no reference";
    ASSERT_EQ(data.Patches().size(), 4u);
    ASSERT_EQ(data.Formulas().size(), 3u);
    EXPECT_EQ(data.Formulas()[2].name, "CIE 1994");
    EXPECT_EQ(data.Formulas()[2].summary.Maximum(), *data.Verdict()->Lines()[1].value);
    EXPECT_EQ(data.Patches()[2].parts.lightness, 23.0);
    const double expected[][2] = {{2.0425, 4.0011}, {2.3669, 2.2361}, {27.1492, 36.8680}};
    for (size_t i = 0; i < 3; ++i) {
        SCOPED_TRACE(data.Patches()[i].name);
        EXPECT_NEAR(data.Patches()[i].differences[0], expected[i][0], 5e-5);
        EXPECT_NEAR(data.Patches()[i].differences[1], expected[i][1], 5e-5);
    }
    EXPECT_FALSE(data.Patches()[3].reference);
    EXPECT_TRUE(data.Patches()[3].differences.empty());
    EXPECT_EQ(data.Formulas()[0].name, "CIEDE2000");
    EXPECT_NEAR(data.Formulas()[0].summary.Mean(), (2.0425 + 2.3669 + 27.1492) / 3.0, 1e-4);
    EXPECT_EQ(data.Formulas()[1].summary.Worst(), (std::vector<size_t>{2, 0, 1}));
    EXPECT_THAT(data.Notices(), testing::IsSupersetOf({"1 measured patch has no reference and no difference.",
                                                       "1 patch of the reference was not measured."}));
}

TEST(ReportData, MatchesByNameOrElseByNumber)
{
    struct Case {
        const char* what;
        std::string measuredFields, measured, referenceFields, reference;
    };
    const Case cases[] = {
        {"names in another order, numbers that differ", labFields, "1 A 40 0 0\n2 B 60 0 0\n", labFields,
         "1 B 60 0 0\n2 A 40 0 0\n"},
        {"names that are not unique", labFields, "1 grey 40 0 0\n2 grey 60 0 0\n", labFields,
         "2 grey 60 0 0\n1 grey 40 0 0\n"},
        {"the number is the name of the other side", "SAMPLE_NAME LAB_L LAB_A LAB_B", "A 40 0 0\nB 60 0 0\n",
         "SAMPLE_ID LAB_L LAB_A LAB_B", "B 60 0 0\nA 40 0 0\n"},
        {"different names, same numbers", labFields, "1 A 40 0 0\n2 B 60 0 0\n", labFields, "2 Y 60 0 0\n1 X 40 0 0\n"},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const ColourFile reference = SourceOf(test.referenceFields, test.reference);
        const ReportData data(SourceOf(test.measuredFields, test.measured), &reference);
        EXPECT_EQ(data.Formulas()[0].summary.Count(), 2u);
        EXPECT_EQ(data.Formulas()[0].summary.Maximum(), 0.0);
    }
    const ColourFile stranger = SourceOf(labFields, "7 Z 40 0 0\n");
    EXPECT_THROW(ReportData(SourceOf(labFields, "1 A 40 0 0\n"), &stranger), ToolError);
}

TEST(ReportData, PlacesOfThePatches)
{
    const std::string bare = "SAMPLE_ID LAB_L LAB_A LAB_B";
    const ColourFile reference =
        SourceOf("SAMPLE_ID X Y WIDTH HEIGHT LAB_L LAB_A LAB_B", "1 100 200 10 20 50 0 0\n2 112 200 10 20 50 0 0\n");

    const ReportData fromReference(SourceOf(bare, "2 50 0 0\n1 50 0 0\n"), &reference);
    EXPECT_TRUE(fromReference.IsPlaced());
    EXPECT_EQ(fromReference.Patches()[0].place.x, 112.0);
    EXPECT_EQ(fromReference.Patches()[0].place.height, 20.0);

    // One patch without a place leaves the chart without a layout, not a patch on top of another.
    const ReportData setOut(SourceOf(bare, "2 50 0 0\n1 50 0 0\n3 50 0 0\n"), &reference);
    EXPECT_FALSE(setOut.IsPlaced());
    EXPECT_NE(setOut.Patches()[0].place.x, setOut.Patches()[1].place.x);
    EXPECT_TRUE(setOut.Rows().empty());
}

TEST(ReportData, TellsHowPatchesWereRead)
{
    const ReportData data(SourceOf("SAMPLE_ID SCAN_WAY SCAN_SAMPLES SCAN_SPREAD SCAN_RESIDUAL LAB_L LAB_A LAB_B",
                                   "1 RECOGNISED 0 0 0 50 0 0\n"
                                   "2 FITTED 7 0.12 0.034 50 0 0\n"
                                   "3 FITTED 8 0.31 0.034 50 0 0\n"));
    EXPECT_THAT(data.Notices(),
                testing::ElementsAre("1 patch was read by recognition.",
                                     "2 patches were read by a fit of raw samples; samples of one patch agree within "
                                     "0.31 (CIE 1976), the edges of a row within 0.03 mm."));
    ASSERT_EQ(data.Readings().size(), 2u);  // by way, all in one row, as the file does not tell rows
    EXPECT_EQ(data.Readings()[0].way, "by a fit of raw samples");
    EXPECT_EQ(data.Readings()[0].patches, 2u);
    EXPECT_EQ(data.Readings()[0].fewestSamples, 7u);
    EXPECT_EQ(data.Readings()[0].spread, 0.31);
}

TEST(ReportData, RowsOfTheScan)
{
    const std::string fields = "SAMPLE_ID X Y WIDTH HEIGHT SCAN_ROW SCAN_COLUMN LAB_L LAB_A LAB_B";
    const std::string conditions = "SCAN_SPEED \"160\"\nINTEGRATION_TIME \"0.005\"\nSCAN_MARGIN \"6\"\n";
    struct Case {
        const char* what;
        std::string head, rows;
        size_t count;              // of rows
        double distance;           // of the first row, mm
        double firstFrom, lastTo;  // fields of its outer patches
        double width;              // of the first patch along x
    };
    const Case cases[] = {
        {"along x, not in the order of the file", conditions,
         "1 30 0 10 20 1 2 50 0 0\n2 18 0 10 20 1 1 50 0 0\n3 18 20 10 20 2 1 50 0 0\n", 2, 34.0, 6.0, 28.0, 10.0},
        {"one patch", conditions, "1 30 0 10 20 1 1 50 0 0\n", 1, 22.0, 6.0, 16.0, 10.0},
        {"askew, 3 to 4 to 5", conditions, "1 0 0 10 20 1 1 50 0 0\n2 16 12 10 20 1 2 50 0 0\n", 1, 42.0, 6.0, 36.0,
         10.0},
        {"along y", conditions, "1 0 0 10 20 1 1 50 0 0\n2 0 12 10 20 1 2 50 0 0\n", 1, 34.0, 6.0, 28.0, 20.0},
        {"margin not known", "SCAN_SPEED \"160\"\n", "1 30 0 10 20 1 1 50 0 0\n", 1, 26.0, 8.0, 18.0, 10.0},
        {"no margin, an integration time in words",
         "SCAN_SPEED \"160\"\nSCAN_MARGIN 0\nINTEGRATION_TIME \"about 5 ms\"\n", "1 30 0 10 20 1 1 50 0 0\n", 1, 10.0,
         0.0, 10.0, 10.0},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const ReportData data(SourceOf(fields, test.rows, test.head));
        ASSERT_EQ(data.Rows().size(), test.count);
        const RowTravel& row = data.Rows()[0];
        EXPECT_NEAR(row.Distance(), test.distance, 1e-9);
        EXPECT_NEAR(row.Fields().front().from, test.firstFrom, 1e-9);
        EXPECT_NEAR(row.Fields().back().to, test.lastTo, 1e-9);
        EXPECT_EQ(data.Patches()[row.Fields().front().patch].place.width, test.width);
        EXPECT_EQ(row.HasSamples(), test.head == conditions);
    }
    EXPECT_TRUE(ReportData(SourceOf(fields, cases[0].rows)).Rows().empty()) << "speed not known";
}

}  // namespace
}  // namespace J4Tool
