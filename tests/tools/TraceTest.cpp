// Traces: frames in words, the document that has the same words, and the way of the arm.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tools/trace/ArmWay.h"
#include "tools/trace/Dialogue.h"
#include "tools/trace/WireCommands.h"
#include "trace/WireText.h"

namespace J4Tool {
namespace {

std::string Framed(const std::string& content) { return content + J4Trace::WireChecksum(content); }

TEST(WireFrame, SaysWhatTheBytesMean)
{
    const struct {
        const char* content;  ///< without checksum
        const char* text;
        bool isFailure;
    } frames[] = {
        {";a0", "GetStatus: status", false},
        {":$a000412f0", "GetStatus: mode 4 (the arm is held), byte 12, byte f0", false},
        {";m203e807d0012c", "MoveStart: move the sensor, as a scan, x 100.0 mm, y 200.0 mm, speed 300 mm/s", false},
        {";m1ffffffce0bb8012c", "MoveStart: move the visor, x -5.0 mm, y 300.0 mm, speed 300 mm/s", false},
        {":!m0", "MoveStart: accepted", false},
        {":$m04", "MoveStart: error 4: current limit reached", true},
        {":#m0", "MoveStart: busy", true},
        {":&a0", "GetStatus: refused: unknown command or bad checksum", true},
        {":$p10ffce0bb8", "GetPosition: x -5.0 mm, y 300.0 mm", false},
        {":$c000a", "J4CurrentInterrupt: done", false},
        {":$a30000000640000027100a0",
         "GetRampData: end of acceleration 100 ms, start of deceleration 625 ms, speed 160 mm/s", false},
        {";r", "Reset: the controller starts anew; the library waits 1 s", false},
        {":$r0", "Reset: done", false},
        {";uA317598", "Unlock: unlock a part of the flash, six decimal digits, id 317598", false},
        {":$u17", "CopyRamToFlash: error 7: sector locked (7)", true},
        {":$k21", "ConfigDataBlockStatus: error 1: ", true},
        {":$u80ff00", "ReadMemory: bytes 2", false},
        {";m203e8", "MoveStart: move the sensor, as a scan, x 100.0 mm, data of another length or form", true},
        {":$d10", "SetScanDelay: done, data of another length or form", true},
        {";z0", "no known command", true},
    };
    for (const auto& [content, text, isFailure] : frames) {
        const WireFrame frame(Framed(content));
        EXPECT_TRUE(frame.Text().starts_with(text)) << content << ": " << frame.Text();
        EXPECT_EQ(frame.IsFailure(), isFailure) << content;
    }
    EXPECT_EQ(WireFrame(";a035").Text(), "GetStatus: status, wrong checksum");
    for (const char* noise : {"", ";", ":", ";a", "\xff\xff\xff\xff", ":$a"}) {
        EXPECT_TRUE(WireFrame(noise).IsFailure()) << noise;
        EXPECT_FALSE(WireFrame(noise).Text().empty());
    }
}

TEST(WireCommand, TheDocumentHasTheSameWords)
{
    std::ostringstream document;
    document << std::ifstream(PROTOCOL_DOCUMENT).rdbuf();
    EXPECT_THAT(document.str(), testing::HasSubstr("|---|---|---|---|---|---|\n" + WireCommand::Document() + "\n"));
    EXPECT_THAT(document.str(), testing::HasSubstr("|---|---|---|\n" + WireCommand::ErrorDocument() + "\n"));
    for (const auto& [request, value] : {std::pair(0u, 0u), {0u, 1u}, {0u, 2u}}) {
        EXPECT_THAT(document.str(), testing::HasSubstr("| " + std::to_string(request) + " | " + std::to_string(value) +
                                                       " | " + BridgeRequestText(request, value) + " |"));
    }
    EXPECT_THAT(document.str(), testing::HasSubstr("| 0x0034 | " + BridgeRequestText(3, 0x34) + " |"));
    EXPECT_THAT(document.str(), testing::HasSubstr("| 0x0008 | " + BridgeRequestText(4, 8) + " |"));
}

/// Frames at their milliseconds, without checksums; those that begin with ":" are received.
std::vector<TraceEvent> Events(const std::vector<std::pair<int64_t, std::string>>& frames)
{
    std::vector<TraceEvent> events;
    for (const auto& [time, content] : frames) {
        events.push_back({time * 1000, {content[0] == ':' ? Kind::Received : Kind::Sent, Framed(content)}});
    }
    return events;
}

TEST(ArmWay, FollowsFromTheFrames)
{
    ArmWay way;
    for (const TraceEvent& event : Events({{0, ";i1"},
                                           {10, ":!i1"},
                                           {900, ":$i10"},
                                           {910, ";p0"},
                                           {920, ":$p0003e80320"},
                                           {1000, ";m007d00320012c"},  // 100 mm with 300 mm/s
                                           {1010, ":!m0"},
                                           {2000, ":$m00"},
                                           {2010, ";d100c8"},
                                           {2020, ";m2138807d000a0"},
                                           {2030, ":!m2"},
                                           {2040, ";a3"},
                                           {2050, ":$a30000000640000027100a0"},
                                           {3900, ":$m20"},
                                           {4000, ";m003e80320012c"},
                                           {4010, ":!m0"},
                                           {4100, ":$m04"},
                                           {4200, ";p1"},
                                           {4210, ":$p1000000000"},  // the visor's
                                           {4220, ";p0"},
                                           {4230, ":$p0005dc0320"},
                                           {5000, ";m107d00320012c"},
                                           {5010, ":!m1"},
                                           {5500, ";s0"}})) {
        way.Add(event);
    }
    way.End();
    const auto& motions = way.Motions();
    ASSERT_EQ(motions.size(), 5u);
    EXPECT_EQ(motions[0].kind, ArmMotion::Kind::Home);
    EXPECT_FALSE(motions[0].start) << "where it came from nobody knows";
    ASSERT_TRUE(motions[0].end) << "told by the position behind it";
    EXPECT_DOUBLE_EQ(motions[0].end->y, 80.0);
    // 300 mm/s are reached in 187.5 ms; 100 mm take 520.8.
    EXPECT_NEAR(static_cast<double>(motions[1].begin), 2000e3 - 520833, 1.0);
    EXPECT_EQ(motions[1].stop, 2000000);
    EXPECT_DOUBLE_EQ(motions[1].start->x, 100.0);
    EXPECT_EQ(motions[2].kind, ArmMotion::Kind::Scan);
    EXPECT_EQ(motions[2].begin, 2230000) << "behind the scan delay";
    EXPECT_EQ(motions[2].stop, 2230000 + 725000) << "before the end was heard of";
    EXPECT_EQ(motions[2].acceleration, 100000);
    EXPECT_EQ(motions[3].error, 4);
    ASSERT_TRUE(motions[3].end);
    EXPECT_DOUBLE_EQ(motions[3].end->x, 150.0) << "where it was blocked";
    EXPECT_TRUE(motions[4].isUnfinished);
    EXPECT_TRUE(motions[4].isVisor);
}

TEST(Dialogue, FoldsCallsThatAreAlike)
{
    const auto call = [](const char* name, const char* index, int32_t status) {
        J4Trace::JournalEntry begin{Kind::Call, name};
        begin.arguments = {index};
        J4Trace::JournalEntry end{Kind::Return, name};
        end.status = status;
        return std::vector<TraceEvent>{{0, begin}, {5, end}};
    };
    for (const bool isWhole : {false, true}) {
        std::vector<std::string> lines;
        Dialogue dialogue([&lines](const DialogueLine& line) { lines.push_back(line.text); }, isWhole);
        for (const auto& events :
             {call("A", "0", 0), call("A", "1", 0), call("A", "2", 0), call("A", "3", 7), call("B", "0", 0)}) {
            for (const TraceEvent& event : events) {
                dialogue.Add(event);
            }
        }
        dialogue.End();
        const std::vector<std::string> failed = {"A(3)", "A = 7", "B(0)", "B = 0"};
        std::vector<std::string> expected = {"A(0)", "A = 0"};
        if (isWhole) {
            expected.insert(expected.end(), {"A(1)", "A = 0", "A(2)", "A = 0"});
        } else {
            expected.push_back("... and 2 calls like it");
        }
        expected.insert(expected.end(), failed.begin(), failed.end());
        EXPECT_EQ(lines, expected);
    }
}

}  // namespace
}  // namespace J4Tool
