#include "simulator/world/Bench.h"

#include <gtest/gtest.h>

#include <chrono>

#include "simulator/table/TableUnit.h"

namespace J4Bench {
namespace {

TEST(Bench, ResetMakesAFreshWorldInWhichTimeGoesOn)
{
    Bench bench;
    const auto old = bench.TableAt(0);
    bench.Clock().Advance(5000);
    bench.GetFaults().tableSilent = true;
    bench.GetJournal().Enable(true);
    bench.GetJournal().Add("something");
    bench.SetTableCount(3);
    bench.SetInstrumentCount(0);
    bench.GetNoise().SetDeviation(0.1);
    bench.GetChart().SetOffset({{10, 20}, 3});
    bench.Reset();
    EXPECT_EQ(bench.TableCount(), 1u);
    EXPECT_NE(bench.TableAt(0), old);
    EXPECT_FALSE(bench.GetFaults().tableSilent);
    EXPECT_FALSE(bench.GetJournal().Enabled());
    EXPECT_EQ(bench.GetJournal().Take(), "");
    EXPECT_EQ(bench.GetNoise().Deviation(), 0.0);
    EXPECT_EQ(bench.GetChart().Offset().degrees, 0.0);
    EXPECT_EQ(bench.Clock().Now(), 5000);
    EXPECT_NE(bench.CarriageOf(bench.SeatedInstrument(0)), nullptr) << "an instrument sits in the table";
}

TEST(Bench, TimeScaleIsARealPace)
{
    BenchClock clock;
    clock.SetTimeScale(0.5);
    const auto before = std::chrono::steady_clock::now();
    clock.Advance(40000);
    clock.AdvanceTo(10);
    EXPECT_GE(std::chrono::steady_clock::now() - before, std::chrono::milliseconds(19));
    EXPECT_EQ(clock.Now(), 40000);
}

}  // namespace
}  // namespace J4Bench
