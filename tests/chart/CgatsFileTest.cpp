#include "chart/cgats/CgatsFile.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cmath>
#include <sstream>
#include <stdexcept>

#include "chart/cgats/CgatsFields.h"

namespace J4Chart {
namespace {

CgatsFile Parsed(const std::string& text)
{
    CgatsFile file;
    CgatsFile::Error error;
    std::istringstream input(text);
    EXPECT_TRUE(file.Read(input, error)) << error.Text();
    return file;
}

std::string Written(const CgatsFile& file)
{
    std::ostringstream text;
    file.Write(text);
    return text.str();
}

constexpr const char* Plain =
    "CGATS.17\nKEYWORD \"MY_OWN\"\nMY_OWN \"a b\"\nNUMBER_OF_FIELDS 2\nBEGIN_DATA_FORMAT\n"
    "SAMPLE_ID\tLAB_L\nEND_DATA_FORMAT\nNUMBER_OF_SETS 2\nBEGIN_DATA\n\"deep red\"\t12.50\n"
    "A2\t1e-05\nEND_DATA\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

TEST(CgatsFile, EveryFormOfAFileHasTheSameContent)
{
    const std::string forms[] = {
        Plain,
        Replaced(Plain, "\n", "\r\n"),
        Replaced(Plain, "\n", "   # remark\n\n"),
        "\xef\xbb\xbf" + std::string(Plain),
        Replaced(Plain, "\"deep red\"", "'deep red'"),
        Replaced(Plain, "NUMBER_OF_FIELDS 2\n", ""),
        Replaced(Plain, "NUMBER_OF_SETS 2", "NUMBER_OF_SETS \"2\""),
        Replaced(Plain, "SAMPLE_ID\tLAB_L", "SAMPLE_ID\nLAB_L"),
        Replaced(Plain, "KEYWORD \"MY_OWN\"\n", ""),
    };
    for (const std::string& form : forms) {
        SCOPED_TRACE(form);
        const CgatsFile file = Parsed(form);
        ASSERT_EQ(file.Tables().size(), 1u);
        const CgatsTable& table = file.Tables().front();
        EXPECT_EQ(table.kind, "CGATS.17");
        EXPECT_EQ(table.ValueOf("MY_OWN"), "a b");
        ASSERT_EQ(table.rows.size(), 2u);
        EXPECT_EQ(table.rows[0].values, (std::vector<std::string>{"deep red", "12.50"}));
        EXPECT_EQ(table.rows[1].values, (std::vector<std::string>{"A2", "1e-05"}));
        EXPECT_EQ(Written(file), Plain);
    }
}

TEST(CgatsFile, TablesFollowOneAnother)
{
    const std::string second =
        "CTI3\nDESCRIPTOR \"second\"\nBEGIN_DATA_FORMAT\nNAME\nEND_DATA_FORMAT\nBEGIN_DATA\nx\n"
        "y\nz\nEND_DATA\n";
    const CgatsFile file = Parsed(std::string(Plain) + "\n" + second + Replaced(second, "CTI3\n", ""));
    ASSERT_EQ(file.Tables().size(), 3u);
    EXPECT_EQ(file.Tables()[1].kind, "CTI3");
    EXPECT_EQ(file.Tables()[1].ValueOf("DESCRIPTOR"), "second");
    EXPECT_EQ(file.Tables()[1].ValueOf("MY_OWN"), "");
    EXPECT_EQ(file.Tables()[1].rows.size(), 3u);
    EXPECT_EQ(file.Tables()[2].kind, "");
    EXPECT_EQ(Parsed(Written(file)).Tables().size(), 3u);

    CgatsFile broken;
    CgatsFile::Error error;
    std::istringstream input(std::string(Plain) + "CTI3\nDESCRIPTOR \"cut off\"\n");
    EXPECT_FALSE(broken.Read(input, error));
    EXPECT_EQ(error.Text(), "line 14: BEGIN_DATA_FORMAT is missing");
}

TEST(CgatsFile, WrittenTextsReadBack)
{
    struct Case {
        const char* text;
        const char* written;
    };
    const Case cases[] = {{"A1", "A1"},       {"1A", "\"1A\""},     {"0.5", "0.5"},
                          {"-3", "-3"},       {"", "\"\""},         {"two words", "\"two words\""},
                          {"a#b", "\"a#b\""}, {"12\"", "'12\"'"},   {"it's", "\"it's\""},
                          {"-x", "\"-x\""},   {"Grün", "\"Grün\""}, {"nan", "nan"}};
    for (const Case& test : cases) {
        CgatsTable table;
        table.fields = {"NAME"};
        table.rows.push_back({{test.text}, 0});
        CgatsFile file;
        file.Add(table);
        const std::string text = Written(file);
        EXPECT_NE(text.find("BEGIN_DATA\n" + std::string(test.written) + "\nEND_DATA"), std::string::npos) << text;
        EXPECT_EQ(Parsed(text).Tables().front().rows.front().values.front(), test.text);
    }
    for (const char* impossible : {"both \" and '", "two\nlines"}) {
        CgatsTable table;
        table.keywords.push_back({"DESCRIPTOR", impossible, 0});
        CgatsFile file;
        file.Add(table);
        EXPECT_THROW(Written(file), std::invalid_argument);
    }
}

TEST(CgatsFields, NumbersKeepTheirValueAsText)
{
    for (const float value : {0.1f, 1.0f / 3.0f, 1e-7f, 0.85000002f, -2.5f, 3.4e38f}) {
        double read = 0.0;
        ASSERT_TRUE(ParseNumber(NumberText(value), read));
        EXPECT_EQ(static_cast<float>(read), value);
    }
    double value = 0.0;
    EXPECT_TRUE(ParseNumber("+1.5E+2", value));
    EXPECT_EQ(value, 150.0);
    for (const char* none : {"", "1,5", "1.5 ", "nan", "inf", "+-1", "0x10", "1e999"}) {
        EXPECT_FALSE(ParseNumber(none, value)) << none;
    }
}

TEST(CgatsFields, KnowsSpectralFieldsByManyNames)
{
    struct Case {
        const char* field;
        int wavelength;
    };
    for (const Case& test : {Case{"SPECTRAL_NM380", 380}, Case{"SPECTRAL_NM_380", 380}, Case{"SPECTRAL_380", 380},
                             Case{"SPEC_380", 380}, Case{"NM_380", 380}, Case{"NM380", 380}, Case{"SPEC_380.5", -1},
                             Case{"SPECTRAL_DEC", -1}, Case{"NMX", -1}, Case{"LAB_L", -1}, Case{"SPEC_1e99", -1}}) {
        EXPECT_EQ(WavelengthOf(test.field), test.wavelength) << test.field;
    }
}

TEST(CgatsFile, TenThousandPatchesTakeMoments)
{
    CgatsTable table;
    table.fields = {"SAMPLE_ID"};
    for (size_t band = 0; band < SpectrumLength; ++band) {
        table.fields.push_back(SpectralField(band));
    }
    for (int row = 0; row < 10000; ++row) {
        CgatsTable::Row& values = table.rows.emplace_back();
        values.values.push_back("P" + std::to_string(row));
        for (int band = 0; band < SpectrumLength; ++band) {
            values.values.push_back(NumberText(static_cast<float>(std::fmod(row * 0.37 + band * 0.011, 1.0))));
        }
    }
    CgatsFile file;
    file.Add(table);
    const CgatsFile read = Parsed(Written(file));
    ASSERT_EQ(read.Tables().front().rows.size(), table.rows.size());
    EXPECT_EQ(read.Tables().front().rows.back().values, table.rows.back().values);
}

}  // namespace
}  // namespace J4Chart
