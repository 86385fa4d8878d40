#include "chart/colour/DifferenceSummary.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <numeric>
#include <utility>

namespace J4Chart {
namespace {

constexpr double none = std::numeric_limits<double>::quiet_NaN();

TEST(DifferenceSummary, FiguresAndWorst)
{
    std::vector<double> hundredAndOne;
    for (int i = 0; i <= 100; ++i) {
        hundredAndOne.push_back(100.0 - i);
    }
    struct Case {
        std::vector<double> differences;
        size_t count;
        double mean, percentile95, maximum;
        std::vector<size_t> worst;
    };
    const Case cases[] = {
        {{2.5}, 1, 2.5, 2.5, 2.5, {0}},
        {{1.0, 1.0, 1.0}, 3, 1.0, 1.0, 1.0, {0, 1, 2}},        // equal ones in the order of the file
        {{1.0, 4.0, 2.0}, 3, 7.0 / 3.0, 3.8, 4.0, {1, 2, 0}},  // between the last two
        {{none, 3.0, none, 1.0}, 2, 2.0, 2.9, 3.0, {1, 3}},    // patches without a reference count for nothing
        {hundredAndOne, 101, 50.0, 95.0, 100.0, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(testing::PrintToString(test.differences));
        const DifferenceSummary summary(test.differences);
        EXPECT_EQ(summary.Count(), test.count);
        EXPECT_NEAR(summary.Mean(), test.mean, 1e-12);
        EXPECT_NEAR(summary.Percentile95(), test.percentile95, 1e-12);
        EXPECT_EQ(summary.Maximum(), test.maximum);
        EXPECT_EQ(summary.Worst(), test.worst);
    }
}

TEST(DifferenceSummary, HistogramHoldsEveryDifferenceInRoundClasses)
{
    const std::pair<std::vector<double>, std::vector<size_t>> cases[] = {
        {{0.0, 0.0}, {2, 0, 0, 0, 0}},
        // the last class holds its upper edge, a lower edge belongs to the class above it
        {{0.0, 0.001, 0.003, 0.005}, {1, 1, 0, 1, 1}},
        {{none, 0.0015}, {0, 1, 0, 0, 0}},
    };
    for (const auto& [differences, bins] : cases) {
        const DifferenceSummary summary(differences);
        EXPECT_DOUBLE_EQ(summary.BinWidth(), 0.001);
        EXPECT_EQ(summary.Bins(), bins);
    }

    // Whatever the largest difference is: a handful to about thirty classes, which reach just up to it.
    for (const double maximum : {0.07, 0.3, 0.31, 0.999, 1.0, 3.0, 12.34, 100.0}) {
        SCOPED_TRACE(maximum);
        const DifferenceSummary summary({0.0, maximum / 3.0, maximum, maximum / 2.0});
        const double reach = summary.BinWidth() * static_cast<double>(summary.Bins().size());
        EXPECT_EQ(std::accumulate(summary.Bins().begin(), summary.Bins().end(), size_t{0}), 4u);
        EXPECT_EQ(summary.Bins().back(), 1u);
        EXPECT_GE(reach, maximum * (1.0 - 1e-9));
        EXPECT_LT(reach, maximum + summary.BinWidth());
        EXPECT_GE(summary.Bins().size(), 12u);
        EXPECT_LE(summary.Bins().size(), 30u);
    }
}

}  // namespace
}  // namespace J4Chart
