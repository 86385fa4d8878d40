#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "tests/simulator/TableLine.h"

namespace J4Bench {
namespace {

uint32_t HexAt(const std::string& text, size_t offset, size_t length)
{
    return FromHex(text.substr(offset, length)).value();
}

struct Ramps {
    double up;
    double down;
    double speed;
};

Ramps ReadRamps(TableLine& line)
{
    const std::string reply = line.Ask("a3");
    return {HexAt(reply, 4, 8) / 1000.0, HexAt(reply, 12, 8) / 1000.0, HexAt(reply, 20, 4) * 10.0};
}

TEST(TableMotion, InitializationTakesTimeAndMovesNothing)
{
    TableLine line;
    EXPECT_EQ(line.Ask("m007d007d0012c"), "!m0 $m07") << "motors are off";
    EXPECT_EQ(line.Ask("i1"), "!i1 $i17");
    EXPECT_EQ(line.Ask("i0"), "!i0");
    EXPECT_EQ(line.Ask("a0"), "$a00010712");
    EXPECT_EQ(line.Replies(2000000), "$i00");
    EXPECT_EQ(line.Ask("a0"), "$a00020012");
    EXPECT_EQ(line.Ask("p0"), "$p0007d007d0");
}

// The host reckons with nothing but the ramp data where a sample was taken.
TEST(TableMotion, RampDataTellWhereTheArmIs)
{
    const std::tuple<int, int, uint32_t> moves[] = {
        {6000, 2000, 160}, {6000, 5000, 400}, {6000, 4990, 100}, {1500, 1500, 300},
        {1510, 1510, 400}, {1515, 1510, 40},  {1615, 1510, 400}, {1616, 1510, 1},
    };
    TableLine line;
    line.Start();
    for (const auto& [x, y, speed] : moves) {
        SCOPED_TRACE(TableLine::MoveTo(x, y, speed));
        const Point start = line.table.ApertureAt(line.clock.Now());
        const double distance = std::hypot(x - start.x, y - start.y);
        ASSERT_EQ(line.Ask(TableLine::MoveTo(x, y, speed)), "!m0");
        const Ramps ramps = ReadRamps(line);
        const Motion& motion = line.table.LastMotion();
        // Half a millisecond of way, and half a millimetre per second over the whole time.
        const double rounding = ramps.speed * 0.001 + (speed * 10.0 > ramps.speed ? 5.0 * ramps.down : 0.0) + 1e-9;
        EXPECT_LE(ramps.speed, speed * 10.0);
        for (double t = 0.0; t < ramps.up + ramps.down; t += 0.003) {
            const double reckoned = t <= ramps.up ? t * t * ramps.speed / ramps.up * 0.5
                                    : t <= ramps.down
                                        ? (t - ramps.up * 0.5) * ramps.speed
                                        : t * ramps.speed - ramps.speed * ramps.up * 0.5 -
                                              (t - ramps.down) * (t - ramps.down) * ramps.speed / ramps.up * 0.5;
            const Point place = line.table.ApertureAt(motion.Begin() + static_cast<int64_t>(t * 1e6));
            ASSERT_NEAR(std::hypot(place.x - start.x, place.y - start.y), reckoned, rounding) << t;
            const double beside = (place.x - start.x) * (y - start.y) - (place.y - start.y) * (x - start.x);
            ASSERT_NEAR(beside, 0.0, 1e-6 * distance * distance + 1e-9) << "not on the straight line";
        }
        EXPECT_NEAR(1e-6 * static_cast<double>(motion.End() - motion.Begin()), ramps.up + ramps.down, 0.0011);
        EXPECT_EQ(line.Replies(TableLine::Long), "$m00");
        const Point end = line.table.ApertureAt(line.clock.Now());
        EXPECT_EQ(end.x, x);
        EXPECT_EQ(end.y, y);
    }
}

TEST(TableMotion, MotionOfNoLengthIsOverAtOnce)
{
    TableLine line;
    line.Start();
    EXPECT_EQ(line.Ask(TableLine::MoveTo(2000, 2000, 300)), "!m0 $m00");
    EXPECT_EQ(line.Ask("a3"),
              "$a30"
              "00000000"
              "00000000"
              "0000");
}

TEST(TableMotion, FinalReplyComesWhenTheArmStops)
{
    TableLine line;
    line.Start();
    EXPECT_EQ(line.Ask(TableLine::MoveTo(4000, 2000, 100)), "!m0");
    const int64_t left = line.table.LastMotion().End() - line.clock.Now();
    EXPECT_NEAR(static_cast<double>(left), 2.0e6 + 62500, 1000);
    EXPECT_EQ(line.Replies(left - 1), "");
    EXPECT_EQ(line.Replies(1), "$m00");
}

TEST(TableMotion, ScanWaitsForItsDelay)
{
    TableLine line;
    line.Start();
    line.Ask("d100c8");
    EXPECT_EQ(line.Ask(TableLine::MoveTo(4000, 2000, 160, '2')), "!m2");
    EXPECT_EQ(line.table.LastMotion().Begin(), line.clock.Now() - TableLine::Shortly + 500 + 200000);
    line.Replies(190000);
    EXPECT_EQ(line.Ask("p0"), "$p0007d007d0") << "still at the start";
    EXPECT_EQ(line.Replies(TableLine::Long), "$m20");
    EXPECT_EQ(line.Ask(TableLine::MoveTo(2000, 2000, 160, '0')), "!m0");
    EXPECT_NE(line.table.ApertureAt(line.clock.Now() + 50000).x, 4000.0) << "only a scan is delayed";
}

TEST(TableMotion, ReadsAreAnsweredAndMotionsAreBusyMeanwhile)
{
    TableLine line;
    line.Start();
    line.Ask(TableLine::MoveTo(6000, 2000, 100));
    EXPECT_EQ(line.Ask("a0"), "$a00030012");
    EXPECT_EQ(line.Ask(TableLine::MoveTo(2000, 2000, 100)), "#m0");
    EXPECT_EQ(line.Ask("i0"), "#i0");
    EXPECT_EQ(line.Ask("i1"), "#i1");
    line.Ask("uA317598");
    EXPECT_EQ(line.Ask("u077"), "$u06");
    const double x = line.table.ApertureAt(line.clock.Now()).x;
    EXPECT_NEAR(HexAt(line.Ask("p0"), 4, 4), x, 2.0);
    EXPECT_EQ(line.Replies(TableLine::Long), "$m00");
}

TEST(TableMotion, HoldFollowsAMotionUnlessItIsReleased)
{
    TableLine line;
    line.Start();
    const auto mode = [&] { return line.Ask("a0").substr(5, 1); };
    EXPECT_EQ(mode(), "2");
    line.Ask("s1");
    EXPECT_EQ(mode(), "4");
    line.Ask("s0");
    EXPECT_EQ(mode(), "2");
    line.Ask(TableLine::MoveTo(3000, 2000, 300), TableLine::Long);
    EXPECT_EQ(mode(), "4") << "the motors hold the arm where they have brought it";
    line.Ask(TableLine::MoveTo(2000, 2000, 300));
    EXPECT_EQ(line.Ask("s0"), "$s00");
    line.Replies(TableLine::Long);
    EXPECT_EQ(mode(), "2") << "released during the motion";
}

TEST(TableMotion, RefusesTargetsAndSpeeds)
{
    const struct {
        int32_t x, y;
        uint32_t speed;
        char subCommand;
        const char* final;
    } moves[] = {
        {2010, 2000, 1, '0', "$m00"},    {3100, 3000, 400, '1', "$m10"},  {3000, 3000, 0, '0', "$m02"},
        {3000, 3000, 401, '0', "$m02"},  {8001, 1000, 300, '0', "$m01"},  {8000, 1000, 300, '0', "$m00"},
        {-1001, 3000, 300, '0', "$m01"}, {-1000, 3000, 300, '0', "$m00"}, {3000, -1001, 300, '0', "$m01"},
        {7000, 7000, 300, '0', "$m01"},  {1000, -1000, 300, '0', "$m00"}, {500, 500, 300, '0', "$m01"},
        {7000, 6000, 300, '1', "$m11"},  {6000, 5000, 300, '1', "$m10"},  {-700, -999, 300, '0', "$m01"},
        {1000, 800, 300, '0', "$m00"},   {1150, 800, 300, '0', "$m00"},   {-32000, -32000, 300, '0', "$m01"},
    };
    TableLine line;
    line.Start();
    for (const auto& move : moves) {
        const std::string request = TableLine::MoveTo(move.x, move.y, move.speed, move.subCommand);
        const std::string replies = std::string("!m") + move.subCommand + " " + move.final;
        EXPECT_EQ(line.Ask(request, TableLine::Long), replies) << request;
        const bool isDone = std::string(move.final).back() == '0';
        if (isDone && move.subCommand == '0') {
            EXPECT_EQ(line.Ask("p0"),
                      "$p00" + ToHex(static_cast<uint32_t>(move.x), 4) + ToHex(static_cast<uint32_t>(move.y), 4));
        }
    }
}

TEST(TableMotion, RefusedScanIsToldWhenItShouldHaveBegun)
{
    TableLine line;
    line.Start();
    line.Ask("d100c8");
    EXPECT_EQ(line.Ask(TableLine::MoveTo(9000, 9000, 160, '2')), "!m2");
    EXPECT_EQ(line.Ask("a3"),
              "$a30"
              "00000000"
              "00000000"
              "0000");
    EXPECT_EQ(line.Replies(150000), "");
    EXPECT_EQ(line.Replies(100000), "$m21");
}

TEST(TableMotion, VisorTargetBringsTheVisorThere)
{
    TableLine line;
    line.Start();
    line.Ask(TableLine::MoveTo(5000, 3000, 300, '1'), TableLine::Long);
    const std::string visor = line.Ask("p1");
    EXPECT_EQ(HexAt(visor, 4, 4), 5000u);
    EXPECT_EQ(HexAt(visor, 8, 4), 3000u);
    const std::string sensor = line.Ask("p0");
    EXPECT_EQ(HexAt(sensor, 4, 4), 4662u);
    EXPECT_EQ(HexAt(sensor, 8, 4), 3475u);
}

TEST(TableMotion, HomeIsTheTileAndCountersCount)
{
    TableLine line;
    line.Start();
    EXPECT_EQ(line.Ask("i1", TableLine::Long), "!i1 $i10");
    EXPECT_EQ(line.table.ApertureAt(line.clock.Now()).x, line.table.TilePosition().x);
    EXPECT_EQ(line.table.ApertureAt(line.clock.Now()).y, line.table.TilePosition().y);
    line.Ask(TableLine::MoveTo(1000, 3800, 300), TableLine::Long);
    line.Ask(TableLine::MoveTo(1000, 4800, 300), TableLine::Long);
    const std::string metrics = line.Ask("a2");
    EXPECT_EQ(HexAt(metrics, 4 + 32, 8), 1u);
    EXPECT_EQ(HexAt(metrics, 4 + 40, 8), 2u);
    EXPECT_EQ(HexAt(metrics, 4 + 48, 8), 400u + 156u) << "millimetres";
    EXPECT_EQ(HexAt(metrics, 4, 8), 413u);
    EXPECT_EQ(HexAt(metrics, 4 + 8, 8), 9136u);
}

TEST(TableMotion, AnObstacleAndAResetStopTheArmOnItsWay)
{
    TableLine line;
    line.Start();
    line.faults.positionNotReached = true;
    EXPECT_EQ(line.Ask(TableLine::MoveTo(6000, 2000, 300), TableLine::Long), "!m0 $m04");
    EXPECT_NEAR(line.table.ApertureAt(line.clock.Now()).x, 4000.0, 1.0);
    line.faults = {};
    line.Ask(TableLine::MoveTo(6000, 2000, 300), 400000);
    const Point there = line.table.ApertureAt(line.clock.Now());
    EXPECT_EQ(line.Ask("r", TableLine::Long), "$r0") << "the motion's final reply is gone";
    EXPECT_NEAR(line.table.ApertureAt(line.clock.Now()).x, there.x, 3.0);
    EXPECT_LT(there.x, 5900.0);
}

}  // namespace
}  // namespace J4Bench
