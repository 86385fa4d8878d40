#include "tools/report/RowTravel.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

namespace J4Tool {
namespace {

RowTravel::Scan ScanOf(double distance, std::optional<double> acceleration, std::optional<double> integrationTime)
{
    RowTravel::Scan scan;
    scan.distance = distance;
    scan.speed = 160.0;
    scan.acceleration = acceleration;
    scan.integrationTime = integrationTime;
    return scan;
}

TEST(RowTravel, PositionsOfTheSamplesAndWhatIsAssumed)
{
    struct Case {
        const char* what;
        RowTravel::Scan scan;
        double rampEnd, duration;
        size_t count;
        std::vector<std::pair<size_t, double>> positions;  // sample and mm
        const char* assumed;
    };
    const char* const acceleration = "Assumed acceleration: 1600 mm/s²";
    const char* const noSamples = "No samples are marked";
    const Case cases[] = {
        // half a ramp is 8 mm; the plateau goes 160 mm a second
        {"trapezoid",
         ScanOf(320.0, 1600.0, 0.01),
         0.1,
         2.1,
         211,
         {{0, 0.0}, {5, 2.0}, {10, 8.0}, {100, 152.0}, {200, 312.0}, {205, 318.0}, {210, 320.0}},
         nullptr},
        {"too short for its speed", ScanOf(4.0, 1600.0, 0.01), 0.05, 0.1, 11, {{5, 2.0}, {10, 4.0}}, nullptr},
        {"acceleration not known", ScanOf(320.0, std::nullopt, 0.01), 0.1, 2.1, 211, {{10, 8.0}}, acceleration},
        {"no samples known", ScanOf(320.0, 1600.0, std::nullopt), 0.1, 2.1, 201, {{0, 0.0}, {100, 160.0}}, noSamples},
        {"a time that can't be", ScanOf(320.0, 1600.0, 1e-9), 0.1, 2.1, 201, {{100, 160.0}}, noSamples},
        {"a sample that outlasts the way", ScanOf(4.0, 1600.0, 0.5), 0.05, 0.1, 201, {{100, 2.0}}, noSamples},
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
        for (const char* note : {acceleration, noSamples}) {
            const bool told = std::any_of(travel.Notes().begin(), travel.Notes().end(),
                                          [&](const std::string& text) { return text.starts_with(note); });
            EXPECT_EQ(told, note == test.assumed) << note;
        }
    }
}

}  // namespace
}  // namespace J4Tool
