#include "tools/report/RowTravel.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace J4Tool {
namespace {

RowTravel::Scan ScanOf(double distance, double speed, std::optional<double> acceleration,
                       std::optional<double> integrationTime)
{
    RowTravel::Scan scan;
    scan.name = "row 1";
    scan.distance = distance;
    scan.speed = speed;
    scan.acceleration = acceleration;
    scan.integrationTime = integrationTime;
    return scan;
}

TEST(RowTravel, PositionsOfTheSamples)
{
    struct Case {
        const char* what;
        RowTravel::Scan scan;
        double rampEnd, duration;
        size_t count;
        std::vector<std::pair<size_t, double>> positions;  // sample and mm
    };
    const Case cases[] = {
        // half a ramp is 8 mm; the plateau goes 160 mm a second
        {"trapezoid",
         ScanOf(320.0, 160.0, 1600.0, 0.01),
         0.1,
         2.1,
         211,
         {{0, 0.0}, {5, 2.0}, {10, 8.0}, {100, 152.0}, {200, 312.0}, {205, 318.0}, {210, 320.0}}},
        {"too short for its speed", ScanOf(4.0, 160.0, 1600.0, 0.01), 0.05, 0.1, 11, {{5, 2.0}, {10, 4.0}}},
        {"acceleration not known", ScanOf(320.0, 160.0, std::nullopt, 0.01), 0.1, 2.1, 211, {{10, 8.0}}},
        {"no samples known", ScanOf(320.0, 160.0, 1600.0, std::nullopt), 0.1, 2.1, 201, {{0, 0.0}, {100, 160.0}}},
        {"an integration time that can't be", ScanOf(320.0, 160.0, 1600.0, 1e-9), 0.1, 2.1, 201, {{100, 160.0}}},
        {"a sample that outlasts the way", ScanOf(4.0, 160.0, 1600.0, 0.5), 0.05, 0.1, 201, {{100, 2.0}}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        const RowTravel travel(test.scan);
        EXPECT_NEAR(travel.RampEnd(), test.rampEnd, 1e-12);
        EXPECT_NEAR(travel.Duration(), test.duration, 1e-12);
        EXPECT_EQ(travel.HasSamples(), travel.Step() == test.scan.integrationTime);
        ASSERT_EQ(travel.Positions().size(), test.count);
        EXPECT_TRUE(std::is_sorted(travel.Positions().begin(), travel.Positions().end()));
        for (const auto& [sample, position] : test.positions) {
            EXPECT_NEAR(travel.Positions()[sample], position, 1e-9) << sample;
        }
    }
}

TEST(RowTravel, TellsWhatIsAssumed)
{
    const auto told = [](const RowTravel& travel, const char* word) {
        return std::any_of(travel.Notes().begin(), travel.Notes().end(),
                           [&](const std::string& note) { return note.find(word) != std::string::npos; });
    };
    const RowTravel known(ScanOf(320.0, 160.0, 1600.0, 0.01));
    const RowTravel unknown(ScanOf(320.0, 160.0, std::nullopt, std::nullopt));
    EXPECT_TRUE(told(known, "computed, not recorded"));
    EXPECT_FALSE(told(known, "Assumed acceleration"));
    EXPECT_TRUE(told(unknown, "Assumed acceleration"));
    EXPECT_TRUE(told(unknown, "No samples are marked"));
}

}  // namespace
}  // namespace J4Tool
