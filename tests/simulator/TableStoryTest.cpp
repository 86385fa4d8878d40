#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <map>
#include <regex>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <vector>

#include "tests/simulator/TableLine.h"

namespace J4Bench {
namespace {

/// What goes over the line of a table that has just been switched on. Steps stand in lines or between bars:
///   a0 = $a00000012     a request, and all that is said within the next millisecond
///   u277 @400ms = $u20  the same within another time
///   @2s = $i00          nothing is sent
///   m0 6000 2000 160    a motion, in decimal; where nothing is said of the replies, they don't matter
///   >;a035              a line as it stands
///   lamp, busy, silent, blocked, corrupt, sound: the instrument's lamp goes on; a fault comes, all go
/// "[f1*256]" in a request is so many times the same; "." in a reply is any character, ".*" any rest.
struct Story {
    const char* name;
    const char* steps;
};

std::string Trimmed(const std::string& text)
{
    const size_t begin = text.find_first_not_of(' ');
    return begin == std::string::npos ? "" : text.substr(begin, text.find_last_not_of(' ') - begin + 1);
}

int64_t Microseconds(const std::string& time)
{
    size_t unit = 0;
    const double value = std::stod(time, &unit);
    return std::llround(value * (time.substr(unit) == "s" ? 1e6 : time.substr(unit) == "ms" ? 1e3 : 1.0));
}

std::string Repeated(std::string text)
{
    std::smatch match;
    while (std::regex_search(text, match, std::regex("\\[([^*]+)\\*(\\d+)\\]"))) {
        std::string all;
        for (int i = std::stoi(match[2]); i > 0; --i) {
            all += match[1];
        }
        text = match.prefix().str() + all + match.suffix().str();
    }
    return text;
}

bool Fits(const std::string& reply, const std::string& pattern)
{
    return std::regex_match(reply, std::regex(std::regex_replace(pattern, std::regex("\\$"), "[$$]")));
}

bool Happens(const std::string& event, LoneTable& lone)
{
    static const std::map<std::string, Faults> faults{{"sound", {}},
                                                      {"busy", {.tableBusy = true}},
                                                      {"silent", {.tableSilent = true}},
                                                      {"blocked", {.positionNotReached = true}},
                                                      {"corrupt", {.corruptReplies = 1}}};
    if (event == "lamp") {
        lone.table.NoteInstrumentCurrent();
    } else if (faults.contains(event)) {
        lone.faults = faults.at(event);
    } else {
        return false;
    }
    return true;
}

void Play(const std::string& step, LoneTable& lone)
{
    const size_t equals = step.find('=');
    std::istringstream words(step.substr(0, equals));
    std::string request;
    int64_t wait = TableLine::Shortly;
    std::vector<int> numbers;
    for (std::string word; words >> word;) {
        if (word.front() == '@') {
            wait = Microseconds(word.substr(1));
        } else if (request.empty()) {
            request = Repeated(word);
        } else {
            numbers.push_back(std::stoi(word));
        }
    }
    if (equals == std::string::npos && Happens(request, lone)) {
        return;
    }
    if (numbers.size() == 3) {
        request = TableLine::MoveTo(request, numbers[0], numbers[1], static_cast<uint32_t>(numbers[2]));
    }
    const bool isRaw = request.starts_with('>');
    if (isRaw) {
        lone.line.SendRaw(request.substr(1));
    }
    const std::string replies = isRaw || request.empty() ? lone.line.Replies(wait) : lone.line.Ask(request, wait);
    if (equals != std::string::npos) {
        EXPECT_PRED2(Fits, replies, Trimmed(step.substr(equals + 1))) << step;
    }
}

class TableStory : public testing::TestWithParam<Story> {};

TEST_P(TableStory, GoesOn)
{
    LoneTable lone;
    std::istringstream lines(GetParam().steps);
    for (std::string line; std::getline(lines, line);) {
        std::istringstream steps(line);
        for (std::string step; std::getline(steps, step, '|');) {
            if (!Trimmed(step).empty()) {
                Play(Trimmed(step), lone);
            }
        }
    }
}

const Story Stories[] = {
    {"EveryImmediateCommand", R"(
        a0 = $a00000012
        a1 = $a100104023112
        a2 = $a200000019c000023ae00173d3800000025000000000000000000000000
        a3 = $a3000000000000000000000
        a4 = $a40000000000000000000000000
        a5 = $a5000fa0002
        k0 = $k0100000000000000 | k2 = $k200ce00000000003 | k3 = $k300ce00000000003
        d100c8 = $d1000c8 | p0 = $p0007d007d0
        s0 = $s00 | s1 = $s17 | uB = $uB0 | r = $r0)"},

    {"FoilAndButtonHaveOppositePolarity", R"(
        f4 = $f4000 | f1 = $f1001 | f2 = $f2003 | f4 = $f4003 | f0 = $f0002 | f3 = $f3000 | f4 = $f4000)"},

    {"CurrentIsSeenOnlyWhileArmed", R"(
        lamp | c2 = $c2000
        c1 = $c1000 | c2 = $c2000 | lamp | c2 = $c2001
        c0 = $c0000 | lamp | c2 = $c2000)"},

    {"RejectsWhatItDoesNotUnderstand", R"(
        i0 @2s = !i0 $i00
        x = &x | x5 = &x5 | a6 = &a6 | a = &a | u3 = &u3 | a01 = &a0 | r0 = &r | d1 = &d1 | d10 = &d1
        d1zzzz = &d1 | m0 = &m0 | m007d007d0 = &m0 | m007d007d0012cc = &m0 | m007d007d00xyz = &m0
        m407d007d0012c = &m4 | m007d007d007d0012c = &m0
        >;a035 = &a0 | >;r00 = &r)"},

    {"IgnoresLinesWithoutACommand", R"(
        > = | >; = | >a034 = | >00 = | >:!m008 = | >[;*5000] = &;; | a0 = $a00000012)"},

    {"TakesChecksumsInEitherCase", R"(
        >;uB0e = $uB0 | >;uB0E = $uB0)"},

    {"ResetPutsEverythingBackAndCounts", R"(
        i0 @2s = !i0 $i00
        f1 | f2 | c1 | d10100 | uA317598 = $uA0 | lamp | s1 = $s10 | a0 = $a007c0012
        r = $r0 | a0 @290ms = | @10ms =
        a0 = $a00000012 | f4 = $f4000 | c2 = $c2000 | u077 = $u07
        a2 = $a200000019c000023ae00173d3800000026.*
        i0 @2s = !i0 $i00 | m2 2010 2000 300 @100ms = !m2 $m20)"},

    {"FaultsShowOnTheLine", R"(
        busy | a0 = #a0 | r = #r | m007d007d0012c = #m0 | x1 = &x1
        silent | f1 = | sound | f4 = $f4001
        corrupt | a0 = $a00080012.. | a0 = $a00080012)"},

    {"InitializationTakesTimeAndMovesNothing", R"(
        m0 2000 2000 300 = !m0 $m07 | i1 = !i1 $i17
        i0 = !i0 | a0 = $a00010712 | @1498ms = | @1ms = $i00
        a0 = $a00020012 | p0 = $p0007d007d0 | a4 = $a400001fffe0003fffffffd0002)"},

    {"FinalReplyComesWhenTheArmStops", R"(
        i0 @2s = !i0 $i00
        m0 2000 2000 300 = !m0 $m00 | a3 = $a3000000000000000000000
        m0 4000 2000 100 = !m0 | @2061999us = | @1us = $m00)"},

    {"AScanWaitsForItsDelay", R"(
        i0 @2s = !i0 $i00 | d100c8 = $d1000c8
        m2 4000 2000 160 = !m2 | @190ms = | p0 = $p0007d007d0 | @20s = $m20
        m0 2000 2000 160 = !m0 | @50ms = | p0 = $p000f8b07d0 | @20s = $m00
        m2 9000 9000 160 = !m2 | a3 = $a3000000000000000000000 | @150ms = | @100ms = $m21)"},

    {"AnswersReadsWhileItMoves", R"(
        i0 @2s = !i0 $i00
        m0 6000 2000 100 = !m0 | a0 = $a00030012
        m0 2000 2000 100 = #m0 | i0 = #i0 | i1 = #i1 | uA317598 = $uA0 | u077 = $u06
        @1s = | p0 = $p000ba007d0 | @20s = $m00)"},

    {"HoldFollowsAMotionUnlessItIsReleased", R"(
        i0 @2s = !i0 $i00 | a0 = $a00020012 | s1 = $s10 | a0 = $a00040012 | s0 = $s00 | a0 = $a00020012
        m0 3000 2000 300 @20s = !m0 $m00 | a0 = $a00040012
        m0 2000 2000 300 = !m0 | s0 = $s00 | @20s = $m00 | a0 = $a00020012)"},

    {"RefusesTargetsAndSpeeds", R"(
        i0 @2s = !i0 $i00
        m0 2010 2000 1 @20s = !m0 $m00    | p0 = $p0007da07d0 | m0 3000 3000 0 @20s = !m0 $m02
        m1 3100 3000 400 @20s = !m1 $m10  | p1 = $p100c1c0bb8 | m0 3000 3000 401 @20s = !m0 $m02
        m0 8000 1000 300 @20s = !m0 $m00  | p0 = $p001f4003e8 | m0 8001 1000 300 @20s = !m0 $m01
        m0 -1000 3000 300 @20s = !m0 $m00 | p0 = $p00fc180bb8 | m0 -1001 3000 300 @20s = !m0 $m01
        m0 1000 -1000 300 @20s = !m0 $m00 | p0 = $p0003e8fc18 | m0 3000 -1001 300 @20s = !m0 $m01
        m1 6000 5000 300 @20s = !m1 $m10  | p1 = $p1017701388 | m1 7000 6000 300 @20s = !m1 $m11
        m0 1150 800 300 @20s = !m0 $m00   | p0 = $p00047e0320 | m0 500 500 300 @20s = !m0 $m01
        m0 7000 7000 300 @20s = !m0 $m01 | m0 -700 -999 300 @20s = !m0 $m01 | m0 -32000 -32000 300 @20s = !m0 $m01)"},

    {"AVisorTargetBringsTheVisorThere", R"(
        i0 @2s = !i0 $i00 | m1 5000 3000 300 @20s = !m1 $m10 | p1 = $p1013880bb8 | p0 = $p0012360d93)"},

    {"HomeIsTheTileAndCountersCount", R"(
        i0 @2s = !i0 $i00 | i1 @20s = !i1 $i10 | p0 = $p0003e80320
        m0 1000 3800 300 @20s = !m0 $m00 | m0 1000 4800 300 @20s = !m0 $m00
        a2 = $a200000019d000023b000173f640000002500000001000000020000022c)"},

    {"AnObstacleAndAResetStopTheArmOnItsWay", R"(
        i0 @2s = !i0 $i00 | blocked | m0 6000 2000 300 @20s = !m0 $m04 | p0 = $p000fa007d0 | sound
        m0 6000 2000 300 @400ms = !m0 | p0 = $p00133707d0 | r @20s = $r0 | p0 = $p00133a07d0 | a0 = $a00000012)"},

    {"FlashEveryRuleHasItsStatus", R"(
        u077 = $u07 | u277 = $u27 | u10e00000003 = $u17 | uA000000 = $uAa | uA31759 = $uA2 | uA317598 = $uA0
        u277 = $u28 | u10e00000003 = $u18 | u066 = $u07 | u078 = $u07 | u000 = $u03 | u0ff = $u03 | u087 = $u03
        u07 = $u02 | u0777 = $u02 | u0g7 = $u02
        u077 = $u00 | u277 @400ms = | @1ms = $u20 | u277 = $u28
        u077 = $u00 | u10e10000003 = $u14 | u10e00000013 = $u14 | u10e00000002 = $u15 | u10e00000005 = $u15
        u10e0000f003 = | @1ms = $u10 | u10e0000f003 = $u18
        u10e00010013 = $u15 | u10fe0000006 = $u19 | u11e00000003 = $u19 | u10000000003 = $u19 | u10e000003 = $u12
        u900001[00*128] = $u90 | u900001[00*127] = $u92 | u900001[00*129] = $u92 | u90000300 = $u95
        u910002[00*256] = $u90 | u910012[00*256] = $u95
        u8000000100002 = $u80652c | u80001dfff0001 = $u80ff | u80001dfff0002 = $u890000 | u8ffffffff0001 = $u8900
        u8000000000000 = $u80 | u80000000 = $u82 | u8000000000101 = $u85.*
        uB00 = $uB2 | uB = $uB0 | u077 = $u07)"},

    {"FlashErasingSetsAndProgrammingOnlyClearsBits", R"(
        uA264083 = $uA0
        u900002[f1*256] | u901002[f1*256] | u088 = $u00 | u11020000003 @2ms = $u10 | u8000102000002 = $u80f1f1
        u900002[8f*256] | u901002[8f*256] | u088 = $u00 | u11020000003 @2ms = $u10 | u8000103fe0003 = $u808181ff
        u088 = $u00 | u288 @401ms = $u20
        u088 = $u00 | u11020000003 @2ms = $u10 | u8000102000002 = $u808f8f)"},

    {"FlashABrokenConfigurationStopsTheTableUntilItIsRewritten", R"(
        uA317598 = $uA0 | u900001[ff*128] | u900801[00*128] | u077 | u10e00000003 @2ms = $u10
        k2 = $k22.* | i0 = !i0 $i09 | p0 = $p0200000000
        u077 | u277 @401ms = $u20
        k2 = $k21.* | k3 = $k300ce00000000003 | i0 = !i0 $i08 | m0 2000 2000 300 = !m0 $m08 | p1 = $p1100000000
        u90000110000000[00*8]f0ffffff[ff*112] = $u90 | u077 | u10e00000003 @2ms = $u10
        k2 = $k20.* | i0 @2s = !i0 $i00)"},
};

INSTANTIATE_TEST_SUITE_P(, TableStory, testing::ValuesIn(Stories),
                         [](const auto& story) { return std::string(story.param.name); });

// The host reckons with nothing but the ramp data where a sample was taken.
TEST(TableMotion, RampDataTellWhereTheArmIs)
{
    const std::tuple<int, int, uint32_t> moves[] = {
        {6000, 2000, 160}, {6000, 5000, 400}, {6000, 4990, 100}, {1500, 1500, 300},
        {1510, 1510, 400}, {1515, 1510, 40},  {1615, 1510, 400}, {1616, 1510, 1},
    };
    LoneTable lone;
    TableLine& line = lone.line;
    line.Ask("i0", TableLine::Long);
    for (const auto& [x, y, speed] : moves) {
        const std::string request = TableLine::MoveTo("m0", x, y, speed);
        SCOPED_TRACE(request);
        const Point start = lone.table.ApertureAt(lone.clock.Now());
        const double distance = std::hypot(x - start.x, y - start.y);
        ASSERT_EQ(line.Ask(request), "!m0");
        const std::string ramps = line.Ask("a3");
        const auto number = [&](size_t offset, size_t length) { return *FromHex(ramps.substr(offset, length)); };
        const double up = number(4, 8) / 1000.0;
        const double down = number(12, 8) / 1000.0;
        const double plateau = number(20, 4) * 10.0;
        const Motion& motion = lone.table.LastMotion();
        // Half a millisecond of way, and half a millimetre per second over the whole time.
        const double rounding = plateau * 0.001 + (speed * 10.0 > plateau ? 5.0 * down : 0.0) + 1e-9;
        EXPECT_LE(plateau, speed * 10.0);
        for (double t = 0.0; t < up + down; t += 0.003) {
            const double late = std::max(t - down, 0.0);
            const double reckoned =
                t <= up ? t * t * plateau / up * 0.5 : (t - up * 0.5) * plateau - late * late * plateau / up * 0.5;
            const Point place = lone.table.ApertureAt(motion.Begin() + static_cast<int64_t>(t * 1e6));
            ASSERT_NEAR(std::hypot(place.x - start.x, place.y - start.y), reckoned, rounding) << t;
            const double beside = (place.x - start.x) * (y - start.y) - (place.y - start.y) * (x - start.x);
            ASSERT_NEAR(beside, 0.0, 1e-6 * distance * distance + 1e-9) << "not on the straight line";
        }
        EXPECT_NEAR(1e-6 * static_cast<double>(motion.End() - motion.Begin()), up + down, 0.0011);
        EXPECT_EQ(line.Replies(TableLine::Long), "$m00");
        const Point end = lone.table.ApertureAt(lone.clock.Now());
        EXPECT_EQ(end.x, x);
        EXPECT_EQ(end.y, y);
    }
}

TEST(TableState, OutlivesItsTableAndIsTakenWholeOrNotAtAll)
{
    const std::string file = testing::TempDir() + "table.state";
    std::filesystem::remove(file);
    LoneTable first;
    first.table.KeepIn(file);
    first.line.Ask("i0", TableLine::Long);
    first.line.Ask(TableLine::MoveTo("m0", 3001, 2503, 300), TableLine::Long);
    first.line.Ask("uA264083");
    first.line.Ask("u088");
    first.line.Ask("u90000155" + std::string(254, 'a'));
    EXPECT_EQ(first.line.Ask("u11000000003", TableLine::Long), "$u10");
    const std::vector<std::string> asked = {"p0", "a2", "u8000100000010"};
    std::map<std::string, std::string> answers;
    for (const std::string& request : asked) {
        answers[request] = first.line.Ask(request);
    }

    LoneTable second;
    EXPECT_EQ(second.line.Ask("p0"), "$p0007d007d0") << "where it is delivered";
    second.table.KeepIn(file);
    for (const std::string& request : asked) {
        EXPECT_EQ(second.line.Ask(request), answers[request]);
    }
    second.line.Ask("i0", TableLine::Long);
    second.table.KeepIn({});
    second.line.Ask("i1", TableLine::Long);
    EXPECT_EQ(TableState::Load(file).arm.x, 3001.0) << "no longer kept";
    const std::filesystem::path folder = testing::TempDir() + "table.folder";
    std::filesystem::create_directory(folder);
    first.table.KeepIn(folder / "state");
    std::filesystem::remove_all(folder);
    EXPECT_EQ(first.table.KeptIn(), folder / "state");
    first.line.Ask("i1", TableLine::Long);
    EXPECT_EQ(first.table.KeptIn(), "") << "given up";

    // What another program is writing at this moment is none of this one's business.
    std::ofstream(file + ".1.tmp") << "half";
    first.table.KeepIn(file);
    first.line.Ask("i1", TableLine::Long);
    EXPECT_EQ(first.table.KeptIn(), file);
    EXPECT_EQ(std::filesystem::file_size(file + ".1.tmp"), 4u);
    EXPECT_FALSE(std::filesystem::exists(file + ".2.tmp")) << "nothing is left beside the file";
    std::filesystem::remove(file + ".1.tmp");
    std::filesystem::create_directory(folder);
    EXPECT_THROW(first.table.KeepIn(folder), std::runtime_error);
    std::filesystem::remove(folder);

    const auto resealed = [](std::string text) {
        uint32_t sum = 0x811c9dc5;
        for (const char character : text) {
            sum = (sum ^ static_cast<uint8_t>(character)) * 0x01000193;
        }
        return text + "checksum " + ToHex(sum, 8) + "\n";
    };
    const std::string head = "J4TAVLA-TABLE 1\n";
    for (const auto& [text, reason] : std::map<std::string, std::string>{
             {"CGATS.17\n", "line 1: this is no state of a table."},
             {resealed(head).substr(0, 30), "line 1: the checksum is not that"},
             {resealed(head) + "x", "line 2: the checksum is not that"},
             {resealed(head + "arm 1 nan\n"), "line 2: 'nan' is no value of 'arm'."},
             {resealed(head + "resets 1\narm 1\n"), "line 3: 'arm' is cut."},
             {resealed(head + "movements -1\n"), "line 2: '-1' is no value of 'movements'."},
             {resealed(head + "flash 1e000 " + std::string(64, '0') + "\n"), "line 2: '1e000' is no row of the flash."},
             {resealed(head + "flash 00000 " + std::string(64, 'g') + "\n"), "line 2: 'gg"},
             {resealed(head + "colour 1\n"), "line 2: 'colour' is unknown."}}) {
        std::ofstream(file, std::ios::binary) << text;
        try {
            second.table.KeepIn(file);
            ADD_FAILURE() << text;
        } catch (const std::runtime_error& error) {
            EXPECT_TRUE(std::string(error.what()).starts_with(reason)) << error.what();
        }
        EXPECT_EQ(second.line.Ask("p0"), "$p0003e80320") << "as it was";
    }
}

TEST(TableCurrent, CountsForACommandThatIsStillInWork)
{
    LoneTable lone;
    lone.line.SendRaw(";c1" + WireChecksum(";c1"));
    lone.clock.Advance(TableLine::Shortly);
    lone.table.NoteInstrumentCurrent();
    EXPECT_EQ(lone.line.Ask("c2"), "$c1000 $c2001");
}

}  // namespace
}  // namespace J4Bench
