// The platform's USB channel by itself: what is sent, what comes back, byte for byte, and how failures read.
#include "tests/usb/UsbChannelTest.h"

#include <algorithm>

namespace J4Test {
namespace {

using testing::ElementsAre;

TEST_F(UsbChannelTest, TablesAreCountedAndOpenedInTheOrderOfTheirSockets)
{
    J4Bench::Bench::Instance().SetTableCount(UsbStand::Sockets);
    for (unsigned socket = UsbStand::Sockets - 1; socket > 0; --socket) {
        Stand().Plug(socket, {.table = socket});
    }
    unsigned short count = 0;
    usb->Scan(count);
    EXPECT_EQ(count, UsbStand::Sockets);
    for (unsigned short i = 0; i < count; ++i) {
        usb->Open(i);
        EXPECT_EQ(SerialNumber(), "64000" + std::to_string(i + 1));
        usb->Close();
    }
    EXPECT_EQ(Thrown([&] { usb->Open(count); }), notFound);
    Replug();
    usb->Open(0);
    EXPECT_EQ(SerialNumber(), "640001") << "the newest device, in the first socket";
    usb->Close();
}

TEST_F(UsbChannelTest, WithoutATableThereIsNothingToOpen)
{
    Stand().Unplug(0);
    unsigned short count = 7;
    EXPECT_EQ(Thrown([&] { usb->Scan(count); }), notFound);
    EXPECT_EQ(count, 7);
    EXPECT_EQ(Thrown([&] { usb->Open(0); }), notFound);
    for (const auto& [name, call] : Calls()) {
        EXPECT_THAT(Thrown(call), testing::StartsWith(Text(name, "")));
    }
    usb->Close();
}

TEST_F(UsbChannelTest, FailuresNameTheCallAndTheError)
{
    const UsbWords& words = Stand().Words();
    for (const auto& [name, call] : Calls()) {
        for (const auto& [fault, error] : {std::pair(UsbEnd::Gone, words.gone), std::pair(UsbEnd::Removed, words.gone),
                                           std::pair(UsbEnd::Stalled, words.stalled)}) {
            Open();
            table->Fail(0, fault);
            // A stall of the first question is followed by one in another language.
            const bool asksAgain = name == "libusb_get_string_descriptor" && fault == UsbEnd::Stalled;
            EXPECT_EQ(Thrown(call), asksAgain ? "" : Text(name, error)) << name << " " << error;
            if (table->isRemoved) {
                EXPECT_NE(Thrown(call), "") << "and stays so";
            } else {
                EXPECT_EQ(Thrown(call), "") << name << " works after: " << error;
            }
            usb->Close();
            Replug();
        }
    }
}

TEST_F(UsbChannelTest, ReadsWhatComesUpToTheLargestTransfer)
{
    Open();
    Bytes large(0x20000);
    std::generate(large.begin(), large.end(), [value = 0u]() mutable { return static_cast<uint8_t>(++value % 251); });
    const struct {
        size_t room;
        size_t length;
        const char* request;
    } cases[] = {{0x20000, 0x20000, "in 131072"},
                 {0x20000, 66, "in 131072"},
                 {512, 2, "in 512"},
                 {512, 0, "in 512"},
                 {64, 64, "in 64"}};
    for (const auto& transfer : cases) {
        const Bytes sent(large.begin(), large.begin() + static_cast<std::ptrdiff_t>(transfer.length));
        table->deliveries.push_back(sent);
        EXPECT_TRUE(Read(transfer.room) == sent) << transfer.length;
        EXPECT_THAT(table->TakeRecord(), ElementsAre(transfer.request));
    }
}

TEST_F(UsbChannelTest, ALateTransferIsCancelledAndTheChannelGoesOn)
{
    Open();
    table->Fail(0, UsbEnd::Never, 3);
    EXPECT_EQ(Thrown([&] { Write(";a034\r"); }), Text(Stand().Words().write, Stand().Words().timedOut));
    table->Fail(0, UsbEnd::Never);
    EXPECT_EQ(Thrown([&] { Read(64); }), Text(Stand().Words().read, Stand().Words().timedOut));
    EXPECT_THAT(table->TakeRecord(), ElementsAre("out ;a0", "cancel", "in 64", "cancel"));
    Write("34\r");
    EXPECT_THAT(Read(64), testing::SizeIs(testing::Ge(2u)));
}

TEST_F(UsbChannelTest, SerialNumbersFitIntoTheRoom)
{
    const size_t longest = Stand().Words().longestSerial;
    const std::pair<TableDevice::Traits, std::string> cases[] = {
        {{}, "640001"},
        {{.serial = StringDescriptor(std::string(257, '7'))}, std::string(longest, '7')},
        {{.hasSerial = false}, ""},
        {{.serial = StringDescriptor("")}, ""},
        {{.serial = StringDescriptor(std::string(126, 'S'))}, std::string(126, 'S')},
        {{.serial = Bytes{2}}, ""},
        {{.serial = Bytes{255, 3, 'A', 0}}, "A"},
        {{.serial = Bytes{8, 3, 'A', 0, 0, 0, 'C', 0}}, "A"},
        {{.serial = Bytes{6, 3, 0x3A, 0x26, 0xE9, 0}}, "?\xE9"},
    };
    for (const auto& [traits, expected] : cases) {
        Replug(traits);
        usb->Open(0);
        EXPECT_EQ(SerialNumber(), expected);
        usb->Close();
    }
}

}  // namespace
}  // namespace J4Test
