#include <gtest/gtest.h>

#include "src/Position.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T;

// Expected values are those of one multiplication and one division in doubles; most differ in the last bit
// from what a factor of 10 or 254 would give.
TEST(Position, ConvertsWithoutAnyRoundingOfItsOwn)
{
    const struct {
        double value;
        PositionUnit from;
        double fromFactor;
        PositionUnit to;
        double toFactor;
        double expected;
    } cases[] = {
        {1.0, PositionUnitInch, 0.0, PositionUnitTenthMillimetre, 0.0, 253.99999999999997},
        {0.3, PositionUnitMillimetre, 0.0, PositionUnitTenthMillimetre, 0.0, 2.9999999999999996},
        {0.7, PositionUnitMillimetre, 0.0, PositionUnitTenthMillimetre, 0.0, 6.999999999999999},
        {3.3, PositionUnitInch, 0.0, PositionUnitTenthMillimetre, 0.0, 838.1999999999999},
        {100.1, PositionUnitTenthMillimetre, 0.0, PositionUnitInch, 0.0, 0.3940944881889764},
        {3.0, PositionUnitTenthMillimetre, 0.0, PositionUnitMillimetre, 0.0, 0.30000000000000004},
        {-2.0, PositionUnitUserDefined, 2.5, PositionUnitMillimetre, 0.0, -5.0},
        {5.0, PositionUnitMillimetre, 0.0, PositionUnitUserDefined, 2.5, 2.0},
        {8.0, PositionUnitUserDefined, 0.0, PositionUnitMillimetre, 0.0, 0.0},
        {0.1, PositionUnitMillimetre, 7.0, PositionUnitMillimetre, 9.0, 0.1},
    };
    for (const auto& test : cases) {
        const Position position{0.0, 0.0, test.from, test.fromFactor};
        EXPECT_EQ(position.Convert(test.value, test.to, test.toFactor), test.expected)
            << test.value << " from " << test.from << " to " << test.to;
    }
}

TEST(Position, RelabelsOrConverts)
{
    Position position{25.4, 50.8, PositionUnitMillimetre, 0.0};
    position.ConvertTo(PositionUnitInch, 4.0);
    EXPECT_EQ(position.x, 1.0);
    EXPECT_EQ(position.y, 2.0);
    EXPECT_EQ(position.unit, PositionUnitInch);
    EXPECT_EQ(position.unitFactor, 4.0);
    position.SetUnit(PositionUnitUserDefined, 3.0);
    EXPECT_EQ(position.x, 1.0);
    EXPECT_EQ(position.unit, PositionUnitUserDefined);
    EXPECT_EQ(position.unitFactor, 3.0);
}

TEST(Position, FailuresChangeNothing)
{
    const PositionUnit unknown = static_cast<PositionUnit>(7);
    Position position{1.0, 2.0, PositionUnitInch, 5.0};
    const std::string noFactor = "CalculationProblemException: Unit factor is 0.0!";
    EXPECT_EQ(Thrown([&] { position.SetUnit(PositionUnitUserDefined, 0.0); }), noFactor);
    EXPECT_EQ(Thrown([&] { position.ConvertTo(PositionUnitUserDefined, 0.0); }), noFactor);
    EXPECT_EQ(Thrown([&] { position.Convert(1.0, PositionUnitUserDefined, 0.0); }), noFactor);
    EXPECT_EQ(Thrown([&] { position.ConvertTo(unknown, 1.0); }), "CalculationProblemException: Unit not defined (2)")
        << "the object's own unit";
    EXPECT_EQ(position.x, 1.0);
    EXPECT_EQ(position.y, 2.0);
    EXPECT_EQ(position.unit, PositionUnitInch);
    EXPECT_EQ(position.unitFactor, 5.0);
    const Position foreign{1.0, 2.0, unknown, 0.0};
    EXPECT_EQ(Thrown([&] { foreign.Convert(1.0, PositionUnitMillimetre, 0.0); }),
              "CalculationProblemException: Unit not defined (7)");
}

TEST(Position, SumsKeepTheUnitOfTheLeft)
{
    const struct {
        Position left;
        Position right;
        double x;
        double y;
    } cases[] = {
        {{10, 20, PositionUnitTenthMillimetre, 0},
         {1, 2, PositionUnitInch, 0},
         10 + 253.99999999999997,
         20 + 507.99999999999994},
        {{0.3, 1, PositionUnitTenthMillimetre, 0}, {0.3, 1, PositionUnitTenthMillimetre, 9}, 0.6, 2},
        {{1, 1, PositionUnitUserDefined, 2}, {3, 5, PositionUnitUserDefined, 2}, 4, 6},
        {{1, 1, PositionUnitUserDefined, 2}, {3, 5, PositionUnitUserDefined, 4}, 7, 11},
    };
    for (const auto& test : cases) {
        Position sum = test.left;
        sum += test.right;
        EXPECT_EQ(sum.x, test.x);
        EXPECT_EQ(sum.y, test.y);
        EXPECT_EQ(sum.unit, test.left.unit);
        EXPECT_EQ(sum.unitFactor, test.left.unitFactor);
    }
    Position withoutFactor{1, 1, PositionUnitUserDefined, 0};
    EXPECT_EQ(Thrown([&] {
                  withoutFactor += Position{1, 1, PositionUnitInch, 0};
              }),
              "CalculationProblemException: Unit factor is 0.0!");
}

}  // namespace
}  // namespace J4Test
