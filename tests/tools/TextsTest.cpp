// What people and programs read from the tool: numbers with units, JSON, the progress bar, statuses.

#include <gtest/gtest.h>

#include <array>
#include <nlohmann/json.hpp>
#include <set>

#include "c_sdk/include/j4tavla.h"
#include "tools/DateText.h"
#include "tools/Json.h"
#include "tools/Progress.h"
#include "tools/StatusTable.h"
#include "tools/Terminal.h"
#include "tools/Units.h"

namespace J4Tool {
namespace {

TEST(Units, TurnBothWays)
{
    const Units inch(Units::Unit::Inch);
    EXPECT_DOUBLE_EQ(inch.ToMillimetres(Point{1.0, 2.0}).y, 50.8);
    EXPECT_DOUBLE_EQ(inch.FromMillimetres(25.4), 1.0);
    EXPECT_EQ(inch.Text(100.0), "3.937 inch");
    EXPECT_EQ(Units().Text(100.04), "100.0 mm");
}

TEST(Json, IsValidWhateverTheTextsAndNumbersAre)
{
    const Json line = {{"name", "\xe4 ä"},        {"none", 0.0 / 0.0},
                       {"empty", JsonValue("")},  {"long", JsonValue("640001")},
                       {"word", JsonValue("x1")}, {"list", JsonNumbers(std::array{0.1f, 2.0f})}};
    EXPECT_EQ(JsonText(line),
              "{\"name\":\"\uFFFD ä\",\"none\":null,\"empty\":null,\"long\":640001,\"word\":\"x1\","
              "\"list\":[0.1,2]}");
}

TEST(Terminal, ShowsBytesForWhatItWouldObey)
{
    struct Row {
        const char* text;
        const char* shown;
    };
    for (const Row& row :
         {Row{"Räum € 😀\t1\n", "Räum € 😀\t1\n"},
          {"\x1b[2J\r\a\x7f", "\\x1b[2J\\x0d\\x07\\x7f"},
          {"\u009b2J", "\\xc2\\x9b2J"},
          {"a\u202eb\u2066", "a\\xe2\\x80\\xaeb\\xe2\\x81\\xa6"},
          {"\x9b \xe4 \xc0\x9b \xed\xa0\x80 \xe2\x82", "\\x9b \\xe4 \\xc0\\x9b \\xed\\xa0\\x80 \\xe2\\x82"}}) {
        EXPECT_EQ(Printable(row.text), row.shown);
    }
}

TEST(Progress, TheBarFitsIntoTheLine)
{
    const ScanState state{3, 6, 75, 150};
    EXPECT_EQ(Progress::Bar(state, 79.6, 60), "[##########...........] 3/6 rows, 75/150 patches, 1:20 left");
    for (const int width : {200, 80, 60, 45, 20, 1}) {
        EXPECT_LT(static_cast<int>(Progress::Bar(state, 5.0, width).size()), width) << width;
    }
    EXPECT_EQ(Progress::Bar({0, 0, 0, 0}, 0.0, 40), " 0/0 rows, 0/0 patches, 0:00 left");
}

TEST(StatusTable, NamesEveryStatusOfTheLibrary)
{
    const int32_t statuses[] = {
        J4_ResultDeviceFault,   J4_ResultDeviceNotConnected,           J4_ResultNotCalibrated,   J4_ResultException,
        J4_ResultResourceFault, J4_ResultPositionNotReached,           J4_ResultIllegalPosition, J4_ResultWhiteBase,
        J4_ResultFrameFailure,  J4_ResultSpectrophotometerNotConnected};
    std::set<std::string> names;
    for (const int32_t status : statuses) {
        EXPECT_EQ(FindStatus(status).status, status);
        names.insert(FindStatus(status).name);
    }
    EXPECT_EQ(names.size(), std::size(statuses));
    EXPECT_EQ(StatusText(102), "status 102 (J4_ResultIllegalPosition)");
    EXPECT_EQ(StatusText(4711), "status 4711 (status of the instrument's library)");
}

TEST(DateText, TellsUtc)
{
    EXPECT_EQ(DateText("1704067200"), "2024-01-01T00:00:00Z");
    EXPECT_EQ(DateText("0"), "never");
    EXPECT_EQ(DateText("soon"), "soon");
    EXPECT_EQ(DateForFileName(1704067200 + 3661), "20240101-010101");
}

}  // namespace
}  // namespace J4Tool
