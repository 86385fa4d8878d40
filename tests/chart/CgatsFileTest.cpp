#include "chart/cgats/CgatsFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <tuple>
#include <utility>
#include <vector>

#include "chart/cgats/CgatsFields.h"
#include "tests/support/ChartText.h"

namespace J4Chart {
namespace {

using J4Test::Replaced;

CgatsFile Parsed(const std::string& text)
{
    std::istringstream input(text);
    return CgatsFile::Read(input);
}

std::string Written(const CgatsTable& table)
{
    CgatsFile file;
    file.Add(table);
    return file.Text();
}

const std::string plain =
    "CGATS.17\nKEYWORD \"MY_OWN\"\nMY_OWN \"a b\"\nNUMBER_OF_FIELDS 2\nBEGIN_DATA_FORMAT\n"
    "SAMPLE_ID\tLAB_L\nEND_DATA_FORMAT\nNUMBER_OF_SETS 2\nBEGIN_DATA\n\"deep red\"\t12.50\n"
    "A2\t1e-05\nEND_DATA\n";

TEST(CgatsFile, EveryFormOfAFileHasTheSameContent)
{
    for (const std::string& form : {
             plain,
             Replaced(plain, "\n", "\r\n"),
             Replaced(plain, "\n", "   # remark\n\n"),
             "\xef\xbb\xbf" + plain,
             Replaced(plain, "\"deep red\"", "'deep red'"),
             Replaced(plain, "NUMBER_OF_FIELDS 2\n", ""),
             Replaced(plain, "NUMBER_OF_SETS 2", "NUMBER_OF_SETS \"2\""),
             Replaced(plain, "SAMPLE_ID\tLAB_L", "SAMPLE_ID\nLAB_L"),
             Replaced(plain, "KEYWORD \"MY_OWN\"\n", ""),
         }) {
        SCOPED_TRACE(form);
        const CgatsFile file = Parsed(form);
        ASSERT_EQ(file.Tables().size(), 1u);
        EXPECT_EQ(file.Tables().front().ValueOf("MY_OWN"), "a b");
        EXPECT_EQ(file.Tables().front().rows.at(0).values, (std::vector<std::string>{"deep red", "12.50"}));
        EXPECT_EQ(Written(file.Tables().front()), plain);
    }
}

TEST(CgatsFile, TablesFollowOneAnother)
{
    const std::string second = Replaced(Replaced(plain, "CGATS.17", "CTI3"), "MY_OWN", "OTHER");
    const CgatsFile file = Parsed(plain + "\n" + second + Replaced(second, "CTI3\n", ""));
    ASSERT_EQ(file.Tables().size(), 3u);
    EXPECT_EQ(file.Tables()[1].kind, "CTI3");
    EXPECT_EQ(file.Tables()[1].ValueOf("OTHER"), "a b");
    EXPECT_EQ(file.Tables()[1].ValueOf("MY_OWN"), "");
    EXPECT_EQ(file.Tables()[1].rows.size(), 2u);
    EXPECT_EQ(file.Tables()[2].kind, "");
    EXPECT_EQ(Parsed(file.Text()).Tables().size(), 3u);
}

TEST(CgatsFile, BrokenFilesNameLineAndReason)
{
    const std::pair<std::string, const char*> cases[] = {
        {"", "BEGIN_DATA_FORMAT is missing"},
        {plain + "CTI3\nDESCRIPTOR \"cut off\"\n", "line 14: BEGIN_DATA_FORMAT is missing"},
        {Replaced(plain, "BEGIN_DATA_FORMAT\n", ""), "line 8: BEGIN_DATA before the data format"},
        {Replaced(plain, "END_DATA_FORMAT\n", ""), "line 11: END_DATA_FORMAT is missing"},
        {Replaced(plain, "BEGIN_DATA\n", "BEGIN_DATA_FORMAT\n"), "line 9: a second BEGIN_DATA_FORMAT"},
        {Replaced(plain, "BEGIN_DATA\n", ""), "line 11: BEGIN_DATA is missing"},
        {Replaced(plain, "END_DATA\n", ""), "line 11: END_DATA is missing"},
        {Replaced(plain, "A2\t", "A2 3\t"), "line 11: 3 values instead of 2"},
        {Replaced(plain, "A2\t", "\"A2\t"), "line 11: a quoted text has no end"},
        {Replaced(plain, "FIELDS 2", "FIELDS 3"), "line 4: NUMBER_OF_FIELDS is 3, but there are 2"},
        {Replaced(plain, "SETS 2", "SETS 3"), "line 8: NUMBER_OF_SETS is 3, but there are 2"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            Parsed(text);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const CgatsError& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
    EXPECT_THROW(CgatsFile::Read("no such file.cgats"), CgatsError);
}

TEST(CgatsFile, WrittenTextsReadBack)
{
    const std::pair<const char*, const char*> cases[] = {
        {"A1", "A1"},
        {"1A", "\"1A\""},
        {"0.5", "0.5"},
        {"-3", "-3"},
        {"", "\"\""},
        {"a b", "\"a b\""},
        {"a#b", "\"a#b\""},
        {"12\"", "'12\"'"},
        {"it's", "\"it's\""},
        {"-x", "\"-x\""},
        {"nan", "nan"},
        {"Grün", "\"Grün\""},
        {"a\tb", "\"a\tb\""},
        {"END_DATA", "\"END_DATA\""},
        {"KEYWORD", "\"KEYWORD\""},
    };
    CgatsTable table;
    table.fields = {"NAME"};
    for (const auto& [text, written] : cases) {
        table.rows = {{{text}, 0}};
        const std::string file = Written(table);
        EXPECT_NE(file.find("BEGIN_DATA\n" + std::string(written) + "\nEND_DATA"), std::string::npos) << file;
        EXPECT_EQ(Parsed(file).Tables().front().rows.front().values.front(), text);
    }
    using Row = CgatsTable::Row;
    using Keyword = CgatsTable::Keyword;
    for (const auto& [keyword, field, row, reason] : std::vector<std::tuple<Keyword, const char*, Row, const char*>>{
             {{"OK", "both \" and '", 3},
              "F",
              {},
              "line 3: no file can hold the text 'both \" and '': it has quotes of"},
             {{"OK", "a"}, "F", {{"two\nlines"}, 9}, "line 9: no file can hold the text 'two?lines': it has more than"},
             {{"OK", "a"}, "F", {{std::string("\0", 1)}, 9}, "line 9: no file can hold the text '?'"},
             {{"A B", "a", 4}, "F", {}, "line 4: no keyword can be called 'A B'"},
             {{"OK", "a"}, "CMYK_\x1b[1m", {}, "line 7: no field can be called 'CMYK_?[1m'"},
             {{"OK", "a"}, "END_DATA_FORMAT", {}, "line 7: no field can be called"}}) {
        table.keywords = {keyword};
        table.fields = {field};
        table.fieldsLine = 7;
        table.rows = {row};
        EXPECT_THAT([&] { Written(table); }, testing::ThrowsMessage<CgatsError>(testing::StartsWith(reason)));
    }
}

TEST(CgatsFields, NumbersKeepTheirValueAsText)
{
    double read = 0.0;
    for (const float value : {0.1f, 1.0f / 3.0f, 1e-7f, 0.85000002f, -2.5f, 3.4e38f}) {
        ASSERT_TRUE(ParseNumber(NumberText(value), read));
        EXPECT_EQ(static_cast<float>(read), value);
    }
    EXPECT_TRUE(ParseNumber("+1.5E+2", read));
    EXPECT_EQ(read, 150.0);
    for (const char* none : {"", "1,5", "1.5 ", "nan", "inf", "+-1", "0x10", "1e999"}) {
        EXPECT_FALSE(ParseNumber(none, read)) << none;
    }
}

TEST(CgatsFields, KnowsSpectralFieldsByManyNames)
{
    for (const char* field :
         {"SPECTRAL_NM380", "SPECTRAL_NM_380", "SPECTRAL_380", "SPEC_380", "NM_380", "NM380", "nm380"}) {
        EXPECT_EQ(WavelengthOf(field), 380) << field;
    }
    for (const char* other : {"SPEC_380.5", "SPECTRAL_DEC", "NMX", "LAB_L", "SPEC_1e99", "NM-1e300", "NM-1"}) {
        EXPECT_EQ(WavelengthOf(other), -1) << other;
    }
}

}  // namespace
}  // namespace J4Chart
