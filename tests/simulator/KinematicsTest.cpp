#include <gtest/gtest.h>

#include <cmath>

#include "simulator/table/Machine.h"

namespace J4Bench {
namespace {

TEST(Kinematics, ConvertsBetweenVisorAndSensor)
{
    const Kinematics arm(5000, 4000, 500, 300);
    const auto sensor = arm.VisorToSensor({5000, 3000});
    ASSERT_TRUE(sensor);
    EXPECT_NEAR(sensor->x, 4661.95, 0.01);
    EXPECT_NEAR(sensor->y, 3475.10, 0.01);
    // In one pose the two points stand as far apart as they do on the arm, and convert into one another.
    for (double x = 1500; x <= 6000; x += 250) {
        for (double y = -2000; y <= 5000; y += 250) {
            const auto visor = arm.SensorToVisor({x, y});
            ASSERT_TRUE(visor);
            EXPECT_NEAR(std::hypot(visor->x - x, visor->y - y), std::hypot(500, 300), 1e-6);
            const auto back = arm.VisorToSensor(*visor);
            ASSERT_TRUE(back);
            EXPECT_NEAR(back->x, x, 1e-6);
            EXPECT_NEAR(back->y, y, 1e-6);
        }
    }
    // At its stops the elbow folds or stretches the arm and goes no further.
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

TEST(Kinematics, TheBedAndTheTileCanBeReached)
{
    const Machine machine;
    for (double x = 1500; x <= 6000; x += 50) {
        for (double y = 1500; y <= 5000; y += 50) {
            for (const bool isVisor : {false, true}) {
                EXPECT_TRUE(machine.SensorAt({x, y}, isVisor)) << x << "/" << y << (isVisor ? " visor" : " sensor");
            }
        }
    }
    for (const double offset : {0.0, -5.0}) {
        EXPECT_TRUE(machine.SensorAt({static_cast<double>(machine.tileX), machine.tileY + offset}, false));
    }
}

TEST(Kinematics, TheTowerLeavesACorridor)
{
    const Machine machine;
    const double y = 500;  // both points are beside the tower here
    EXPECT_TRUE(machine.SensorAt({1150, y}, false));
    EXPECT_FALSE(machine.SensorAt({1151, y}, false));
    EXPECT_TRUE(machine.SensorAt({1151, 1000}, false));
    ASSERT_GT(machine.Arm().SensorToVisor({1200, 900})->y, 1000);
    EXPECT_TRUE(machine.SensorAt({1200, 900}, false)) << "the visor is past the tower";
}

}  // namespace
}  // namespace J4Bench
