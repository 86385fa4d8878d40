// Positions with their units, and typed values in their stores.
#include <functional>

#include "Generic/Configuration/Properties.h"
#include "src/Position.h"
#include "src/j4TableProperties.h"
#include "tests/unit/UnitTest.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Properties;
using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using namespace Kestrelon::DeviceDriver::J4T;
using Floats = Property::FloatVector;
using Longs = Property::LongVector;
using testing::StartsWith;

constexpr PositionUnit Millimetre = PositionUnitMillimetre;
constexpr PositionUnit Tenth = PositionUnitTenthMillimetre;
constexpr PositionUnit Inch = PositionUnitInch;
constexpr PositionUnit User = PositionUnitUserDefined;
constexpr PositionUnit UnknownUnit = static_cast<PositionUnit>(7);

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
    } cases[] = {{1.0, Inch, 0.0, Tenth, 0.0, 253.99999999999997},
                 {0.3, Millimetre, 0.0, Tenth, 0.0, 2.9999999999999996},
                 {3.3, Inch, 0.0, Tenth, 0.0, 838.1999999999999},
                 {100.1, Tenth, 0.0, Inch, 0.0, 0.3940944881889764},
                 {3.0, Tenth, 0.0, Millimetre, 0.0, 0.30000000000000004},
                 {-2.0, User, 2.5, Millimetre, 0.0, -5.0},
                 {5.0, Millimetre, 0.0, User, 2.5, 2.0},
                 {8.0, User, 0.0, Millimetre, 0.0, 0.0},
                 {0.1, Millimetre, 7.0, Millimetre, 9.0, 0.1}};
    for (const auto& test : cases) {
        Position position{test.value, -test.value, test.from, test.fromFactor};
        EXPECT_EQ(position.Convert(test.value, test.to, test.toFactor), test.expected);
        position.ConvertTo(test.to, test.toFactor);
        EXPECT_EQ(position.x, test.expected) << test.value << " from " << test.from << " to " << test.to;
        EXPECT_EQ(position.y, -test.expected);
        EXPECT_EQ(position.unit, test.to);
        EXPECT_EQ(position.unitFactor, test.toFactor);
    }
}

TEST(Position, FailuresChangeNothing)
{
    Position position{1.0, 2.0, Inch, 5.0};
    const Position foreign{1.0, 2.0, UnknownUnit, 0.0};
    const std::string noFactor = "CalculationProblemException: Unit factor is 0.0!";
    EXPECT_EQ(Thrown([&] { position.SetUnit(User, 0.0); }), noFactor);
    EXPECT_EQ(Thrown([&] { position.ConvertTo(User, 0.0); }), noFactor);
    EXPECT_EQ(Thrown([&] { position.Convert(1.0, User, 0.0); }), noFactor);
    EXPECT_EQ(Thrown([&] { position.ConvertTo(UnknownUnit, 1.0); }),
              "CalculationProblemException: Unit not defined (2)")
        << "the object's own unit";
    EXPECT_EQ(Thrown([&] { foreign.Convert(1.0, Millimetre, 0.0); }),
              "CalculationProblemException: Unit not defined (7)");
    EXPECT_EQ(position.x, 1.0);
    EXPECT_EQ(position.y, 2.0);
    EXPECT_EQ(position.unit, Inch);
    EXPECT_EQ(position.unitFactor, 5.0);
    position.SetUnit(User, 3.0);
    EXPECT_EQ(position.x, 1.0) << "relabelled, not converted";
    EXPECT_EQ(position.unit, User);
    EXPECT_EQ(position.unitFactor, 3.0);
}

TEST(Position, SumsKeepTheUnitOfTheLeft)
{
    const struct {
        Position left;
        Position right;
        double x;
        double y;
    } cases[] = {{{10, 20, Tenth, 0}, {1, 2, Inch, 0}, 10 + 253.99999999999997, 20 + 507.99999999999994},
                 {{0.3, 1, Tenth, 0}, {0.3, 1, Tenth, 9}, 0.6, 2},
                 {{1, 1, User, 2}, {3, 5, User, 2}, 4, 6},
                 {{1, 1, User, 2}, {3, 5, User, 4}, 7, 11}};
    for (const auto& test : cases) {
        Position sum = test.left;
        sum += test.right;
        EXPECT_EQ(sum.x, test.x);
        EXPECT_EQ(sum.y, test.y);
        EXPECT_EQ(sum.unit, test.left.unit);
        EXPECT_EQ(sum.unitFactor, test.left.unitFactor);
    }
    Position withoutFactor{1, 1, User, 0};
    const Position inches{1, 1, Inch, 0};
    EXPECT_EQ(Thrown([&] { withoutFactor += inches; }), "CalculationProblemException: Unit factor is 0.0!");
}

TEST(Property, TheWrongKindIsAnExceptionAndAssigningMayChangeIt)
{
    for (const auto& read :
         std::vector<std::function<void()>>{[] { Property(1.0f).AsLong(); }, [] { Property(1).AsFloat(); },
                                            [] { Property().AsLong(); }, [] { Property(Floats()).AsFloat(); }}) {
        EXPECT_THAT(Thrown(read), StartsWith("OutOfRangeException: "));
    }
    EXPECT_EQ(Property(Longs{7, 8}).AsLong(), 7);
    Property property(5);
    property.Assign(2.0f);
    EXPECT_TRUE(property.AsLongVector().empty());
    property.Assign(Longs{1, 2});
    EXPECT_TRUE(property.AsFloatVector().empty());
    property.Assign(property.AsLongVector());
    EXPECT_EQ(property.AsLongVector(), (Longs{1, 2}));
}

TEST(Properties, DumpOneValueBehindTheOther)
{
    Properties store;
    Bytes target;
    EXPECT_EQ(store.SizeOf(0), 0u);
    EXPECT_EQ(Thrown([&] { store.Dump(target.begin(), target.end(), 0, false); }), "");
    store.SetProperty(9, Property(Longs{1, 2, 3}));
    store.SetProperty(0x0102, Property(1.0f));
    const struct {
        int format;
        bool bigEndian;
        Bytes bytes;
    } cases[] = {{0, false, {9, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 2, 1, 0, 0, 0x80, 0x3F}},
                 {0, true, {0, 9, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 1, 2, 0x3F, 0x80, 0, 0}},
                 {1, false, {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0x80, 0x3F}},
                 {-7, true, {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0x3F, 0x80, 0, 0}}};
    for (const auto& test : cases) {
        EXPECT_EQ(store.SizeOf(test.format), test.bytes.size());
        target.assign(test.bytes.size(), 0xEE);
        store.Dump(target.begin(), target.end(), test.format, test.bigEndian);
        EXPECT_EQ(target, test.bytes) << test.format << test.bigEndian;
        Bytes small(test.bytes.size() - 1, 0xEE);
        EXPECT_EQ(Thrown([&] { store.Dump(small.begin(), small.end(), test.format, test.bigEndian); }),
                  "ResourceException: Configuration data dump target too small");
        EXPECT_EQ(small, Bytes(small.size(), 0xEE));
    }
    store.SetProperty(1, Property());
    EXPECT_EQ(Thrown([&] { store.Dump(target.begin(), target.end(), 1, false); }),
              "RuntimeException: Invalid configuration data type.");
}

TEST(TableProperties, GoBackToTheirDefaults)
{
    j4TableProperties settings;
    settings.SetProperty(5041, Property(7));
    settings.SetProperty(5045, Property(3.0f));
    settings.InitializeProperties();
    EXPECT_EQ(settings.GetProperty(5041).AsFloat(), 1.15f);
    EXPECT_EQ(Thrown([&] { settings.SetDefaultProperty(5045); }), "ProperyDataException: Invalid property id 5045");
    EXPECT_EQ(settings.GetItemCount(), 13);
}

}  // namespace
}  // namespace J4Test
