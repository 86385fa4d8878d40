#include <gtest/gtest.h>

#include <cmath>

#include "src/j4TableProperties.h"
#include "tests/support/Thrown.h"
#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using Kestrelon::DeviceDriver::J4T::j4TableProperties;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableComMotors;
namespace PropertyId = Kestrelon::DeviceDriver::J4T::PropertyId;

/// An arm of 5000 and 4000; the visor stands 500 back and 300 aside.
struct Arm : Channel {
    static constexpr int32_t Wide = 20000;

    Arm() { SetArea(-Wide, Wide, -Wide, Wide); }

    void SetArea(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax)
    {
        motors->SetLimits(xMin, xMax, yMin, yMax, 1, 400, 5000, 4000, 500, 300);
    }

    std::string Check(int32_t x, int32_t y, bool isVisor = false)
    {
        return Thrown([&] { motors->CheckXYRange(x, y, isVisor); });
    }

    Kestrelon::Utilities::Tools::SmartPointer<j4TableComMotors> motors = manager.GetMotors();
};

TEST(ArmGeometry, AKnownPoseConvertsBothWays)
{
    Arm arm;
    float x = 5000.0f;
    float y = 3000.0f;
    arm.motors->CalcVisierToSensor(x, y);
    EXPECT_NEAR(x, 4661.95, 0.05);
    EXPECT_NEAR(y, 3475.10, 0.05);
    arm.motors->CalcSensorToVisier(x, y);
    EXPECT_NEAR(x, 5000.0, 0.05);
    EXPECT_NEAR(y, 3000.0, 0.05);
}

// Both points of a pose, from its two angles; the conversions have to find one from the other.
TEST(ArmGeometry, EveryPoseConvertsBothWays)
{
    const double visorReach = std::hypot(3500.0, 300.0);
    const double visorAngle = std::atan(300.0 / 3500.0);
    Arm arm;
    for (double shoulder = -1.5; shoulder <= 1.6; shoulder += 0.25) {
        for (double elbow = 0.3; elbow <= 2.9; elbow += 0.2) {
            const auto point = [&](double reach, double angle, float& x, float& y) {
                x = static_cast<float>(5000.0 * std::cos(shoulder) + reach * std::cos(shoulder + angle));
                y = static_cast<float>(5000.0 * std::sin(shoulder) + reach * std::sin(shoulder + angle));
            };
            float sensorX, sensorY, visorX, visorY;
            point(4000.0, elbow, sensorX, sensorY);
            point(visorReach, elbow - visorAngle, visorX, visorY);
            float x = visorX;
            float y = visorY;
            arm.motors->CalcVisierToSensor(x, y);
            EXPECT_NEAR(x, sensorX, 0.1) << shoulder << " " << elbow;
            EXPECT_NEAR(y, sensorY, 0.1) << shoulder << " " << elbow;
            x = sensorX;
            y = sensorY;
            arm.motors->CalcSensorToVisier(x, y);
            EXPECT_NEAR(x, visorX, 0.1) << shoulder << " " << elbow;
            EXPECT_NEAR(y, visorY, 0.1) << shoulder << " " << elbow;
        }
    }
}

TEST(ArmGeometry, TransformsTruncateTowardZero)
{
    const struct {
        int32_t x, y;
        bool visorToSensor;
        int32_t resultX, resultY;
    } cases[] = {
        {5000, 3000, true, 4661, 3475},     // 4661.95, 3475.10
        {-804, 2549, true, -999, 1999},     // -999.10, 1999.51
        {2000, -2500, true, 2094, -1924},   // 2094.50, -1924.61
        {-3357, 3539, true, -3645, 3032},   // -3645.08, 3032.04
        {500, -1200, false, 583, -1777},    // 583.59, -1777.07
        {-3000, 4000, false, -2582, 4406},  // -2582.37, 4406.92
        // The first arm's direction would be below -3.15 and becomes -3.1415.
        {-5000, -3000, false, -4682, -3498},  // -4682.55, -3498.92
        {-7000, -1500, false, -6186, -3306},  // -6186.55, -3306.84
        // The elbow can't stretch beyond straight: the visor stays on the line.
        {5400, 7200, false, 5107, 6810},  // 8512.83 from the tower
        // Nor fold beyond 3.1415.
        {1045, 1071, true, 761, 648},  // 761.47, 648.20
    };
    Arm arm;
    for (const auto& test : cases) {
        int32_t x = 0;
        int32_t y = 0;
        arm.motors->TransformPosition(test.x, test.y, x, y, test.visorToSensor);
        EXPECT_EQ(x, test.resultX) << test.x << " " << test.y;
        EXPECT_EQ(y, test.resultY) << test.x << " " << test.y;
    }
}

TEST(ArmGeometry, PointsOutOfReachAreNamedAsTheyCameIn)
{
    Arm arm;
    const auto convert = [&](float x, float y, bool visorToSensor) {
        return Thrown(
            [&] { visorToSensor ? arm.motors->CalcVisierToSensor(x, y) : arm.motors->CalcSensorToVisier(x, y); });
    };
    EXPECT_EQ(convert(9000.5f, 0.25f, false), "IllegalPositionException: Invalid position (9000.5/0.25).");
    EXPECT_EQ(convert(8514.0f, 0.0f, true), "IllegalPositionException: Invalid position (8514/0).");
    EXPECT_EQ(convert(-999.0f, 0.0f, false), "IllegalPositionException: Invalid position (-999/0).");
    EXPECT_EQ(convert(1234567.0f, 0.0f, true), "IllegalPositionException: Invalid position (1.23457e+06/0).");
    EXPECT_EQ(convert(8512.0f, 0.0f, true), "");
    EXPECT_EQ(arm.Check(9001, 0, true), "IllegalPositionException: Invalid position (9001/0).");

    // Without an arm there is nothing to compute with.
    Arm none;
    none.motors->SetLimits(0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_EQ(none.Check(0, 0).rfind("IllegalPositionException: Invalid position (", 0), 0u);
}

TEST(ArmGeometry, TheFirstFailedTestDecidesTheWords)
{
    const struct {
        int32_t x, y;
        bool isVisor;
        const char* thrown;
    } cases[] = {
        {-2000, 3000, false, ""},
        {-2001, 3000, false, "Invalid x range (-2001 != [-2000,6000])."},
        {6000, 3000, false, ""},
        {6001, 3000, false, "Invalid x range (6001 != [-2000,6000])."},
        {0, 7000, false, ""},
        {0, 7001, false, "Invalid y range (7001 != [-1000,7000])."},
        {1000, -1000, false, ""},
        {1000, -1001, false, "Invalid y range (-1001 != [-1000,7000])."},
        {-2001, 7001, false, "Invalid x range (-2001 != [-2000,6000])."},
        {6001, 8000, false, "Invalid position (6001/8000)."},  // out of reach before out of the area
        {-804, 2549, true, ""},
        {-2500, 4000, true, "Invalid x range (-2866 != [-2000,6000])."},  // the numbers are the sensor's
        {5000, 3000, true, ""},
        {200, 8000, true, "Invalid y range (8305 != [-1000,7000])."},
    };
    Arm arm;
    arm.SetArea(-2000, 6000, -1000, 7000);
    for (const auto& test : cases) {
        const std::string words = test.thrown;
        EXPECT_EQ(arm.Check(test.x, test.y, test.isVisor), words.empty() ? "" : "IllegalPositionException: " + words)
            << test.x << " " << test.y;
    }
}

TEST(ArmGeometry, BordersOfReachAndOfTheTowersCorridor)
{
    const struct {
        int32_t x, y;
        bool isVisor;
        const char* words;  ///< empty: passes
    } cases[] = {
        {5400, 7200, false, ""},  // stretched, at exactly 9000
        {5401, 7200, false, "."},
        {8239, 3622, false, " arms too short/long."},  // farther by less than the float arithmetic sees
        {1045, 1071, true, " arms too short/long."},   // folded, truncated to below 1000
        {1150, 500, false, ""},
        {1151, 500, false, " tower side region."},
        {850, -600, false, ""},
        {849, -600, false, " tower side region."},
        {849, 600, false, ""},  // the visor is above
        {1151, 999, false, ""},
        {4000, 999, false, " tower side region."},
        {4000, 1000, false, ""},  // the sensor is above
        {4300, 499, true, " tower side region."},
        {1329, 1330, true, ""},
    };
    Arm arm;
    for (const auto& test : cases) {
        int32_t x = test.x;
        int32_t y = test.y;
        if (test.isVisor) {
            arm.motors->TransformPosition(test.x, test.y, x, y, true);
        }
        const std::string words = test.words;
        EXPECT_EQ(arm.Check(test.x, test.y, test.isVisor),
                  words.empty() ? ""
                                : "IllegalPositionException: Invalid position (" + std::to_string(x) + "/" +
                                      std::to_string(y) + ")" + words)
            << test.x << " " << test.y;
    }
}

TEST(ArmGeometry, TheSettingSwitchesAllChecksOff)
{
    Arm arm;
    j4TableProperties settings;
    arm.motors->SetTargetCheck([&] { return settings.GetProperty(PropertyId::CheckRange).AsLong() != 0; });
    EXPECT_NE(arm.Check(30000, 30000), "");
    settings.SetProperty(PropertyId::CheckRange, Property(0));
    EXPECT_EQ(arm.Check(30000, 30000), "");
    EXPECT_EQ(arm.Check(30000, 30000, true), "");
    arm.usb.Expect("m175307530012c", {Reply("!m1"), Reply("$m11")});
    EXPECT_EQ(Thrown([&] { arm.motors->Move(30000, 30000, 300, true, false); }),
              "IllegalPositionException: Position out of range.");
    EXPECT_EQ(Thrown([&] { arm.motors->Move(30000, 30000, 401, true, false); }),
              "ResourceException: Invalid speed (401 != [1,400]).")
        << "the speed is checked all the same";
    settings.SetProperty(PropertyId::CheckRange, Property(1.0f));
    EXPECT_EQ(arm.Check(1000, 2000).rfind("OutOfRangeException: ", 0), 0u) << "a setting of the wrong kind";
    arm.motors->SetTargetCheck(nullptr);
    EXPECT_EQ(arm.Check(1000, 2000), "");
}

}  // namespace
}  // namespace J4Test
