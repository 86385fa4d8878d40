// Bytes and numbers, numbers and text, the pointer that owns, and the loader of libraries.
#include <fstream>
#include <iterator>
#include <limits>
#include <locale>
#include <map>
#include <typeinfo>

#include "Generic/Utilities/EndianConversion.h"
#include "Utilities/Tools/HexStringHelper.h"
#include "Utilities/Tools/LexicalCast.h"
#include "Utilities/Tools/LibraryLoader.h"
#include "Utilities/Tools/SmartPointer.h"
#include "Utilities/Tools/StringTools.h"
#include "tests/unit/UnitTest.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::Generic::Utilities::EndianConversion;
using namespace Kestrelon::Utilities::Tools;
using testing::StartsWith;

TEST(EndianConversion, NumbersBothWaysInBothOrders)
{
    // As floats, the last two are not numbers; they go by their bit pattern like all others.
    for (const auto& [value, big] : std::map<uint32_t, Bytes>{{0x80000000, {0x80, 0, 0, 0}},
                                                              {0x01020304, {1, 2, 3, 4}},
                                                              {0x7FC01234, {0x7F, 0xC0, 0x12, 0x34}},
                                                              {0xFFFFFFFE, {0xFF, 0xFF, 0xFF, 0xFE}}}) {
        for (const bool isBig : {true, false}) {
            const Bytes expected = isBig ? big : Bytes(big.rbegin(), big.rend());
            Bytes bytes(4);
            EndianConversion::LongToByteArray(value, bytes.data(), isBig);
            EXPECT_EQ(bytes, expected);
            uint32_t back = 0x55555555;
            EndianConversion::ByteArrayToLong(bytes.data(), back, isBig);
            EXPECT_EQ(back, value);
            float number = 1.0f;
            EndianConversion::ByteArrayToFloat(expected.data(), number, isBig);
            EndianConversion::FloatToByteArray(number, bytes.data(), isBig);
            EXPECT_EQ(bytes, expected);
        }
    }
}

TEST(HexString, ReadersTakeAnyLengthAndCase)
{
    // A fifth pair wraps onto the first; what is no digit counts nothing.
    for (const auto& [text, value] : std::map<std::string, uint32_t>{{"", 0},
                                                                     {"7", 7},
                                                                     {"12a", 0x12A},
                                                                     {"00FF", 255},
                                                                     {"dEaDbEeF", 0xDEADBEEF},
                                                                     {"80000000", 0x80000000},
                                                                     {"0100000002", 3},
                                                                     {"010000000000000005", 6},
                                                                     {"gg12", 0x12},
                                                                     {"5g", 5},
                                                                     {" 5", 5}}) {
        EXPECT_EQ(HexStringHelper::LongFromHexString(text), value) << text;
        EXPECT_EQ(HexStringHelper::SignedLongFromHexString(text), static_cast<int32_t>(value)) << text;
        EXPECT_EQ(HexStringHelper::ShortFromHexString(text), static_cast<uint16_t>(value)) << text;
        EXPECT_EQ(HexStringHelper::SignedShortFromHexString(text), static_cast<int16_t>(value)) << text;
        EXPECT_EQ(HexStringHelper::CharFromHexString(text), static_cast<uint8_t>(value)) << text;
    }
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
    } cases[] = {{"12", true, true},     {" 12", true, true},          {"-2147483648", true, true},
                 {"12abc", true, false}, {"12 ", true, false},         {"12.5", true, false},
                 {"1,000", true, false}, {"", false, false},           {"abc", false, false},
                 {"x1", false, false},   {"3000000000", false, false}, {"-2147483649", false, false}};
    for (const auto& test : cases) {
        const std::string text = test.text;
        const std::string failure = "invalid_argument: lexical_cast(): fail to convert '" + text + "' from " +
                                    typeid(std::string).name() + " to " + typeid(int32_t).name();
        EXPECT_EQ(Thrown([&] { lexical_cast<int32_t>(text); }), test.lenient ? "" : failure);
        EXPECT_EQ(Thrown([&] { strict_lexical_cast<int32_t>(text); }), test.strict ? "" : failure);
    }
    EXPECT_EQ(lexical_cast<int32_t>(std::string("-2147483648")), std::numeric_limits<int32_t>::min());
    EXPECT_EQ(lexical_cast<uint16_t>(std::string("65535")), 65535);
    EXPECT_NE(Thrown([] { lexical_cast<uint16_t>(std::string("65536")); }), "");
    EXPECT_EQ(lexical_cast<float>(std::string("1.15")), 1.15f);
    EXPECT_EQ(lexical_cast<std::string>(uint16_t{1013}), "1013");
}

/// A host program that writes numbers as "1.234,5".
struct CommaLocale {
    struct Punctuation : std::numpunct<char> {
        char do_decimal_point() const override { return ','; }
        char do_thousands_sep() const override { return '.'; }
        std::string do_grouping() const override { return "\3"; }
    };
    ~CommaLocale() { std::locale::global(before); }
    std::locale before = std::locale::global(std::locale(std::locale::classic(), new Punctuation));
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
    EXPECT_EQ(SplitAtBlanks("  a  bc d "), (Strings{"a", "bc", "d"}));
    EXPECT_EQ(SplitAtBlanks("   "), Strings());
    for (const auto& [text, rest] : std::map<std::string, std::string>{
             {"one\ntwo\nthree\nfour", "three\nfour"}, {"one\ntwo\n", ""}, {"one\ntwo", "one\ntwo"}, {"", ""}}) {
        EXPECT_EQ(DropFirstTwoLines(text), rest);
    }
}

/// Counts what lives, and releases the pointer that owns it while it is destroyed.
struct Counted {
    static inline int alive = 0;
    static inline SmartPointer<Counted>* owner = nullptr;
    explicit Counted(int value) : value(value) { ++alive; }
    ~Counted()
    {
        --alive;
        if (owner != nullptr) {
            EXPECT_TRUE(owner->IsNull()) << "null before its object goes";
            *owner = 0;
        }
    }
    int value;
};

TEST(SmartPointer, TheLastReferenceDeletes)
{
    SmartPointer<Counted> first(new Counted(1));
    {
        const SmartPointer<Counted> second(first);
        SmartPointer<Counted> third;
        third = second;
        third = *&third;
        EXPECT_EQ(third->value, 1);
        first = SmartPointer<Counted>(new Counted(2));
        EXPECT_EQ(Counted::alive, 2);
    }
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ((*first).value, 2);
    SmartPointer<Counted> last(first);
    first = 0;
    EXPECT_TRUE(first.IsNull());
    EXPECT_EQ(Counted::alive, 1);
    EXPECT_EQ(Thrown([&] { last = 1; }), "invalid_argument: SmartPointer<T>& operator =(long) argument was != Zero");
    EXPECT_EQ(last->value, 2);
    Counted::owner = &last;
    last = 0;
    Counted::owner = nullptr;
    EXPECT_EQ(Counted::alive, 0);
    last = 0;
}

TEST(SmartPointer, ANullAccessNamesTypeAndPlace)
{
    const SmartPointer<Counted> null(static_cast<Counted*>(nullptr));
    const std::string text = std::string("accessed null pointer (") + typeid(Counted).name() + ")";
    EXPECT_EQ(Thrown([&] { (void)*SmartPointer<Counted>(null); }), "NullPointerException: " + text);
    EXPECT_EQ(Thrown([&] { (void)null->value; }), "NullPointerException: " + text);
}

TEST(LibraryLoader, AllLocationsLoadTheSameFile)
{
    // A library that every system of the kind has.
    const bool isWindows = Thrown([] { LibraryLoader("libm.so.6", 0); }) != "";
    const std::string name = isWindows ? "kernel32.dll" : "libm.so.6";
    const std::string path = LibraryLoader(name, 0).GetLibraryPath();
    EXPECT_GT(path.size(), name.size());
    for (int32_t location = -1; location <= 5; ++location) {
        EXPECT_EQ(Thrown([&] {
                      LibraryLoader loader(name, location);
                      EXPECT_EQ(loader.GetLibraryPath(), path);
                      EXPECT_NE(loader.doResolve(isWindows ? "Sleep" : "cos"), nullptr);
                      EXPECT_EQ(loader.doResolve("NoSuchFunction"), nullptr);
                  }),
                  location >= 0 && location <= 4 ? "" : "ResourceNotAvailableException: Unknown location specified.");
    }
    const auto isLoaded = [] {
        std::ifstream maps("/proc/self/maps");
        return std::string(std::istreambuf_iterator<char>(maps), {}).find("libanl") != std::string::npos;
    };
    if (!isWindows) {
        const LibraryLoader loader("libanl.so.1", 0);  // nothing else here needs it
        EXPECT_TRUE(isLoaded());
    }
    EXPECT_FALSE(isLoaded()) << "it goes with its loader";
    EXPECT_EQ(Thrown([] { LibraryLoader("", 0); }), "InvalidArgumentException: empty library name!");
    EXPECT_EQ(Thrown([] { LibraryLoader("", 5); }), "InvalidArgumentException: empty library name!");
    EXPECT_THAT(Thrown([] { LibraryLoader("no-such-library.dll", 0); }),
                StartsWith("ResourceNotAvailableException: Can't load library 'no-such-library.dll': 126"));
}

}  // namespace
}  // namespace J4Test
