// The parts of the chart maker: lists, rules, order, pages, and the layouts that come of them.
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "chart/ChartPages.h"
#include "chart/colour/PrintModel.h"
#include "tests/tools/LayoutText.h"
#include "tools/ToolError.h"
#include "tools/make/ColourList.h"
#include "tools/make/ColourRule.h"
#include "tools/make/PageLayout.h"
#include "tools/make/PatchOrder.h"
#include "tools/make/PdfText.h"

namespace J4Tool {
namespace {

using J4Chart::Colorimetry::Triple;

/// What a call throws; empty where it throws nothing.
template <class Call>
std::string Complaint(Call call)
{
    try {
        call();
    } catch (const std::exception& error) {
        return error.what();
    }
    return {};
}

ColourList ListOf(const std::string& text, const ColourList::Scales& scales = {})
{
    return ColourList::Read(FileOf(text), scales);
}

ColourList ListOfRule(const std::string& name)
{
    J4Chart::CgatsFile file;
    file.Add(ColourRule::Make(name));
    return ColourList::Read(file, {});
}

TEST(ColourList, ReadsDeviceValuesAndSpotInks)
{
    const ColourList spots =
        ListOf(CgatsText("SAMPLE_ID CMYK_K CMYK_C CMYK_M CMYK_Y SPOT_1 LAB_L LAB_A LAB_B", "a 40 10 20 30 50 60 1 2\n",
                         "SPOT_1_NAME \"Deep Orange\"\nSPOT_1_CMYK \"0 60 100 0\"\n"));
    EXPECT_EQ(spots.Colours()[0].values, (std::vector{0.1, 0.2, 0.3, 0.4, 0.5}));
    EXPECT_EQ(spots.Colours()[0].lab, (Triple{60, 1, 2}));
    EXPECT_EQ(spots.Spots()[0].name, "Deep Orange");
    EXPECT_EQ(spots.Spots()[0].cmyk, (std::array{0.0, 0.6, 1.0, 0.0}));
    const std::string percent = CgatsText("RGB_R RGB_G RGB_B", "0 50 100\n");
    EXPECT_EQ(ListOf(percent, {100.0, 1.0}).Colours()[0].values, (std::vector{0.0, 0.5, 1.0}));
    EXPECT_EQ(ListOf(percent, {100.0, 1.0}).Colours()[0].name, "1");
    const std::string parts = CgatsText("SAMPLE_ID CMYK_C CMYK_M CMYK_Y CMYK_K", "a 0 1 0.5 0\n");
    EXPECT_EQ(ListOf(CgatsText("CMYK_C CMYK_M CMYK_Y CMYK_K", "0 1 0.5 0\n", "DEVICE_MAXIMUM 1\n")).Colours()[0].values,
              (std::vector{0.0, 1.0, 0.5, 0.0}));
    EXPECT_EQ(ListOf(parts, {255.0, 1.0}).Colours()[0].values, (std::vector{0.0, 1.0, 0.5, 0.0}));
}

TEST(ColourList, RefusesWithLineAndReason)
{
    const std::string cmyk = "SAMPLE_ID CMYK_C CMYK_M CMYK_Y CMYK_K";
    const std::string ink = "SPOT_1_NAME \"Ink\"\n";
    const struct {
        std::string fields, rows, head, complaint;
    } cases[] = {
        {"SAMPLE_ID", "a\n", "", "line 3: there are no device values: neither RGB nor CMYK"},
        {cmyk + " RGB_R RGB_G RGB_B", "a 0 0 0 0 1 2 3\n", "", "line 3: there are RGB and CMYK values"},
        {"SAMPLE_ID CMYK_C CMYK_M CMYK_Y", "a 0 0 0\n", "", "line 3: the field CMYK_K is missing"},
        {cmyk, "", "", "there are no colours"},
        {cmyk, "a 0 0 0 0\nb 0 100.5 0 0\n", "", "line 7: CMYK_M '100.5' is not a number from 0 to 100"},
        {cmyk, "a 0 0 0 0\na 0 1 0 0\n", "", "line 7: the colour of line 6 is called a too"},
        {"RGB_R RGB_G RGB_B", "0 0 -1\n", "", "line 6: RGB_B '-1' is not a number from 0 to 255"},
        {"RGB_R RGB_G RGB_B", "0 50 100\n", "", "the highest value of R, G and B is 100, and it can't be told"},
        {"RGB_R RGB_G RGB_B", "0 0.5 0.99\n", "",
         "the highest value of R, G and B is 0.99, and it can't be told whether full light is 1 (--rgb-maximum 1)"},
        {cmyk, "a 0 0 0 0\nb 0 1 0 0\n", "",
         "the highest value of the inks is 1, and it can't be told whether a solid is 1 (--cmyk-maximum 1) or 100"},
        {"RGB_R RGB_G RGB_B SPOT_1", "0 0 255 1\n", "", "line 3: spot inks go with CMYK"},
        {cmyk + " SPOT_2", "a 0 0 0 0 9\n", "", "line 3: the field SPOT_1 is missing"},
        {cmyk + " GRAY", "a 0 0 0 0 9\n", "", "line 3: GRAY is none of the values that a chart is printed of"},
        {cmyk + " SPOT_1", "a 0 0 0 0 9\n", "", "line 3: the keyword SPOT_1_NAME is missing"},
        {cmyk + " SPOT_1", "a 0 0 0 0 9\n", ink, "line 4: the keyword SPOT_1_CMYK is missing"},
        {cmyk + " SPOT_1", "a 0 0 0 0 9\n", ink + "SPOT_1_CMYK \"0 1 2\"\n", "line 3: SPOT_1_CMYK has 3 values"},
        {cmyk + " SPOT_1", "a 0 0 0 0 9\n", "SPOT_1_NAME All\nSPOT_1_CMYK \"0 1 2 3\"\n",
         "line 2: no spot ink can be called 'All'"},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.complaint);
        EXPECT_TRUE(
            Complaint([&] { ListOf(CgatsText(test.fields, test.rows, test.head)); }).starts_with(test.complaint));
    }
}

TEST(ColourRule, MakesRampsAndGrids)
{
    const struct {
        const char* name;
        std::vector<std::string> has;
        size_t count;
    } cases[] = {
        // 16 greys and 6 ramps of 9.
        {"rgb", {"R255G255B255", "R17G17B17", "R255G51B51", "R0G102B102"}, 70},
        {"rgb9", {"R32G191B255"}, 729 + 62},
        // Paper, 4 ramps of 12, 12 overprints, 9 greys and darks.
        {"cmyk", {"C0M0Y0K0", "C95M0Y0K0", "C75M66Y66K0", "C0M25Y25K0"}, 70},
        {"cmyk2", {"C100M100Y100K100"}, 70 + 7},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(test.name);
        std::set<std::string> names;
        std::set<std::vector<double>> values;
        const ColourList list = ListOfRule(test.name);
        for (const ColourList::Colour& colour : list.Colours()) {
            names.insert(colour.name);
            values.insert(colour.values);
        }
        EXPECT_EQ(names.size(), test.count);
        EXPECT_EQ(values.size(), test.count) << "no colour twice";
        for (const std::string& name : test.has) {
            EXPECT_TRUE(names.contains(name)) << name;
        }
    }
    for (const char* name : {"", "rgb1", "rgb11", "rgb 9", "rgb-3", "cmyk7", "lab"}) {
        EXPECT_NE(Complaint([&] { ColourRule::Make(name); }), "") << name;
    }
}

/// As the chart command estimates them.
std::vector<Triple> LabsOf(const ColourList& list)
{
    std::vector<Triple> labs;
    for (const ColourList::Colour& colour : list.Colours()) {
        labs.push_back(J4Chart::Colorimetry::Lab(J4Chart::PrintModel(list.SpotSolids()).Print(colour.values)));
    }
    return labs;
}

TEST(PatchOrder, PartsWhatIsAlikeAndIsTheSameEverywhere)
{
    const Triple paper = J4Chart::Colorimetry::Lab(J4Chart::PrintModel::Paper());
    for (const char* name : {"cmyk", "rgb", "cmyk3", "rgb5"}) {
        SCOPED_TRACE(name);
        const std::vector<Triple> labs = LabsOf(ListOfRule(name));
        const PageLayout pages({}, labs.size(), WorkArea::Usual());
        PatchOrder order(labs, paper, pages.Rows());
        EXPECT_LT(order.LeastDifference(), 10.0) << "ramps in their order are no task";
        order.Mix(1);
        EXPECT_GE(order.LeastDifference(), 19.9);
        EXPECT_GE(order.LeastFromPaper(), 19.9);
        std::vector<size_t> sorted = order.Order();
        std::sort(sorted.begin(), sorted.end());
        for (size_t i = 0; i < sorted.size(); ++i) {
            ASSERT_EQ(sorted[i], i) << "each colour once";
        }
        PatchOrder again(labs, paper, pages.Rows());
        again.Mix(1);
        EXPECT_EQ(order.Order(), again.Order());
        again.Mix(2);
        EXPECT_NE(order.Order(), again.Order());
    }
    // The order that every platform and release makes of these, so that a chart can be made anew.
    std::vector<Triple> greys;
    for (int i = 0; i < 12; ++i) {
        greys.push_back({8.0 * i, 0.0, 0.0});
    }
    PatchOrder order(greys, {95.0, 0.0, 0.0}, {6, 6});
    order.Mix(1);
    EXPECT_EQ(order.Order(), (std::vector<size_t>{8, 3, 10, 0, 6, 2, 7, 1, 9, 4, 11, 5}));
}

TEST(PrintModel, ComesNearTheInksOfOffset)
{
    const J4Chart::PrintModel model({{0.0, 0.6, 1.0, 0.0}});
    const struct {
        std::vector<double> values;
        Triple lab;
        double tolerance;
    } cases[] = {
        {{0, 0, 0, 0}, {95, 0, 0}, 1},      {{1, 0, 0, 0}, {56, -37, -50}, 2}, {{0, 1, 0, 0}, {48, 73, -4}, 2},
        {{0, 0, 1, 0}, {90, -5, 91}, 2},    {{0, 0, 0, 1}, {18, 0, 0}, 2},     {{0.5, 0.4, 0.4, 0}, {57, 0, 0}, 2},
        {{0, 0, 0, 0, 1}, {64, 35, 60}, 8}, {{1, 1, 1}, {95, 0, 0}, 1},        {{0, 1, 1}, {56, -37, -50}, 2},
    };
    for (const auto& test : cases) {
        const Triple lab = J4Chart::Colorimetry::Lab(model.Print(test.values));
        EXPECT_LT(J4Chart::Colorimetry::Distance(lab, test.lab), test.tolerance)
            << lab[0] << " " << lab[1] << " " << lab[2];
    }
}

TEST(PageLayout, KeepsEverythingOnThePaperAndInReach)
{
    const WorkArea area = WorkArea::Usual();
    const struct {
        Point paper, patch, gap, bed;
        double quiet;
        size_t patches, pages;
    } cases[] = {
        {{297, 210}, {10, 10}, {0, 0}, {150, 150}, 0, 82, 1},   {{297, 210}, {10, 10}, {0, 0}, {150, 150}, 0, 1000, 4},
        {{210, 297}, {8, 6}, {1, 2}, {150, 150}, 20, 400, 1},   {{420, 297}, {10, 10}, {1, 1}, {150, 150}, 0, 1341, 3},
        {{900, 900}, {10, 10}, {0, 0}, {150, 150}, 0, 5000, 4}, {{297, 210}, {10, 10}, {0, 0}, {150, 150}, 0, 1, 1},
    };
    for (const auto& test : cases) {
        SCOPED_TRACE(std::to_string(test.patches) + " on " + std::to_string(test.paper.x));
        PageLayout::Settings settings{test.paper, test.patch, test.gap, test.quiet, test.bed};
        const PageLayout layout(settings, test.patches, area);
        EXPECT_EQ(layout.Pages(), test.pages);
        const double quiet = layout.Chosen().quiet;
        EXPECT_EQ(quiet, test.quiet > 0.0 ? test.quiet : 24.0);
        size_t sum = 0;
        std::set<std::string> names;
        for (const size_t row : layout.Rows()) {
            sum += row;
        }
        EXPECT_EQ(sum, test.patches);
        for (size_t place = 0; place < test.patches; ++place) {
            const PageLayout::Cell cell = layout.CellOf(place);
            names.insert(PageLayout::Name(cell));
            ASSERT_TRUE(cell.page >= 1 && cell.page <= test.pages);
            const double left = cell.centre.x - 0.5 * test.patch.x - quiet;
            const double right = cell.centre.x + 0.5 * test.patch.x + quiet;
            const double top = cell.centre.y - 0.5 * test.patch.y - quiet;
            const double bottom = cell.centre.y + 0.5 * test.patch.y + quiet;
            ASSERT_TRUE(left > 5.0 && right < test.paper.x - 5.0 && top > 5.0 && bottom < test.paper.y - 5.0);
            ASSERT_EQ(area.Fault(layout.OnBed({left, cell.centre.y})), "");
            ASSERT_EQ(area.Fault(layout.OnBed({right, cell.centre.y})), "");
            for (const Point& mark : layout.Marks()) {
                const double reach = PageLayout::MarkReach;
                EXPECT_TRUE(mark.x + reach <= left || mark.x - reach >= right || mark.y + reach <= top + 1.0 ||
                            mark.y - reach >= bottom - 1.0)
                    << "a mark in the quiet margin";
            }
        }
        EXPECT_EQ(names.size(), test.patches);
    }
    EXPECT_EQ(PageLayout::RowName(25) + PageLayout::RowName(26) + PageLayout::RowName(702), "ZAAAAA");
    const auto complaint = [&](PageLayout::Settings settings) {
        return Complaint([&] { PageLayout(settings, 10, area); });
    };
    EXPECT_TRUE(complaint({{297, 210}, {5.4, 10}, {}, 0, {}}).starts_with("patches of 5.4 mm can't be measured"));
    EXPECT_TRUE(complaint({{297, 210}, {10, 10}, {-10, 0}, 0, {}}).starts_with("patches -10 mm apart would overlap"));
    EXPECT_TRUE(complaint({{60, 60}, {10, 10}, {}, 0, {150, 150}}).starts_with("no patch fits on the page"));
    EXPECT_NE(complaint({{297, 210}, {10, 10}, {}, 0, {790, 150}}).find("x 83"), std::string::npos);
}

TEST(ChartLayout, TakesOnePageAndItsCrosshairs)
{
    const std::string fields = "SAMPLE_ID PAGE X Y WIDTH HEIGHT";
    const J4Chart::CgatsFile file = FileOf(CgatsText(fields, "a 1 50 50 10 10\nb 3 50 50 10 10\nc 3 60 50 10 10\n",
                                                     "LAYOUT_MARKS \"10 10 110 10 10 60\"\n"));
    ChartLayout layout = ChartLayout::Read(file, {}, true, 3);
    EXPECT_EQ(layout.Patches().size(), 2u);
    EXPECT_EQ(layout.Patches()[0].name + layout.Patches()[1].name, "bc");
    EXPECT_EQ(layout.Corners()[1].name, "crosshair 2");
    layout.PlaceCorners({{{20, 10}, {20, 110}, {-30, 10}}});  // turned by a right angle
    EXPECT_NEAR(layout.Places()[1].centre.x, -20.0, 1e-9);
    EXPECT_NEAR(layout.Places()[1].centre.y, 60.0, 1e-9);
    EXPECT_NE(layout.FileText().find("LAYOUT_MARKS \"20 10 20 110 -30 10\""), std::string::npos);

    const std::string one = CgatsText("SAMPLE_ID X Y WIDTH HEIGHT", "a 50 50 10 10\n");
    const struct {
        std::string text;
        std::optional<size_t> page;
        const char* complaint;
    } cases[] = {
        {file.Text(), std::nullopt, "the layout has 2 pages"},
        {file.Text(), 2, "there is no page 2; the pages are 1, 3"},
        {one, 1, "the layout has no pages"},
        {CgatsText(fields, "a 0.5 50 50 10 10\n"), std::nullopt, "line 6: PAGE '0.5' is not a whole number"},
        {CgatsText(fields, "a 1 50 50 10 10\n", "LAYOUT_MARKS \"1 2 3\"\n"), 1, "line 2: LAYOUT_MARKS has 3 values"},
        {CgatsText(fields, "a 1 50 50 10 10\n", "LAYOUT_MARKS \"1 2 3 4 5 x\"\n"), 1, "line 2: LAYOUT_MARKS 'x'"},
    };
    for (const auto& test : cases) {
        const auto read = [&] { ChartLayout::Read(FileOf(test.text), {}, false, test.page); };
        EXPECT_TRUE(Complaint(read).starts_with(test.complaint)) << Complaint(read);
    }
}

TEST(PdfText, HoldsWhatPdfCan)
{
    EXPECT_EQ(PdfText::Shown("a(b)\\ \xc3\xa9 \xe2\x80\x93 \xd0\x96-\x80"), "(a\\(b\\)\\\\ \\351 \\226 ?-?)");
    EXPECT_EQ(PdfText::About("\xc3\xa9\xf0\x9f\x98\x80"), "<FEFF00E9D83DDE00>");
    EXPECT_EQ(PdfText::Name("Deep #1/\xc3\xa9"), "/Deep#20#231#2F#C3#A9");
    EXPECT_EQ(PdfText::Fitting("Wide", PdfText::Width("Wide")), "Wide");
    EXPECT_EQ(PdfText::Fitting("\xc3\xa9\xc3\xa9\xc3\xa9\xc3\xa9", 3.0), "\xc3\xa9\xc3\xa9\xe2\x80\xa6");
    EXPECT_TRUE(PdfText::IsShown("? \xc3\xa9 \xe2\x80\x93"));
    EXPECT_FALSE(PdfText::IsShown("\xe6\x97\xa5"));
    EXPECT_EQ(PdfText::Number(0.00012) + PdfText::Number(-0.00001) + PdfText::Number(100.0), "0.00010100");
}

}  // namespace
}  // namespace J4Tool
