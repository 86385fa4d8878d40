// Frames on the line: requests, replies, waits and attempts.
#include "Utilities/Exceptions/TraceableException.h"
#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T::Communication;
using Kestrelon::Utilities::Exceptions::TraceableException;

constexpr const char* Lost = "CommunicationTimeoutException: Read timeout.";
constexpr const char* NoStart = "CommunicationTimeoutException: Missing ':'.";
constexpr const char* NoEnd = "CommunicationTimeoutException: Missing CR.";
constexpr const char* Damaged = "CommunicationDataException: Checksum not valid.";
constexpr const char* Refused = "GeneralCommunicationException: Invalid command (NAK).";
constexpr const char* Busy = "DeviceErrorException: Device busy.";
constexpr const char* Unknown = "GeneralCommunicationException: Unknown acknowledge.";

/// A reply to some other request, as long as the shortest frame of a command with sub-command.
const std::string Foreign = Reply("!m1");
const std::string Good = Reply("$a000a12f0");

/// Exchanges over a channel of its own, each with a command that tells status.
struct Frames : Channel {
    std::string Send()
    {
        return Thrown([this] { manager.GetInfo()->SendAndReceive(command); });
    }
    std::string Send2()
    {
        return Thrown([this] { manager.GetInfo()->SendAndReceive2(command); });
    }
    std::string Receive()
    {
        return Thrown([this] { manager.GetInfo()->Receive(command); });
    }

    j4TableComCommand command{'a', '0', 6};
};

TEST(Frames, RequestsAndChecksums)
{
    const struct {
        uint8_t command;
        uint8_t subCommand;
        const char* data;
        const char* written;
    } cases[] = {{'a', '0', "", "write ;a034"},
                 {'m', '0', "03e807d0012c", "write ;m003e807d0012c37"},
                 {'r', ' ', "", "write ;r53"},
                 {'u', 'A', "317598", "write ;uA317598ce"},
                 {'z', '0', "aaY", "write ;z0aaY00"}};
    for (const auto& test : cases) {
        Frames frames;
        frames.command = j4TableComCommand(test.command, test.subCommand, 0);
        frames.command.SetSendData(test.data);
        EXPECT_EQ(frames.Send(), Lost);
        EXPECT_EQ(frames.usb.journal, Strings{test.written});
        EXPECT_EQ(frames.usb.requests.size(), 1u) << "whole, with its CR, in one transfer";
    }
    EXPECT_EQ(j4TableCommunication::CalculateChecksum("\xff"), 1);
    EXPECT_EQ(j4TableCommunication::CalculateChecksum(""), 0);
    for (const char* good : {":$a000a12f057", "\001ff", "\001FF", "00"}) {
        EXPECT_TRUE(j4TableCommunication::CheckChecksum(good)) << good;
    }
    for (const char* bad : {":$a000a12f058", "0"}) {
        EXPECT_FALSE(j4TableCommunication::CheckChecksum(bad)) << bad;
    }
}

TEST(Frames, WhatBecomesOfAReply)
{
    constexpr int none = j4TableComCommand::NoErrorByte;
    const char* const noError = "CommunicationDataException: Invalid error byte.";
    const struct {
        const char* name;
        std::string line;
        const char* thrown;
        int errorByte = none;
        const char* data = "";
        int32_t expectedLength = 6;
    } cases[] = {{"good", ":$a000a12f057\r", "", 0, "0a12f0"},
                 {"silence", "", Lost},
                 {"short header", ":$a000", Lost},
                 {"short data", Good.substr(0, 13), Lost},
                 {"error character alone", Reply("$a01"), Lost},
                 {"wrong start, good frame behind", "x" + Good, NoStart},
                 {"wrong start", ";" + Good.substr(1), NoStart},
                 {"tail of a long foreign frame", Reply("$p000102ff38") + Good, NoStart},
                 {"no CR behind data", Good.substr(0, 11) + "571", NoEnd},
                 {"no CR behind header", ":!a0141", NoEnd},
                 {"unknown acknowledge", Reply("?a000a12f0"), "CommunicationDataException: No valid acknowledge."},
                 {"damaged", ":$a000a12f157\r", Damaged},
                 {"damaged checksum", ":$a000a12f0x7\r", Damaged},
                 {"refused", Reply("&a0"), Refused},
                 {"refused with a body", Reply("&a05"), Refused, 5, "da\r"},
                 {"busy", Reply("#a0"), Busy},
                 {"another command", Reply("!b0"), Lost},
                 {"another sub-command", Reply("!a1"), Lost},
                 // error characters are digits of base 36
                 {"9", Reply("$a090a12f0"), "", 9, "0a12f0"},
                 {"A", Reply("$a0A0a12f0"), "", 10, "0a12f0"},
                 {"a", Reply("$a0a0a12f0"), "", 10, "0a12f0"},
                 {"Z", Reply("$a0Z0a12f0"), "", 35, "0a12f0"},
                 {"z", Reply("$a0z0a12f0"), "", 35, "0a12f0"},
                 {"/", Reply("$a0/0a12f0"), noError},
                 {":", Reply("$a0:0a12f0"), noError},
                 {"@", Reply("$a0@0a12f0"), noError},
                 {"[", Reply("$a0[0a12f0"), noError},
                 {"`", Reply("$a0`0a12f0"), noError},
                 {"{", Reply("$a0{0a12f0"), noError},
                 {"blank", Reply("$a0 0a12f0"), noError},
                 // other lengths
                 {"longer than announced", Reply("$a000a12f0ffff"), "", 0, "0a12f0"},
                 {"accepted with a body", Reply("!a03123456"), "", 3, "123456"},
                 {"accepted with a short body", Reply("!a0312"), "", 3, "127e\r"},
                 {"accepted without a body", Reply("!a0"), ""},
                 {"no data announced", Reply("$a07"), "", 7, "", 0},
                 {"data not announced", Reply("$a07123"), "", 7, "", 0}};
    for (const auto& test : cases) {
        Frames frames;
        frames.command.expectedLength = test.expectedLength;
        frames.usb.Expect("a0", {test.line});
        EXPECT_EQ(frames.Send(), test.thrown) << test.name;
        EXPECT_EQ(frames.command.errorByte, test.errorByte) << test.name;
        EXPECT_EQ(frames.command.GetReceiveData(), test.data) << test.name;
        EXPECT_EQ(frames.command.ackTimeout, 2000u) << test.name;
        EXPECT_EQ(frames.command.answerTimeout, 2000u) << test.name;
        const bool answered = *test.thrown == '\0' || test.thrown == Refused || test.thrown == Busy;
        EXPECT_EQ(frames.command.acknowledge != AcknowledgeNone, answered) << test.name;
        if (answered) {
            EXPECT_EQ(frames.usb.idlePolls, 0) << test.name << ": nothing is waited for that does not come";
            EXPECT_EQ(frames.command.GetErrorText(), std::to_string(test.errorByte));
            EXPECT_EQ(frames.manager.ReadSerialData(1, 0), "") << test.name << ": read to its end";
        }
    }
    Frames frames;
    frames.command = j4TableComCommand('r', NoSubCommand, 0);
    frames.usb.Expect("r", {Reply("$r4")});
    EXPECT_EQ(frames.Send(), "");
    EXPECT_EQ(frames.command.errorByte, 4);
    EXPECT_EQ(frames.command.acknowledge, AcknowledgeData);

    // The trace of a byte that does not come begins with who waits for the frame's start or end, not with the read.
    for (const auto& [line, text] : {std::pair("x" + Good, NoStart), std::pair(std::string(":!a0141"), NoEnd)}) {
        frames.command = j4TableComCommand('a', '0', 6);
        frames.usb.Expect("a0", {line});
        TraceableException::traceInWhat = true;
        const std::string trace = frames.Send();
        TraceableException::traceInWhat = false;
        EXPECT_THAT(trace.substr(0, trace.find("(): ")), testing::AllOf(testing::StartsWith(text + std::string("\n\t")),
                                                                        testing::EndsWith("::ParseCommand")));
    }
}

// One idle poll of the bridge is 16 milliseconds of a time-out.
TEST(Frames, EveryReadHasItsTimeout)
{
    const struct {
        const char* name;
        std::string line;
        bool accepted;
        int polls;
    } cases[] = {{"first reply", "", false, 100},
                 {"first reply, started", ":$a", false, 100},
                 {"data", ":$a0012", false, 200},
                 {"CR", ":!a0012", false, 100},
                 {"start byte", "xxxxxxx", false, 100},
                 {"second reply", "", true, 200},
                 {"second reply, data", ":$a0012", true, 200},
                 {"second reply, CR", ":!a0012", true, 100},
                 {"second reply, start byte", "xxxxxxx", true, 200}};
    for (const auto& test : cases) {
        Frames frames;
        frames.command.ackTimeout = 1600;
        frames.command.answerTimeout = 3200;
        frames.command.acknowledge = test.accepted ? AcknowledgeAccepted : AcknowledgeNone;
        frames.usb.Deliver(test.line);
        EXPECT_NE(frames.Receive(), "");
        EXPECT_EQ(frames.usb.idlePolls, test.polls) << test.name;
    }
}

TEST(Frames, ForeignFramesShortenTheWait)
{
    const struct {
        uint32_t ackTimeout;
        std::vector<uint32_t> delays;  ///< until each foreign frame
        int polls;                     ///< of the wait that follows them
    } cases[] = {{2000, {}, 125},      {2000, {0}, 125},        {2000, {500}, 94},     {2000, {500, 500}, 63},
                 {2000, {1900}, 6},    {2000, {2000}, 5},  // nothing left; a read polls five times all the same
                 {2000, {2001}, 5},                        // spent, not wrapped around to weeks
                 {2000, {2500, 0}, 5}, {100000, {50000}, 3125}, {100000, {100001}, 5}, {4, {5}, 5}};
    for (const auto& test : cases) {
        Frames frames;
        ScriptedClock::Reset(0xFFFFFF00u);  // the tick wraps on the way
        frames.command.ackTimeout = test.ackTimeout;
        for (const uint32_t delay : test.delays) {
            frames.usb.Deliver(Foreign, delay);
        }
        EXPECT_EQ(frames.Send(), Lost);
        EXPECT_EQ(frames.usb.idlePolls, test.polls) << test.ackTimeout << " with " << test.delays.size();
        EXPECT_EQ(frames.command.ackTimeout, test.ackTimeout);
    }
    Frames frames;
    frames.command.answerTimeout = 500;
    frames.usb.Deliver(Foreign, 800);
    frames.usb.Deliver(":$a0012");
    EXPECT_EQ(frames.Send(), Lost);
    EXPECT_EQ(frames.usb.idlePolls, 5) << "the answer's time was spent, the first reply's was not";
    EXPECT_EQ(frames.command.ackTimeout, 2000u);
    EXPECT_EQ(frames.command.answerTimeout, 500u);
}

TEST(Frames, FourForeignFramesAreBorneFiveAreNot)
{
    for (const int count : {4, 5}) {
        Frames frames;
        for (int i = 0; i < count; ++i) {
            frames.usb.Deliver(Foreign);
        }
        frames.usb.Deliver(Good);
        EXPECT_EQ(frames.Send(), count == 4 ? "" : Unknown);
        EXPECT_EQ(frames.usb.idlePolls, 0);
        EXPECT_EQ(frames.command.acknowledge, count == 4 ? AcknowledgeData : AcknowledgeNone);
        EXPECT_EQ(frames.command.ackTimeout, 2000u);
        EXPECT_EQ(frames.manager.ReadSerialData(14, 0), count == 4 ? "" : Good) << "what follows stays on the line";
    }
}

TEST(Frames, TwoStagesEndWithTheSecondReply)
{
    Frames frames;
    frames.command.expectedLength = 0;
    for (const char* second : {"$a07", "&a0", "#a0", "!a0"}) {  // its acknowledge is not looked at
        frames.usb.Expect("a0", {Reply("!a0"), Reply(second)});
        EXPECT_EQ(frames.Send2(), "") << second;
        EXPECT_EQ(frames.command.errorByte, 7);
    }

    // The two halves on their own, around work of the caller.
    j4TableComCommand move('m', '0', 0);
    frames.usb.Expect("m0", {Reply("!m0")});
    frames.manager.GetInfo()->SendAndReceive(move);
    EXPECT_EQ(move.acknowledge, AcknowledgeAccepted);
    frames.usb.Expect("a0", {Reply("$a05")});
    EXPECT_EQ(frames.Send2(), "");
    EXPECT_EQ(frames.command.acknowledge, AcknowledgeData);
    frames.usb.Deliver(Reply("$m03"));
    frames.manager.GetInfo()->Receive(move);
    EXPECT_EQ(move.errorByte, 3);
}

TEST(Frames, OnlyLostAndDamagedRepliesAreTriedAgain)
{
    const std::string damaged = ":$a000a12f158\r";
    const struct {
        const char* name;
        int32_t retries;
        Strings replies;  ///< to the requests in turn
        const char* thrown;
        std::size_t requests;
    } cases[] = {{"no retries", 0, {damaged}, Damaged, 1},
                 {"one attempt", 1, {damaged}, Damaged, 1},
                 {"negative", -3, {damaged}, Damaged, 1},
                 {"two attempts", 2, {damaged, ""}, Lost, 2},
                 {"three attempts", 3, {"", damaged, ""}, Lost, 3},
                 {"second is good", 3, {damaged, Good}, "", 2},
                 {"second is refused", 3, {"", Reply("&a0")}, Refused, 2},
                 {"refused", 3, {Reply("&a0")}, Refused, 1},
                 {"busy", 3, {Reply("#a0")}, Busy, 1},
                 {"five foreign", 3, {Repeated(5, Foreign)}, Unknown, 1},
                 {"second reply lost", 2, {Reply("!a0"), Good}, "", 2}};
    for (const auto& test : cases) {
        Frames frames;
        frames.command.retries = test.retries;
        frames.command.retryDelay = 123;
        for (const std::string& reply : test.replies) {
            frames.usb.Expect("a0", {reply});
        }
        EXPECT_EQ(frames.Send2(), test.thrown) << test.name;
        EXPECT_EQ(frames.usb.requests.size(), test.requests) << test.name;
        EXPECT_EQ(ScriptedClock::sleeps, Sleeps(test.requests - 1, 123)) << test.name;
    }
    Frames frames;
    frames.command.retries = 3;
    frames.usb.FailAt("write");
    EXPECT_EQ(frames.Send2(), "CommunicationException: scripted failure of write");
    EXPECT_EQ(ScriptedClock::sleeps, Sleeps());
}

}  // namespace
}  // namespace J4Test
