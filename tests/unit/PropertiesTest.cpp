#include <gtest/gtest.h>

#include "Generic/Configuration/Properties.h"
#include "src/j4TableProperties.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Configuration::Properties;
using Kestrelon::DeviceDriver::Generic::Configuration::Property;
using Kestrelon::DeviceDriver::J4T::j4TableProperties;
using Bytes = std::vector<uint8_t>;
using Keys = std::list<uint16_t>;

TEST(Property, RendersItsNumbersAndNothingElse)
{
    const struct {
        Property property;
        int type;
        Bytes little;
        Bytes big;
    } cases[] = {
        {Property(-1), Property::TypeLong, {0xFF, 0xFF, 0xFF, 0xFF}, {0xFF, 0xFF, 0xFF, 0xFF}},
        {Property(1), Property::TypeLong, {1, 0, 0, 0}, {0, 0, 0, 1}},
        {Property(1.0f), Property::TypeFloat, {0, 0, 0x80, 0x3F}, {0x3F, 0x80, 0, 0}},
        {Property(Property::LongVector{1, 0x0203}),
         Property::TypeLongVector,
         {1, 0, 0, 0, 3, 2, 0, 0},
         {0, 0, 0, 1, 0, 0, 2, 3}},
        {Property(Property::FloatVector{-2.0f}), Property::TypeFloatVector, {0, 0, 0, 0xC0}, {0xC0, 0, 0, 0}},
        {Property(Property::LongVector()), Property::TypeLongVector, {}, {}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(test.property.GetType(), test.type);
        EXPECT_EQ(test.property.SizeOf(), test.little.size());
        EXPECT_EQ(test.property.AsByteVector(false), test.little);
        EXPECT_EQ(test.property.AsByteVector(true), test.big);
    }
    EXPECT_EQ(Property().SizeOf(), 0u);
    EXPECT_EQ(Property().GetType(), Property::TypeInvalid);
    EXPECT_EQ(Thrown([] { Property().AsByteVector(false); }), "RuntimeException: Invalid configuration data type.");
}

TEST(Property, TheWrongKindIsAnException)
{
    const auto isOutOfRange = [](const std::string& thrown) { return thrown.rfind("OutOfRangeException: ", 0) == 0; };
    EXPECT_TRUE(isOutOfRange(Thrown([] { Property(1.0f).AsLong(); })));
    EXPECT_TRUE(isOutOfRange(Thrown([] { Property(1).AsFloat(); })));
    EXPECT_TRUE(isOutOfRange(Thrown([] { Property().AsLong(); })));
    EXPECT_TRUE(isOutOfRange(Thrown([] { Property(Property::FloatVector()).AsFloat(); })));
    EXPECT_TRUE(Property(1).AsFloatVector().empty());
    EXPECT_TRUE(Property(1.0f).AsLongVector().empty());
    EXPECT_EQ(Property(Property::LongVector{7, 8}).AsLong(), 7);
}

TEST(Property, AssigningMayChangeTheKind)
{
    Property property(5);
    property.Assign(2.0f);
    EXPECT_EQ(property.GetType(), Property::TypeFloat);
    EXPECT_TRUE(property.AsLongVector().empty());
    property.Assign(Property::LongVector{1, 2});
    EXPECT_EQ(property.GetType(), Property::TypeLongVector);
    EXPECT_TRUE(property.AsFloatVector().empty());
    property.Assign(property.AsLongVector());
    EXPECT_EQ(property.AsLongVector(), (Property::LongVector{1, 2}));
    EXPECT_EQ(property.SizeOf(), 8u);
}

TEST(Properties, KeepTheOrderOfInsertion)
{
    Properties store;
    store.SetProperty(7, Property(70));
    store.SetProperty(3, Property(30));
    store.SetProperty(5, Property(50));
    store.SetProperty(3, Property(1.5f));
    EXPECT_EQ(store.GetPropertyKeys(), (Keys{7, 3, 5}));
    EXPECT_EQ(store.GetItemCount(), 3);
    EXPECT_EQ(store.GetProperty(3).AsFloat(), 1.5f);
    EXPECT_TRUE(store.Contains(5));
    EXPECT_FALSE(store.Contains(6));
    EXPECT_EQ(Thrown([&] { store.GetProperty(1013); }), "ResourceException: id 1013 doesn't exist");

    Properties copy(store);
    copy.SetProperty(7, Property(71));
    EXPECT_EQ(store.GetProperty(7).AsLong(), 70);
}

TEST(Properties, DumpsOneValueBehindTheOther)
{
    Properties store;
    store.SetProperty(9, Property(Property::LongVector{1, 2, 3}));
    store.SetProperty(0x0102, Property(1.0f));
    const struct {
        int format;
        bool bigEndian;
        Bytes bytes;
    } cases[] = {
        {0, false, {9, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 2, 1, 0, 0, 0x80, 0x3F}},
        {0, true, {0, 9, 0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 1, 2, 0x3F, 0x80, 0, 0}},
        {1, false, {1, 0, 0, 0, 2, 0, 0, 0, 3, 0, 0, 0, 0, 0, 0x80, 0x3F}},
        {-7, true, {0, 0, 0, 1, 0, 0, 0, 2, 0, 0, 0, 3, 0x3F, 0x80, 0, 0}},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(store.SizeOf(test.format), test.bytes.size());
        Bytes target(test.bytes.size() + 2, 0xEE);
        store.Dump(target.begin(), target.end(), test.format, test.bigEndian);
        Bytes expected = test.bytes;
        expected.insert(expected.end(), 2, 0xEE);
        EXPECT_EQ(target, expected) << test.format << test.bigEndian;

        Bytes small(test.bytes.size() - 1, 0xEE);
        EXPECT_EQ(Thrown([&] { store.Dump(small.begin(), small.end(), test.format, test.bigEndian); }),
                  "ResourceException: Configuration data dump target too small");
        EXPECT_EQ(small, Bytes(small.size(), 0xEE));
    }
}

TEST(Properties, EmptyAndInvalidOnesAtADump)
{
    Properties store;
    Bytes target;
    EXPECT_EQ(store.SizeOf(0), 0u);
    EXPECT_EQ(Thrown([&] { store.Dump(target.begin(), target.end(), 0, false); }), "");
    store.SetProperty(1, Property());
    EXPECT_EQ(Thrown([&] { store.Dump(target.begin(), target.end(), 1, false); }),
              "RuntimeException: Invalid configuration data type.");
}

TEST(TableProperties, StartFromTheirDefaultsAndGoBackToThem)
{
    const struct {
        uint16_t id;
        Property value;
    } defaults[] = {
        {5010, Property(300)}, {5011, Property(160)},  {5012, Property(200)},   {5020, Property(0)},
        {5030, Property(0)},   {5040, Property(1)},    {5041, Property(1.15f)}, {5042, Property(1)},
        {5043, Property(-5)},  {5044, Property(0.2f)}, {5050, Property(1)},     {5060, Property(2)},
    };
    j4TableProperties settings;
    Keys keys;
    for (const auto& entry : defaults) {
        keys.push_back(entry.id);
    }
    EXPECT_EQ(settings.GetPropertyKeys(), keys);
    settings.SetProperty(5041, Property(7));
    settings.SetProperty(5045, Property(3.0f));
    settings.InitializeProperties();
    for (const auto& entry : defaults) {
        EXPECT_EQ(settings.GetProperty(entry.id).GetType(), entry.value.GetType()) << entry.id;
        EXPECT_EQ(settings.GetProperty(entry.id).AsByteVector(true), entry.value.AsByteVector(true)) << entry.id;
    }
    EXPECT_EQ(settings.GetProperty(5041).AsByteVector(true), (Bytes{0x3F, 0x93, 0x33, 0x33}));
    EXPECT_EQ(settings.GetProperty(5044).AsByteVector(true), (Bytes{0x3E, 0x4C, 0xCC, 0xCD}));
    EXPECT_EQ(settings.GetItemCount(), 13);
    for (const uint16_t id : {5013, 5045, 4000, 6000}) {
        EXPECT_EQ(Thrown([&] { settings.SetDefaultProperty(id); }),
                  "ProperyDataException: Invalid property id " + std::to_string(id));
    }
    EXPECT_EQ(settings.GetItemCount(), 13);
}

}  // namespace
}  // namespace J4Test
