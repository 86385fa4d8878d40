#include <gtest/gtest.h>

#include <limits>
#include <locale>

#include "Generic/Utilities/EndianConversion.h"
#include "Utilities/Tools/HexStringHelper.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/StringTools.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Utilities::EndianConversion;
using Kestrelon::Utilities::Tools::DropFirstTwoLines;
using Kestrelon::Utilities::Tools::HexStringHelper;
using Kestrelon::Utilities::Tools::lexical_cast;
using Kestrelon::Utilities::Tools::SplitAtBlanks;
using Kestrelon::Utilities::Tools::strict_lexical_cast;
using Bytes = std::vector<uint8_t>;

TEST(EndianConversion, NumbersBothWaysInBothOrders)
{
    const struct {
        uint32_t value;
        Bytes big;
    } cases[] = {
        {0x01020304, {1, 2, 3, 4}},
        {0xFFFFFFFE, {0xFF, 0xFF, 0xFF, 0xFE}},
        {0x80000000, {0x80, 0, 0, 0}},
    };
    for (const auto& test : cases) {
        for (const bool bigEndian : {true, false}) {
            const Bytes expected = bigEndian ? test.big : Bytes(test.big.rbegin(), test.big.rend());
            Bytes bytes(4);
            EndianConversion::LongToByteArray(test.value, bytes.data(), bigEndian);
            EXPECT_EQ(bytes, expected);
            uint32_t back = 0x55555555;
            EndianConversion::ByteArrayToLong(bytes.data(), back, bigEndian);
            EXPECT_EQ(back, test.value);
        }
    }
    Bytes two(3, 0xAA);
    EndianConversion::ShortToByteArray(0x0102, two.data(), false);
    EXPECT_EQ(two, (Bytes{2, 1, 0xAA}));
    EndianConversion::ShortToByteArray(0x0102, two.data(), true);
    EXPECT_EQ(two, (Bytes{1, 2, 0xAA}));
}

TEST(EndianConversion, FloatsGoByTheirBitPattern)
{
    Bytes bytes(4);
    EndianConversion::FloatToByteArray(1.0f, bytes.data(), false);
    EXPECT_EQ(bytes, (Bytes{0, 0, 0x80, 0x3F}));
    EndianConversion::FloatToByteArray(-0.0f, bytes.data(), true);
    EXPECT_EQ(bytes, (Bytes{0x80, 0, 0, 0}));
    const uint8_t quietNan[] = {0x7F, 0xC0, 0x12, 0x34};
    float nan = 0.0f;
    EndianConversion::ByteArrayToFloat(quietNan, nan, true);
    EndianConversion::FloatToByteArray(nan, bytes.data(), true);
    EXPECT_EQ(bytes, Bytes(quietNan, quietNan + 4));
}

TEST(HexString, WritesLowerCaseAtAMinimumWidth)
{
    EXPECT_EQ(HexStringHelper::ToHexString(uint32_t{255}, 4), "00ff");
    EXPECT_EQ(HexStringHelper::ToHexString(uint32_t{0x12345}, 4), "12345");
    EXPECT_EQ(HexStringHelper::ToHexString(uint32_t{0}, 0), "0");
    EXPECT_EQ(HexStringHelper::ToHexString(int32_t{-1}, 4), "ffffffff");
    EXPECT_EQ(HexStringHelper::ToHexString(int32_t{1000}, 4), "03e8");
    EXPECT_EQ(HexStringHelper::ToHexString(uint16_t{0xFFFF}, 4), "ffff");
    EXPECT_EQ(HexStringHelper::ToHexString(uint8_t{'A'}, 2), "41") << "a number, not a character";
    EXPECT_EQ(HexStringHelper::ToHexString(uint8_t{7}, 2), "07");
    EXPECT_EQ(HexStringHelper::ToHexString(Bytes{0x00, 0x0A, 0xFF}), "000aff");
    EXPECT_EQ(HexStringHelper::ToHexString(Bytes()), "");
}

TEST(HexString, ReadersTakeAnyLengthAndCase)
{
    const struct {
        const char* text;
        uint32_t value;
    } cases[] = {
        {"", 0},
        {"7", 7},
        {"12a", 0x12A},
        {"00FF", 255},
        {"dEaDbEeF", 0xDEADBEEF},
        {"80000000", 0x80000000},
        {"0100000002", 3},  // a fifth pair wraps onto the first
        {"010000000000000005", 6},
        {"gg12", 0x12},  // what is no digit counts nothing
        {"5g", 5},
        {" 5", 5},
    };
    for (const auto& test : cases) {
        EXPECT_EQ(HexStringHelper::LongFromHexString(test.text), test.value) << test.text;
        EXPECT_EQ(HexStringHelper::SignedLongFromHexString(test.text), static_cast<int32_t>(test.value)) << test.text;
        EXPECT_EQ(HexStringHelper::ShortFromHexString(test.text), static_cast<uint16_t>(test.value)) << test.text;
        EXPECT_EQ(HexStringHelper::SignedShortFromHexString(test.text), static_cast<int16_t>(test.value)) << test.text;
        EXPECT_EQ(HexStringHelper::CharFromHexString(test.text), static_cast<uint8_t>(test.value)) << test.text;
    }
}

TEST(HexString, ByteBlocksNeedWholePairs)
{
    EXPECT_EQ(HexStringHelper::ByteBlockFromHexString("0aFF"), (Bytes{0x0A, 0xFF}));
    EXPECT_EQ(HexStringHelper::ByteBlockFromHexString(""), Bytes());
    EXPECT_EQ(Thrown([] { HexStringHelper::ByteBlockFromHexString("abc"); }),
              "RuntimeException: Hex String contains odd number of digits!");
}

TEST(LexicalCast, LenientStopsAtTheNumberStrictWantsAllOfIt)
{
    const struct {
        const char* text;
        bool lenient;
        bool strict;
    } cases[] = {
        {"12", true, true},    {" 12", true, true},          {"-2147483648", true, true},   {"12abc", true, false},
        {"12 ", true, false},  {"12.5", true, false},        {"1,000", true, false},        {"", false, false},
        {"abc", false, false}, {"3000000000", false, false}, {"-2147483649", false, false},
    };
    for (const auto& test : cases) {
        const std::string text = test.text;
        EXPECT_EQ(Thrown([&] { lexical_cast<int32_t>(text); }).empty(), test.lenient) << text;
        EXPECT_EQ(Thrown([&] { strict_lexical_cast<int32_t>(text); }).empty(), test.strict) << text;
    }
    EXPECT_EQ(lexical_cast<int32_t>(std::string("12abc")), 12);
    EXPECT_EQ(lexical_cast<int32_t>(std::string("-2147483648")), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(lexical_cast<uint16_t>(std::string("65535")), 65535);
    EXPECT_FALSE(Thrown([] { lexical_cast<uint16_t>(std::string("65536")); }).empty());
    EXPECT_EQ(lexical_cast<float>(std::string("1.15")), 1.15f);
    EXPECT_EQ(lexical_cast<std::string>(uint16_t{1013}), "1013");
}

TEST(LexicalCast, TheFailureNamesTextAndTypes)
{
    const std::string expected = std::string("invalid_argument: lexical_cast(): fail to convert 'x1' from ") +
                                 typeid(std::string).name() + " to " + typeid(int32_t).name();
    EXPECT_EQ(Thrown([] { lexical_cast<int32_t>(std::string("x1")); }), expected);
    EXPECT_EQ(Thrown([] { strict_lexical_cast<int32_t>(std::string("x1")); }), expected);
}

/// A host program that writes numbers as "1.234,5".
class CommaLocale {
public:
    CommaLocale() : before(std::locale::global(std::locale(std::locale::classic(), new Punctuation))) {}
    ~CommaLocale() { std::locale::global(before); }

private:
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    std::locale before;
};

TEST(LexicalCast, TheHostsLocaleDoesNotReachTheNumbers)
{
    const CommaLocale hostLocale;
    EXPECT_EQ(lexical_cast<std::string>(int32_t{1234567}), "1234567");
    EXPECT_EQ(lexical_cast<float>(std::string("0.25")), 0.25f);
    EXPECT_EQ(HexStringHelper::ToHexString(uint32_t{0x1234567}, 8), "01234567");
}

TEST(StringTools, WordsAndLines)
{
    using Words = std::vector<std::string>;
    EXPECT_EQ(SplitAtBlanks("  a  bc d "), (Words{"a", "bc", "d"}));
    EXPECT_EQ(SplitAtBlanks("   "), Words());
    EXPECT_EQ(DropFirstTwoLines("one\ntwo\nthree\nfour"), "three\nfour");
    EXPECT_EQ(DropFirstTwoLines("one\ntwo\n"), "");
    EXPECT_EQ(DropFirstTwoLines("one\ntwo"), "one\ntwo");
    EXPECT_EQ(DropFirstTwoLines(""), "");
}

}  // namespace
}  // namespace J4Test
