// Where sensor and visor stand, and which targets the table is sent.
#include <cmath>

#include "src/j4TableProperties.h"
#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using Kestrelon::DeviceDriver::J4T::j4TableProperties;
using Kestrelon::DeviceDriver::J4T::Communication::j4TableComMotors;
using testing::StartsWith;
namespace PropertyId = Kestrelon::DeviceDriver::J4T::PropertyId;

const std::string Illegal = "IllegalPositionException: ";

/// An arm of 5000 and 4000; the visor stands 500 back and 300 aside.
struct ArmGeometry : testing::Test, Channel {
    ArmGeometry() { SetArea(-20000, 20000, -20000, 20000); }

    void SetArea(int32_t xMin, int32_t xMax, int32_t yMin, int32_t yMax)
    {
        motors->SetLimits(xMin, xMax, yMin, yMax, 1, 400, 5000, 4000, 500, 300);
    }

    std::string Check(int32_t x, int32_t y, bool isVisor = false)
    {
        return Thrown([&] { motors->CheckXYRange(x, y, isVisor); });
    }

    std::string Convert(float& x, float& y, bool visorToSensor)
    {
        return Thrown([&] { visorToSensor ? motors->CalcVisierToSensor(x, y) : motors->CalcSensorToVisier(x, y); });
    }

    Kestrelon::Utilities::Tools::SmartPointer<j4TableComMotors> motors = manager.GetMotors();
};

// Both points of a pose, from its two angles; the conversions have to find one from the other.
TEST_F(ArmGeometry, EveryPoseConvertsBothWays)
{
    const double visorReach = std::hypot(3500.0, 300.0);
    const double visorAngle = std::atan(300.0 / 3500.0);
    for (double shoulder = -1.5; shoulder <= 1.6; shoulder += 0.25) {
        for (double elbow = 0.3; elbow <= 2.9; elbow += 0.2) {
            const auto x = [&](double reach, double angle) {
                return static_cast<float>(5000.0 * std::cos(shoulder) + reach * std::cos(shoulder + angle));
            };
            const auto y = [&](double reach, double angle) {
                return static_cast<float>(5000.0 * std::sin(shoulder) + reach * std::sin(shoulder + angle));
            };
            const float sensor[] = {x(4000.0, elbow), y(4000.0, elbow)};
            const float visor[] = {x(visorReach, elbow - visorAngle), y(visorReach, elbow - visorAngle)};
            for (const bool visorToSensor : {true, false}) {
                const auto& from = visorToSensor ? visor : sensor;
                const auto& to = visorToSensor ? sensor : visor;
                float point[] = {from[0], from[1]};
                EXPECT_EQ(Convert(point[0], point[1], visorToSensor), "");
                EXPECT_NEAR(point[0], to[0], 0.1) << shoulder << " " << elbow;
                EXPECT_NEAR(point[1], to[1], 0.1) << shoulder << " " << elbow;
            }
        }
    }
}

TEST_F(ArmGeometry, TransformsTruncateTowardZero)
{
    const struct {
        int32_t x, y;
        bool visorToSensor;
        int32_t resultX, resultY;
    } cases[] = {{5000, 3000, true, 4661, 3475},     // 4661.95, 3475.10
                 {-804, 2549, true, -999, 1999},     // -999.10, 1999.51
                 {2000, -2500, true, 2094, -1924},   // 2094.50, -1924.61
                 {-3357, 3539, true, -3645, 3032},   // -3645.08, 3032.04
                 {500, -1200, false, 583, -1777},    // 583.59, -1777.07
                 {-3000, 4000, false, -2582, 4406},  // -2582.37, 4406.92
                 // The first arm's direction would be below -3.15 and becomes -3.1415.
                 {-5000, -3000, false, -4682, -3498},  // -4682.55, -3498.92
                 {-7000, -1500, false, -6186, -3306},  // -6186.55, -3306.84
                 // The elbow can't stretch beyond straight: the visor stays on the line. Nor fold beyond 3.1415.
                 {5400, 7200, false, 5107, 6810},  // 8512.83 from the tower
                 {1045, 1071, true, 761, 648}};    // 761.47, 648.20
    for (const auto& test : cases) {
        int32_t x = 0;
        int32_t y = 0;
        motors->TransformPosition(test.x, test.y, x, y, test.visorToSensor);
        EXPECT_EQ(x, test.resultX) << test.x << " " << test.y;
        EXPECT_EQ(y, test.resultY) << test.x << " " << test.y;
    }
}

TEST_F(ArmGeometry, PointsOutOfReachAreNamedAsTheyCameIn)
{
    const struct {
        float x, y;
        bool visorToSensor;
        std::string thrown;
    } cases[] = {{9000.5f, 0.25f, false, Illegal + "Invalid position (9000.5/0.25)."},
                 {8514.0f, 0.0f, true, Illegal + "Invalid position (8514/0)."},
                 {-999.0f, 0.0f, false, Illegal + "Invalid position (-999/0)."},
                 {1234567.0f, 0.0f, true, Illegal + "Invalid position (1.23457e+06/0)."},
                 {8512.0f, 0.0f, true, ""}};
    for (const auto& test : cases) {
        float x = test.x;
        float y = test.y;
        EXPECT_EQ(Convert(x, y, test.visorToSensor), test.thrown);
    }
    // Without an arm there is nothing to compute with.
    motors->SetLimits(0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
    EXPECT_THAT(Check(0, 0), StartsWith(Illegal + "Invalid position ("));
}

TEST_F(ArmGeometry, TheFirstFailedTestDecidesTheWords)
{
    const struct {
        int32_t x, y;
        bool isVisor;
        std::string words;  ///< empty: passes
    } inArea[] = {{-2000, 3000, false, ""},
                  {-2001, 3000, false, "Invalid x range (-2001 != [-2000,6000])."},
                  {6000, 3000, false, ""},
                  {6001, 3000, false, "Invalid x range (6001 != [-2000,6000])."},
                  {0, 7000, false, ""},
                  {0, 7001, false, "Invalid y range (7001 != [-1000,7000])."},
                  {1000, -1000, false, ""},
                  {1000, -1001, false, "Invalid y range (-1001 != [-1000,7000])."},
                  {-2001, 7001, false, "Invalid x range (-2001 != [-2000,6000])."},
                  {6001, 8000, false, "Invalid position (6001/8000)."},  // out of reach before out of the area
                  {9001, 0, true, "Invalid position (9001/0)."},
                  {-804, 2549, true, ""},
                  {-2500, 4000, true, "Invalid x range (-2866 != [-2000,6000])."},  // the numbers are the sensor's
                  {5000, 3000, true, ""},
                  {200, 8000, true, "Invalid y range (8305 != [-1000,7000])."}},
      inReach[] = {{5400, 7200, false, ""},  // stretched, at exactly 9000
                   {5401, 7200, false, "Invalid position (5401/7200)."},
                   // farther by less than the float arithmetic sees; and folded, truncated to below 1000
                   {8239, 3622, false, "Invalid position (8239/3622) arms too short/long."},
                   {1045, 1071, true, "Invalid position (761/648) arms too short/long."},
                   {1150, 500, false, ""},
                   {1151, 500, false, "Invalid position (1151/500) tower side region."},
                   {850, -600, false, ""},
                   {849, -600, false, "Invalid position (849/-600) tower side region."},
                   {849, 600, false, ""},  // the visor is above
                   {1151, 999, false, ""},
                   {4000, 999, false, "Invalid position (4000/999) tower side region."},
                   {4000, 1000, false, ""},  // the sensor is above
                   {4300, 499, true, "Invalid position (4000/999) tower side region."},
                   {1329, 1330, true, ""}};
    const auto expect = [this](const auto& cases) {
        for (const auto& test : cases) {
            EXPECT_EQ(Check(test.x, test.y, test.isVisor), test.words.empty() ? "" : Illegal + test.words)
                << test.x << " " << test.y;
        }
    };
    expect(inReach);
    SetArea(-2000, 6000, -1000, 7000);
    expect(inArea);
}

TEST_F(ArmGeometry, TheSettingSwitchesAllChecksOff)
{
    j4TableProperties settings;
    motors->SetTargetCheck([&] { return settings.GetProperty(PropertyId::CheckRange).AsLong() != 0; });
    EXPECT_NE(Check(30000, 30000), "");
    settings.SetProperty(PropertyId::CheckRange, Property(0));
    EXPECT_EQ(Check(30000, 30000), "");
    EXPECT_EQ(Check(30000, 30000, true), "");
    usb.Expect("m175307530012c", {Reply("!m1"), Reply("$m11")});
    EXPECT_EQ(Thrown([&] { motors->Move(30000, 30000, 300, true, false); }), Illegal + "Position out of range.");
    EXPECT_EQ(Thrown([&] { motors->Move(30000, 30000, 401, true, false); }),
              "ResourceException: Invalid speed (401 != [1,400]).")
        << "the speed is checked all the same";
    settings.SetProperty(PropertyId::CheckRange, Property(1.0f));
    EXPECT_THAT(Check(1000, 2000), StartsWith("OutOfRangeException: ")) << "a setting of the wrong kind";
    motors->SetTargetCheck(nullptr);
    EXPECT_EQ(Check(1000, 2000), "");
}

}  // namespace
}  // namespace J4Test
