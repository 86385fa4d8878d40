#include <gtest/gtest.h>

#include <cmath>
#include <tuple>

#include "simulator/table/Machine.h"

namespace J4Bench {
namespace {

TEST(Kinematics, TheElbowHasItsStops)
{
    const Kinematics arm(5000, 4000, 500, 300);
    const auto folded = arm.VisorToSensor({1488, 0});
    ASSERT_TRUE(folded);
    EXPECT_NEAR(std::hypot(folded->x, folded->y), 5000 - 4000, 0.01);
    const auto stretched = arm.SensorToVisor({8995, 0});
    ASSERT_TRUE(stretched);
    EXPECT_NEAR(std::hypot(stretched->x, stretched->y), 5000 + std::hypot(3500, 300), 0.01);

    EXPECT_FALSE(arm.VisorToSensor({8600, 0}));
    EXPECT_FALSE(arm.SensorToVisor({9001, 0}));
    EXPECT_FALSE(arm.SensorToVisor({999, 0}));
    EXPECT_TRUE(arm.SensorToVisor({9000, 0}));
}

TEST(Machine, TheArmMayGoToBedAndTileAndPastTheTower)
{
    const Machine machine;
    for (double x = 1500; x <= 6000; x += 50) {
        for (double y = 1500; y <= 5000; y += 50) {
            for (const bool isVisor : {false, true}) {
                EXPECT_TRUE(machine.SensorAt({x, y}, isVisor)) << x << "/" << y << (isVisor ? " visor" : " sensor");
            }
        }
    }
    ASSERT_GT(machine.Arm().SensorToVisor({1200, 900})->y, 1000) << "the visor is past the tower";
    const std::tuple<double, double, bool> places[] = {{1000, 800, true},  {1000, 795, true},  {1150, 500, true},
                                                       {1151, 500, false}, {1151, 1000, true}, {1200, 900, true}};
    for (const auto& [x, y, isFree] : places) {
        EXPECT_EQ(machine.SensorAt({x, y}, false).has_value(), isFree) << x << "/" << y;
    }
}

}  // namespace
}  // namespace J4Bench
