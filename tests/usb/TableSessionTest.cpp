// Whole calls with the shipped library for real tables: what an application sees of a table that works, is missing, or
// fails.
#include "tests/usb/UsbTest.h"

namespace J4Test {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using testing::StrEq;

struct TableSessionTest : UsbSessionTest {
    static void ExpectCableNoticed(J4_Result result, const std::string& when)
    {
        EXPECT_EQ(result, J4_ResultDeviceNotConnected) << when;
        // The question whether there is a table has an answer, and no failure.
        EXPECT_THAT(GetOption("LastError"), AnyOf(HasSubstr(Stand().Words().gone), StrEq(notFound), StrEq("no error")))
            << when;
        EXPECT_EQ(J4_IsTableConnected(), J4_ResultDeviceNotConnected) << when;
    }
};

TEST_F(TableSessionTest, AWholeSessionMeasuresWhatLiesOnTheChart)
{
    PrepareRow();
    EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
    ExpectPatches();
    ExpectPosition(288.0f, 250.0f);
    Set("MeasurementMode", "SingleReflectance");
    EXPECT_EQ(J4_SetPosition(230.0f, 250.0f), 0);
    EXPECT_EQ(J4_TriggerMeasurement(), 0) << GetOption("LastError");
    EXPECT_THAT(Measured(), Each(FloatNear(patches[1], 0.001f)));
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), seated);
    EXPECT_THAT(Application::failures, IsEmpty());
}

TEST_F(TableSessionTest, TheBridgeIsSetUpAndTheTableReleased)
{
    StartJournal();
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_THAT(GetOption("Simulator.Journal"),
                StartsWith("usb control 0 0\nusb control 0 1\nusb control 0 2\nusb control 3 52\n"
                           "usb control 4 8\nwire > ;a034\n"));
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    table->TakeRecord();
    Set("Reset", "All");
    EXPECT_THAT(LinesThatBegin(table->TakeRecord(), {"in", "out"}), testing::ElementsAreArray(leaving));
    EXPECT_THAT(Stand().Held(), IsEmpty());
    Application::RegisterHandlers();
    EXPECT_EQ(J4_TriggerMeasurement(), J4_ResultNotCalibrated) << "the instrument's library has started over";
    PrepareRow();
    EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
    ExpectPatches();
}

TEST_F(TableSessionTest, TheOptionChoosesAmongTheSockets)
{
    Set("Simulator.Tables", "3");
    Set("J4TUseableWithoutJ4", "yes");
    Stand().Plug(2, {.table = 2});
    Stand().Plug(1, {.table = 1});
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640001") << "the first without a choice";
        Set("J4TDeviceType", "J4TSorvaneTable2");
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640002");
        ExpectFailure(SetOption("J4TDeviceType", "J4TSorvaneTable4"),
                      {"J4_SetOption", J4_ResultDeviceNotConnected, notFound});
        Set("J4TDeviceType", "J4TSorvaneTable3");
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640003");
        // The first table comes back to its socket as the computer's newest device.
        Replug();
        Reconnect();
    }
}

TEST_F(TableSessionTest, WithoutATableTheInstrumentMeasures)
{
    Stand().Unplug(0);
    ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected, notFound});
    Set("DeviceType", "Sorvane0");
    Set("MeasurementMode", "SingleReflectance");
    EXPECT_EQ(J4_Calibrate(), 0) << GetOption("LastError");
    EXPECT_EQ(J4_TriggerMeasurement(), 0) << GetOption("LastError");
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 1);
    EXPECT_THAT(Measured(), Each(testing::Gt(0.5f))) << "the instrument's own white";
    ExpectFailure(J4_GoToHomePosition(), {"J4_GoToHomePosition", J4_ResultDeviceNotConnected, notFound});
    Replug();
    ExpectShortSession("plugged in while the application runs");
}

TEST_F(TableSessionTest, AFailedStepOfTheOpeningIsNamedAndLeavesNothingBehind)
{
    const UsbWords& words = Stand().Words();
    int step = 0;
    for (const char* const call : words.opening) {
        table->Fail(step++, UsbEnd::Gone);
        ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected,
                                              call != nullptr ? UsbWords::Failure(call, words.gone) : notFound});
        EXPECT_THAT(Stand().Held(), IsEmpty()) << step;
        Replug();
    }
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

/// The next request to fail: each of the opening, and some of the traffic, in both directions.
int After(int skip) { return skip + (skip < 20 ? 1 : 3); }

TEST_F(TableSessionTest, ACableThatComesOutAtAnyRequestIsSurvived)
{
    ExpectShortSession("the first, in which the arm goes home");
    int skip = 0;
    for (;; skip = After(skip)) {
        const std::string when = "the cable came out at request " + std::to_string(skip);
        Reconnect();
        table->Fail(skip, skip % 4 == 3 ? UsbEnd::Removed : UsbEnd::Gone);
        const J4_Result result = ShortSession();
        if (!table->isRemoved) {
            break;
        }
        ExpectCableNoticed(result, when);
        Replug();
        Reconnect();
        ExpectShortSession("after " + when);
    }
    EXPECT_GT(skip, 30) << "requests of a session";
}

TEST_F(TableSessionTest, ACableThatComesOutDuringAScanIsSurvived)
{
    PrepareRow();
    int skip = 0;
    for (;; skip += 4) {
        table->Fail(skip, UsbEnd::Gone);
        const J4_Result result = ScanRow();
        if (!table->isRemoved) {
            break;
        }
        const std::string when = "the cable came out at request " + std::to_string(skip) + " of the scan";
        ExpectCableNoticed(result, when);
        EXPECT_EQ(GetOption("J4TConnection"), "no");
        Replug();
        // The end of the motion that was under way may be told to the new connection, and cost it this call.
        EXPECT_THAT(SetOption("J4TDeviceType", "J4TSorvaneTable1"), AnyOf(0, J4_ResultDeviceFault)) << when;
        EXPECT_EQ(ScanRow(), 0) << when << ": " << GetOption("LastError");
        ExpectPatches();
    }
    EXPECT_GT(skip, 30) << "requests of a scan";
}

TEST_F(TableSessionTest, AStallAtAnyRequestCostsOneCall)
{
    ExpectShortSession("the first, in which the arm goes home");
    int failed = 0;
    for (int skip = 0; skip < 45; skip = After(skip)) {
        Reconnect();
        table->Fail(skip, UsbEnd::Stalled);
        if (const J4_Result result = ShortSession(); result != 0) {
            ++failed;
            // Where the table is reset after it, the unread answer can be what the reset stumbles over.
            EXPECT_THAT(std::pair(result, GetOption("LastError")),
                        AnyOf(Pair(J4_ResultDeviceNotConnected, HasSubstr(Stand().Words().stalled)),
                              Pair(J4_ResultDeviceNotConnected, HasSubstr(Stand().Words().refused)),
                              Pair(J4_ResultDeviceFault, StrEq("Missing ':'."))))
                << skip;
        }
        ExpectShortSession("after a stall at request " + std::to_string(skip));
    }
    EXPECT_GT(failed, 20);
}

TEST_F(TableSessionTest, ATimeOutCostsOneCall)
{
    ExpectShortSession("before");
    const UsbWords& words = Stand().Words();
    for (const auto& [skip, characters, call] : {std::tuple(0, 3u, words.write), std::tuple(1, 0u, words.read)}) {
        table->Fail(skip, UsbEnd::Never, characters);
        float x = -1.0f;
        float y = -1.0f;
        ExpectFailure(J4_GetPosition(&x, &y),
                      {"J4_GetPosition", J4_ResultDeviceNotConnected, UsbWords::Failure(call, words.timedOut)});
        EXPECT_EQ(x, -1.0f);
        EXPECT_THAT(table->TakeRecord(), Contains("cancel"));
        // What is left of the exchange on the line may cost one more call.
        EXPECT_THAT(ShortSession(), AnyOf(0, J4_ResultDeviceFault));
        Application::failures.clear();
        ExpectShortSession("after a time-out");
    }
}

TEST_F(TableSessionTest, TransfersOfAnyShapeAreTaken)
{
    for (const auto& [in, out] : {std::pair(1u, 1u), std::pair(3u, 7u), std::pair(61u, 2u)}) {
        Reconnect();
        table->limitIn = in;
        table->limitOut = out;
        ExpectShortSession("at most " + std::to_string(in) + " and " + std::to_string(out));
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
        EXPECT_THAT(Application::failures, IsEmpty());
    }
    table->limitIn = 0;
    table->limitOut = 0;
    // A lone byte, which is an empty transfer; a second packet without its status.
    for (const auto& [transfer, status] :
         {std::pair(Bytes{1}, J4_ResultNoError), std::pair(Bytes(65, 1), J4_ResultException)}) {
        float x = 0.0f;
        table->deliveries.push_back(transfer);
        EXPECT_EQ(J4_GetPosition(&x, &x), status) << GetOption("LastError");
        Set("J4TDeviceType", "J4TSorvaneTable1");
        EXPECT_EQ(J4_GetPosition(&x, &x), 0) << "a table that is opened anew starts clean";
    }
}

TEST_F(TableSessionTest, SerialStringsThatAreNoNumbers)
{
    const struct {
        TableDevice::Traits traits;
        J4_Result connected;
        const char* serial;
        const char* failure;
    } cases[] = {
        {{.hasSerial = false}, J4_ResultDeviceNotConnected, "", "Empty serial number."},
        {{.serial = Bytes{2, 3}}, J4_ResultDeviceNotConnected, "", "Empty serial number."},
        {{.serial = StringDescriptor(std::string(126, 'S'))}, 0, "", "lexical_cast(): fail to convert 'SSSSS"},
    };
    for (const auto& device : cases) {
        Replug(device.traits);
        Reconnect();
        EXPECT_EQ(J4_IsTableConnected(), device.connected);
        EXPECT_EQ(GetOption("J4TSerialNumber"), device.serial);
        EXPECT_THAT(GetOption("LastError"), StartsWith(device.failure));
        EXPECT_EQ(J4_SetPosition(300.0f, 300.0f), 0) << "the table works";
        ExpectPosition(300.0f, 300.0f);
    }
}

}  // namespace
}  // namespace J4Test
