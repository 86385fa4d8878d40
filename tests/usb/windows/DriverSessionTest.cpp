// What only the kernel driver has, under whole calls and under the channel: its requests in their order, the steps of
// the opening, and devices that come and go in its lists.
#include "tests/usb/UsbChannelTest.h"
#include "tests/usb/windows/DriverStand.h"

namespace J4Test {
namespace {

using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::StartsWith;

struct DriverSessionTest : OverDriver<UsbSessionTest> {
    static void ExpectNoConnection(const std::string& message)
    {
        ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected, message});
        EXPECT_THAT(Stand().Held(), testing::IsEmpty()) << message;
    }
};

struct UsbWinTest : OverDriver<UsbChannelTest> {};

const Lines opening = {
    "1 open",
    "1 8094206C out 12",
    "1 80942028",
    // configuration 0 with one interface, number 0, setting 0, transfers of up to 131072 bytes
    "1 80942024 000001000000000000000200" + std::string(2 * 248, '0'),
    "1 8094203C out 8",
    "1 80942040 0001000000000000",
    "2 open",
    "2 8094206C out 12",
    "2 80942078 02",
    "3 open",
    "3 8094206C out 12",
    "3 80942078 81",
    "2 80942080",
    "3 80942080",
};
const Lines clearing(10, "in 131072");
const Lines bridgeSetUp = {
    "1 80942035 000000000200000000000000000000000000", "1 80942035 000000000200000000000000000001000000",
    "1 80942035 000000000200000000000000000002000000", "1 80942035 000000000200000000000000000334000000",
    "1 80942035 000000000200000000000000000408000000",
};
const Lines presence = {"1 80942006 0000000001000000 out 18", "1 80942006 0000000003030000 out 516"};
const Lines closing = {"1 80942054", "3 80942084", "2 80942084", "3 close", "2 close", "1 close"};

TEST_F(DriverSessionTest, OpensSetsUpAndClosesInOrder)
{
    EXPECT_EQ(J4_IsTableConnected(), 0) << GetOption("LastError");
    const Lines start = Joined({opening, clearing, bridgeSetUp, {"out ;a034"}});
    Lines lines = table->TakeRecord();
    ASSERT_GT(lines.size(), start.size() + presence.size());
    const auto traffic = lines.begin() + static_cast<ptrdiff_t>(start.size());
    const auto end = lines.end() - static_cast<ptrdiff_t>(presence.size());
    EXPECT_THAT(Lines(lines.begin(), traffic), ElementsAreArray(start));
    EXPECT_THAT(Lines(traffic, end), Each(testing::AnyOf("in 131072", StartsWith("out ;"))));
    EXPECT_THAT(Lines(end, lines.end()), ElementsAreArray(presence)) << "is the table there?";
    Set("Reset", "All");
    EXPECT_THAT(table->TakeRecord(), ElementsAreArray(Joined({leaving, closing})));
}

TEST_F(DriverSessionTest, ATableThatCannotBeOpenedIsNone)
{
    DriverStand& stand = DriverStand::Instance();
    stand.Unlink(0);
    stand.Announce(0);
    ExpectNoConnection(notFound);
    stand.Link(0);
    // The table goes between the opening of its device and that of its pipes.
    TheRelay().Inject(UsbIo::ControlSetConfiguration, {}, [&stand] { stand.Unlink(0); });
    ExpectNoConnection(
        UsbWords::Failure("Bind(out)", "Error code 0xE0001100: Device not found or acquired for exclusive use."));
    const size_t longer = 170;
    stand.Link(0, longer);
    // Another one comes: this one is meant.
    std::shared_ptr<TableDevice> other;
    TheRelay().Inject(UsbIo::ControlSetConfiguration, {}, [&other] { other = Stand().Plug(1); });
    EXPECT_EQ(J4_IsTableConnected(), 0) << GetOption("LastError");
    EXPECT_THAT(other->TakeRecord(), testing::IsEmpty());
}

TEST_F(UsbWinTest, PipeNumbersAreIgnoredAndAGoneDeviceCloses)
{
    Open();
    EXPECT_EQ(Thrown([&] { usb->Open(0); }), notFound) << "it is open";
    TheRelay().Inject(UsbIo::ControlGetDescriptor, {});
    EXPECT_EQ(SerialNumber(), "") << "a descriptor of no length names no text";
    table->TakeRecord();
    Bytes buffer(64);
    unsigned long length = 64;
    usb->Read(7, buffer.data(), &length);
    EXPECT_EQ(length, 2u) << "the bridge has nothing but its status";
    usb->Write(-1, "\r", 1);
    for (const short pipe : {3, -1, 2, 1, 0}) {
        usb->Abort(pipe);
    }
    EXPECT_THAT(table->TakeRecord(), ElementsAre("in 64", "out ", "2 80942084", "3 80942084", "1 80942054"));
    table->isRemoved = true;
    EXPECT_EQ(Thrown([&] { usb->Read(Usb::PipeIn, buffer.data(), &length); }), Text("ReadSync", Stand().Words().gone));
    EXPECT_EQ(length, 0u);
    usb->Close();
    usb->Close();
}

}  // namespace
}  // namespace J4Test
