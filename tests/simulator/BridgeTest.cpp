#include "simulator/table/Bridge.h"

#include <gtest/gtest.h>

#include <utility>
#include <vector>

#include "trace/WireText.h"

namespace J4Bench {
namespace {

using J4Trace::ToHex;
using J4Trace::WireChecksum;

class BridgeTest : public testing::Test {
protected:
    BridgeTest()
    {
        bridge.Control(3, 52);
        bridge.Control(4, 8);
    }

    void Send(const std::string& request)
    {
        EXPECT_EQ(bridge.Write(";" + request + WireChecksum(";" + request) + "\r"), Bridge::Status::Done);
    }

    std::vector<uint8_t> Read(size_t room = 131072)
    {
        std::vector<uint8_t> buffer(room);
        EXPECT_EQ(bridge.Read(buffer.data(), room), Bridge::Status::Done);
        buffer.resize(room);
        return buffer;
    }

    /// What a transfer carries, and a test of its status bytes.
    static std::string Payload(const std::vector<uint8_t>& transfer)
    {
        std::string text;
        for (size_t i = 0; i < transfer.size(); ++i) {
            if (i % 64 >= 2) {
                text += static_cast<char>(transfer[i]);
            } else if (i % 64 == 0) {
                EXPECT_EQ(transfer[i] & 1, 1) << i;
            }
        }
        return text;
    }

    /// What comes within 50 ms of a request.
    std::string Heard(const std::string& request)
    {
        Send(request);
        clock.Advance(50000);
        return Payload(Read());
    }

    BenchClock clock;
    Journal journal{clock};
    Faults faults;
    TableController table{clock, faults};
    Bridge bridge{clock, journal, faults, table, "640001"};
};

TEST_F(BridgeTest, IdleLineGivesTwoBytesEverySixteenMilliseconds)
{
    Read();
    for (int i = 0; i < 3; ++i) {
        const int64_t before = clock.Now();
        EXPECT_EQ(Read().size(), 2u);
        EXPECT_EQ(clock.Now() - before, 16000);
    }
    clock.Advance(100000);
    const int64_t before = clock.Now();
    EXPECT_EQ(Read().size(), 2u);
    EXPECT_EQ(clock.Now(), before) << "a packet that is long due leaves at once";
}

TEST_F(BridgeTest, PacksRepliesWhichTakeTheirTimeOnTheLine)
{
    Read();
    // A reply has eight characters around its data; a full packet makes the transfer go on.
    const std::pair<uint32_t, size_t> replies[] = {
        {26, 60 + 2}, {27, 64 + 2}, {57, 64 + 60 + 2}, {58, 2 * 64 + 2}, {256, 8 * 64 + 24 + 2}};
    for (const auto& [count, size] : replies) {
        SCOPED_TRACE(count);
        const std::string request = "u800000000" + ToHex(count, 4);
        const int64_t sent = clock.Now();
        Send(request);
        std::string text;
        while (text.empty() || text.back() != '\r') {
            text += Payload(Read());
            ASSERT_LT(clock.Now() - sent, 1000000);
        }
        EXPECT_EQ(text.substr(0, 5), ":$u80");
        const double line = 173.333 * static_cast<double>(18 + text.size()) + 500;
        EXPECT_GE(static_cast<double>(clock.Now() - sent), line - 1);
        EXPECT_LE(static_cast<double>(clock.Now() - sent), line + 16001);

        Send(request);
        clock.Advance(200000);
        const std::vector<uint8_t> transfer = Read();
        EXPECT_EQ(transfer.size(), size);
        EXPECT_EQ(Payload(transfer), text);
    }
}

TEST_F(BridgeTest, LineMustBeSetUpLikeTheTables)
{
    const auto heard = [this](uint16_t divisor, uint16_t format) {
        EXPECT_EQ(bridge.Control(3, divisor), Bridge::Status::Done);
        EXPECT_EQ(bridge.Control(4, format), Bridge::Status::Done);
        return Heard("a0");
    };
    for (const uint16_t divisor : {1, 26, 104}) {
        EXPECT_EQ(heard(divisor, 8), "") << divisor;
    }
    EXPECT_EQ(heard(52, 7), "");
    bridge.Control(4, 8);
    bridge.Write("\r");
    EXPECT_EQ(Heard("a0"), ":$a00000012be\r");
}

TEST_F(BridgeTest, PurgesWhatLiesInItsBuffers)
{
    Send("a0");
    EXPECT_EQ(bridge.Control(0, 2), Bridge::Status::Done);
    clock.Advance(50000);
    EXPECT_EQ(Payload(Read()), "") << "not yet sent";
    for (const uint16_t received : {1, 0}) {
        Send("a0");
        clock.Advance(50000);
        EXPECT_EQ(bridge.Control(0, received), Bridge::Status::Done);
        EXPECT_EQ(Payload(Read()), "") << received;
    }
    EXPECT_EQ(bridge.Control(77, 0), Bridge::Status::Stalled);
}

TEST_F(BridgeTest, UnplugsAfterTheGivenNumberOfTransfers)
{
    faults.unplugAfterTransfers = 2;
    EXPECT_EQ(bridge.Write(";"), Bridge::Status::Done);
    EXPECT_EQ(Read().size(), 2u);
    size_t room = 64;
    uint8_t buffer[64];
    EXPECT_EQ(bridge.Read(buffer, room), Bridge::Status::Removed);
    EXPECT_EQ(room, 0u);
    EXPECT_EQ(bridge.Write(";"), Bridge::Status::Removed);
    EXPECT_EQ(bridge.Control(0, 0), Bridge::Status::Removed);
    faults.tableUnplugged = false;
    EXPECT_EQ(bridge.Probe(), Bridge::Status::Done);
}

TEST_F(BridgeTest, JournalHasWholeLinesInTheOrderOfTheHost)
{
    journal.Enable(true);
    bridge.Write(";a0");
    bridge.Write("34\r");
    bridge.Control(2, 5);
    clock.Advance(50000);
    EXPECT_EQ(journal.Take(), "wire > ;a034\nusb control 2 5\n");
    Read();
    EXPECT_EQ(journal.Take(), "wire < :$a00000012be\n");
    EXPECT_EQ(journal.Take(), "");
}

}  // namespace
}  // namespace J4Bench
