#include <functional>

#include "tests/unit/Channel.h"

namespace J4Test {
namespace {

using namespace Kestrelon::DeviceDriver::J4T::Communication;

struct Machine : Channel {
    Machine() { motors->SetLimits(-9000, 9000, -9000, 9000, 10, 400, 5000, 4000, 500, 300); }

    Kestrelon::Utilities::Tools::SmartPointer<j4TableComMotors> motors = manager.GetMotors();
};

TEST(Motors, CommandsOnTheWire)
{
    Machine machine;
    const auto motors = machine.motors;
    const struct {
        std::function<void()> call;
        const char* request;
        Strings replies;
    } cases[] = {
        {[&] { motors->Initialize(); }, "i0", {"!i0", "$i00"}},
        {[&] { motors->Initialize(); }, "i0", {"$i00"}},
        {[&] { motors->GoHome(); }, "i1", {"!i1", "$i10"}},
        {[&] { motors->Move(1000, 2000, 300, false, false); }, "m003e807d0012c", {"!m0", "$m00"}},
        {[&] { motors->Move(2000, 2500, 10, true, false); }, "m107d009c4000a", {"!m1", "$m10"}},
        {[&] { motors->Move(1000, 2000, 400, false, true); }, "m203e807d00190", {"!m2", "$m20"}},
        {[&] { motors->Move(2000, 2500, 300, true, true); }, "m307d009c4012c", {"!m3", "$m30"}},
        {[&] { motors->Move(-1000, 2000, 300, false, false); }, "m0fffffc1807d0012c", {"!m0", "$m00"}},
        {[&] { motors->Move(0, 5000, 300, false, false); }, "m000001388012c", {"!m0", "$m00"}},
        {[&] { motors->HoldPosition(true); }, "s1", {"$s10"}},
        {[&] { motors->HoldPosition(false); }, "s0", {"$s00"}},
        {[&] { motors->SetScanDelay(200); }, "d100c8", {"$d1000c8"}},
        {[&] { motors->SetScanDelay(65535); }, "d1ffff", {"$d10ffff"}},
    };
    for (const auto& test : cases) {
        Strings frames;
        for (const std::string& reply : test.replies) {
            frames.push_back(Reply(reply));
        }
        machine.usb.Expect(test.request, frames);
        EXPECT_EQ(Thrown(test.call), "") << test.request;
    }
    EXPECT_EQ(machine.usb.idlePolls, 0);
    EXPECT_TRUE(ScriptedClock::sleeps.empty());
}

TEST(Motors, LongOperationsAreGivenTheirTime)
{
    const struct {
        void (*call)(j4TableComMotors&);
        const char* request;
        const char* accepted;
        int polls;
    } cases[] = {
        {[](j4TableComMotors& motors) { motors.Initialize(); }, "i0", "!i0", 625},
        {[](j4TableComMotors& motors) { motors.GoHome(); }, "i1", "!i1", 938},
        {[](j4TableComMotors& motors) { motors.Move(1000, 2000, 300, false, false); }, "m003e807d0012c", "!m0", 938},
        {[](j4TableComMotors& motors) { motors.HoldPosition(true); }, "s1", "!s1", 125},
    };
    for (const auto& test : cases) {
        Machine machine;
        machine.usb.Expect(test.request, {Reply(test.accepted)});
        EXPECT_EQ(Thrown([&] { test.call(*machine.motors); }), "CommunicationTimeoutException: Read timeout.");
        EXPECT_EQ(machine.usb.idlePolls, test.polls) << test.request;
    }
}

TEST(Motors, AMoveIsOpenUntilItsEndIsRead)
{
    Machine machine;
    machine.usb.Expect("m003e807d0012c", {Reply("!m0")});
    j4TableComCommand move = machine.motors->MoveStart(1000, 2000, 300, false, false);
    EXPECT_EQ(machine.usb.idlePolls, 0);
    EXPECT_EQ(move.acknowledge, AcknowledgeAccepted);
    machine.usb.Deliver(Reply("$m04"));
    EXPECT_EQ(Thrown([&] { machine.motors->MoveEnd(move); }), "PositionNotReachedException: Current limit reached.");

    machine.usb.Expect("m003e807d0012c", {Reply("#m0")});
    EXPECT_EQ(Thrown([&] { machine.motors->Move(1000, 2000, 300, false, false); }),
              "DeviceErrorException: Device busy.");
}

TEST(Motors, PositionsAreSigned)
{
    Machine machine;
    int32_t x = 0;
    int32_t y = 0;
    machine.usb.Expect("p0", {Reply("$p00ff3807d0")});
    machine.motors->GetPosition(x, y, false);
    EXPECT_EQ(x, -200);
    EXPECT_EQ(y, 2000);
    machine.usb.Expect("p1", {Reply("$p107FFF8000")});
    machine.motors->GetPosition(x, y, true);
    EXPECT_EQ(x, 32767);
    EXPECT_EQ(y, -32768);
    machine.usb.Expect("p0", {Reply("$p0100010001")});
    EXPECT_EQ(Thrown([&] { machine.motors->GetPosition(x, y, false); }), "FirmwareException: No config block.");
    EXPECT_EQ(x, 32767) << "left alone";
}

TEST(Motors, EveryErrorOfEveryCommandHasItsWords)
{
    const std::string unknown = "DeviceErrorException: unknown error - ";
    const std::string failed = "DeviceErrorException: Device initialization failed : ";
    const struct {
        const char* request;
        char error;
        std::string thrown;
    } cases[] = {
        {"i0", '1', failed + "Position out of range. (1)."},
        {"i0", '2', failed + "unknown error (2)."},
        {"i0", '3', failed + "Maximum accuracy exceeded. (3)."},
        {"i0", '4', failed + "Current limit reached. (4)."},
        {"i0", '5', failed + "Null indices not fount. (5)."},
        {"i0", '6', failed + "Initialisation interrupted. (6)."},
        {"i0", '7', failed + "Invalid command in current mode. (7)."},
        {"i0", '8', failed + "No configuration data available. (8)."},
        {"i0", '9', failed + "Invalid configuration data. (9)."},
        {"i0", 'A', failed + "Wrong hardware. (10)."},
        {"i0", 'b', failed + "unknown error (11)."},
        {"i1", '5', "DeviceErrorException: Can't find white plate (5)."},
        {"i1", 'Z', "DeviceErrorException: Can't find white plate (35)."},
        {"m003e807d0012c", '1', "IllegalPositionException: Position out of range."},
        {"m003e807d0012c", '2', "ResourceException: Speed out of range."},
        {"m003e807d0012c", '3', "PositionNotReachedException: Maximum accuracy exceeded."},
        {"m003e807d0012c", '4', "PositionNotReachedException: Current limit reached."},
        {"m003e807d0012c", '5', unknown + "\x05"},
        {"m003e807d0012c", '7', unknown + "\x07"},
        {"m003e807d0012c", '8', "FirmwareException: No configuration data available."},
        {"m003e807d0012c", '9', "FirmwareException: Invalid configuration data."},
        {"m003e807d0012c", 'a', unknown + "\n"},
        {"p0", '1', "FirmwareException: No config block."},
        {"p0", '2', "FirmwareException: Logical error in config block."},
        {"p0", '3', unknown + "\x03"},
        {"s1", '1', unknown + "\x01"},
        {"d100c8", 'Z', unknown + "#"},
    };
    for (const auto& test : cases) {
        Machine machine;
        const std::string header = std::string(test.request, 2);
        const bool twoStages = header[0] == 'i' || header[0] == 'm';
        const std::string data = header == "p0" ? "00000000" : header == "d1" ? "00c8" : "";
        Strings replies{Reply("$" + header + test.error + data)};
        if (twoStages) {
            replies.insert(replies.begin(), Reply("!" + header));
        }
        machine.usb.Expect(test.request, replies);
        EXPECT_EQ(Thrown([&] {
                      j4TableComMotors& motors = *machine.motors;
                      int32_t x = 0;
                      int32_t y = 0;
                      switch (header[0]) {
                      case 'i':
                          return header[1] == '0' ? motors.Initialize() : motors.GoHome();
                      case 'm':
                          return motors.Move(1000, 2000, 300, false, false);
                      case 'p':
                          return motors.GetPosition(x, y, false);
                      case 's':
                          return motors.HoldPosition(true);
                      default:
                          return motors.SetScanDelay(200);
                      }
                  }),
                  test.thrown)
            << test.request << " with " << test.error;
    }
    Machine machine;
    machine.usb.Expect("m003e807d0012c", {Reply("!m0"), Reply("!m0")});
    EXPECT_EQ(Thrown([&] { machine.motors->Move(1000, 2000, 300, false, false); }), unknown + "\xff");
}

TEST(Motors, ARefusedMoveLeavesTheTableAlone)
{
    const struct {
        int32_t x;
        uint16_t speed;
        const char* thrown;
    } cases[] = {
        {1000, 9, "ResourceException: Invalid speed (9 != [10,400])."},
        {1000, 401, "ResourceException: Invalid speed (401 != [10,400])."},
        {1000, 0, "ResourceException: Invalid speed (0 != [10,400])."},
        {9001, 401, "IllegalPositionException: Invalid position (9001/2000)."},
    };
    for (const auto& test : cases) {
        Machine machine;
        EXPECT_EQ(Thrown([&] { machine.motors->Move(test.x, 2000, test.speed, false, false); }), test.thrown);
        EXPECT_TRUE(machine.usb.journal.empty());
    }
    Machine machine;
    EXPECT_EQ(Thrown([&] { machine.motors->CheckSpeed(10); }), "");
    EXPECT_EQ(Thrown([&] { machine.motors->CheckSpeed(400); }), "");
}

}  // namespace
}  // namespace J4Test
