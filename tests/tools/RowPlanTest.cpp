#include "tools/RowPlan.h"

#include <gtest/gtest.h>

#include <numeric>

#include "tests/tools/LayoutText.h"

namespace J4Tool {
namespace {

/// For instance "1> 2< 3>".
std::string Order(const RowPlan& plan)
{
    std::string order;
    for (const RowPlan::Pass& pass : plan.Passes()) {
        order += (order.empty() ? "" : " ") + std::to_string(pass.row + 1) + (pass.reversed ? "<" : ">");
    }
    return order;
}

std::vector<size_t> AllRows(const ChartLayout& layout)
{
    std::vector<size_t> rows(layout.Rows().size());
    std::iota(rows.begin(), rows.end(), size_t{0});
    return rows;
}

TEST(RowPlan, TravelsLeast)
{
    const ChartLayout layout = GridLayout(4, 6);
    struct Case {
        Point home;
        bool bothWays;
        std::vector<size_t> rows;
        const char* order;
    };
    const Case cases[] = {
        {{100, 80}, true, AllRows(layout), "1> 2< 3> 4<"},
        {{100, 400}, true, AllRows(layout), "4> 3< 2> 1<"},
        {{600, 400}, true, AllRows(layout), "4< 3> 2< 1>"},
        {{100, 80}, false, AllRows(layout), "1> 2> 3> 4>"},
        {{100, 212}, true, AllRows(layout), "1> 2< 3> 4<"},  // nearest to row 2, from where row 1 would cost more
        {{100, 80}, true, {1, 3}, "2> 4<"},
        {{100, 80}, true, {}, ""},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(Order(RowPlan(layout, 8.0, test.home, test.bothWays, test.rows)), test.order)
            << test.home.x << "/" << test.home.y;
    }
}

TEST(RowPlan, PassesBeginAndEndOnPaper)
{
    ChartLayout layout = GridLayout(2, 3);
    const RowPlan plan(layout, 8.0, {100, 80}, true, {0});
    EXPECT_NEAR(plan.Passes()[0].start.x, 200 - 5 - 8, 1e-9);
    EXPECT_NEAR(plan.Passes()[0].end.x, 224 + 5 + 8, 1e-9);
    EXPECT_NEAR(plan.Passes()[0].start.y, 200, 1e-9);

    layout.PlaceCorners({{{300, 200}, {300, 224}, {290, 200}}});
    const RowPlan turned(layout, 8.0, {300, 80}, true, {0});
    EXPECT_NEAR(turned.Passes()[0].start.y, 200 - 5 - 8, 1e-9);
    EXPECT_NEAR(turned.Passes()[0].end.x, 300, 1e-9);
}

TEST(RowPlan, ManyRowsTakeMoments)
{
    std::string rows;
    for (int row = 0; row < 500; ++row) {
        rows += "p 200 " + std::to_string(row) + " 10 0.9\nq 210 " + std::to_string(row) + " 10 0.9\n";
    }
    const ChartLayout layout = LayoutOf(CgatsText("SAMPLE_ID X Y WIDTH HEIGHT", rows));
    const RowPlan plan(layout, 8.0, {200, 0}, true, AllRows(layout));
    ASSERT_EQ(plan.Passes().size(), 500u);
    EXPECT_LT(plan.Travel(), 500 * (36.0 + 1.1) + 20.0);
}

}  // namespace
}  // namespace J4Tool
