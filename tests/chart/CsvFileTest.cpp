#include "chart/csv/CsvFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "chart/cgats/CgatsError.h"

namespace J4Chart {
namespace {

CgatsTable Read(const std::string& text)
{
    std::istringstream input(text);
    return CsvFile::Read(input);
}

TEST(CsvFile, IsWrittenAsRfc4180HasItAndReadsBack)
{
    CgatsTable table;
    table.fields = {"SAMPLE_NAME", "LAB_L"};
    table.rows = {{{"a, \"b\"", "1.5"}, 7}, {{"", "two\r\nlines"}, 8}, {{"Gr\xc3\xbcn ", "-0"}, 9}};
    EXPECT_EQ(CsvFile::Text(table),
              "SAMPLE_NAME,LAB_L\r\n\"a, \"\"b\"\"\",1.5\r\n\"\",\"two\r\nlines\"\r\nGr\xc3\xbcn ,-0\r\n");
}

TEST(CsvFile, ReadsWhatOthersWrite)
{
    const CgatsTable table = Read("\xef\xbb\xbfSAMPLE_ID,LAB_L\n\n\"1\",\"a\nb\"\r\n2,");
    EXPECT_EQ(table.fields, (std::vector<std::string>{"SAMPLE_ID", "LAB_L"}));
    ASSERT_EQ(table.rows.size(), 2u);
    EXPECT_EQ(table.rows[0].values, (std::vector<std::string>{"1", "a\nb"}));
    EXPECT_EQ(table.rows[1].values, (std::vector<std::string>{"2", ""}));
    EXPECT_EQ(table.rows[1].line, 5);
}

TEST(CsvFile, RefusalsNameLineAndReason)
{
    const std::pair<const char*, const char*> cases[] = {
        {"", "the file is empty"},
        {"A,B\n1,2\n1\n", "line 3: 1 values instead of 2"},
        {"A,B\n1,\"2\n3", "line 2: a quoted value has no end"},
        {"A,B\n1,\"2\"3\n", "line 2: there is something behind a quoted value"},
        {"A,B\n1\",2\n", "line 2: there is a quote within a value that does not begin with one"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            Read(text);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const CgatsError& error) {
            EXPECT_STREQ(error.what(), reason);
        }
    }
}

}  // namespace
}  // namespace J4Chart
