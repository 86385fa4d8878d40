// Whole calls over real libusb: what an application sees of a table that works, is missing, or fails.
#include <sys/fsuid.h>

#include <cstdio>
#include <fstream>

#include "tests/libusb/LibusbTest.h"
#include "tests/simulator/ChartText.h"

namespace J4Test {
namespace {

using testing::AnyOf;
using testing::Each;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Pair;
using testing::StartsWith;
using testing::StrEq;

constexpr const char* notFound = "No device connected.";

/// Gives up the rights of the super-user over files, as long as it exists.
class OrdinaryUser {
public:
    OrdinaryUser() : before(::setfsuid(nobody)) {}
    ~OrdinaryUser() { ::setfsuid(static_cast<uid_t>(before)); }
    OrdinaryUser(const OrdinaryUser&) = delete;
    OrdinaryUser& operator=(const OrdinaryUser&) = delete;

private:
    static constexpr uid_t nobody = 65534;
    int before;
};

struct TableSessionTest : LibusbTest {
    static constexpr const char* chartFile = "libusb_tests_row.cgats";
    static constexpr float patches[] = {0.5f, 0.15f, 0.7f, 0.3f};

    void SetUp() override
    {
        LibusbTest::SetUp();
        std::vector<J4Bench::FlatPatch> row;
        for (size_t i = 0; i < std::size(patches); ++i) {
            row.push_back(
                {"patch", 210.0 + 20.0 * static_cast<double>(i), 250.0, 20.0, 20.0, static_cast<double>(patches[i])});
        }
        std::ofstream(chartFile) << J4Bench::ChartText(row);
        Set("Simulator.ChartFile", chartFile);
    }

    void TearDown() override
    {
        LibusbTest::TearDown();
        std::remove(chartFile);
    }

    static J4_Result ScanRow() { return J4_Scan(192.0f, 250.0f, 288.0f, 250.0f); }

    static void ExpectPatches()
    {
        ASSERT_EQ(J4_GetNumberOfAvailableSamples(), 4);
        for (uint32_t i = 0; i < std::size(patches); ++i) {
            EXPECT_THAT(Measured(i), Each(FloatNear(patches[i], 0.001f))) << "patch " << i;
        }
    }

    /// Connects where that is not done, moves and asks where the arm is, until a call fails.
    static J4_Result ShortSession()
    {
        float x = 0.0f;
        float y = 0.0f;
        J4_Result result = J4_IsTableConnected();
        result = result == 0 ? J4_SetPosition(300.0f, 300.0f) : result;
        return result == 0 ? J4_GetPosition(&x, &y) : result;
    }

    static void ExpectShortSession(const std::string& when)
    {
        EXPECT_EQ(ShortSession(), 0) << when << ": " << GetOption("LastError");
        ExpectPosition(300.0f, 300.0f);
    }

    /// How the application finds a table again that was plugged out.
    static void Reconnect()
    {
        Set("Reset", "All");
        Application::RegisterHandlers();
    }

    static void ExpectInstrumentMeasures()
    {
        Set("DeviceType", "Sorvane0");
        Set("MeasurementMode", "SingleReflectance");
        EXPECT_EQ(J4_Calibrate(), 0) << GetOption("LastError");
        EXPECT_EQ(J4_TriggerMeasurement(), 0) << GetOption("LastError");
        EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 1);
        EXPECT_THAT(Measured(), Each(testing::Gt(0.5f))) << "the instrument's own white";
    }
};

TEST_F(TableSessionTest, ARowIsScannedAndIsWhatLiesOnTheChart)
{
    MakeReady();
    Set("MeasurementMode", "ScanningReflectance");
    EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
    ExpectPatches();
    ExpectPosition(288.0f, 250.0f);
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
    EXPECT_THAT(Application::failures, IsEmpty());
}

TEST_F(TableSessionTest, TheOptionChoosesAmongTheSockets)
{
    Set("Simulator.Tables", "3");
    Set("Simulator.SeatedInstrument", "240118;240117;none");
    bus.Plug("2-1", {.table = 2});
    bus.Plug("1-10", {.table = 1});
    for (int repeat = 0; repeat < 2; ++repeat) {
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640001") << "the first without a choice";
        Set("J4TDeviceType", "J4TSorvaneTable2");
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640002");
        EXPECT_EQ(GetOption("J4TJ4SerialNumber"), "240117");
        Set("J4TUseableWithoutJ4", "yes");
        Set("J4TDeviceType", "J4TSorvaneTable3");
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640003");
        EXPECT_EQ(SetOption("J4TDeviceType", "J4TSorvaneTable4"), J4_ResultDeviceNotConnected);
        EXPECT_EQ(Application::failures.back().message, notFound);
        Set("J4TUseableWithoutJ4", "no");
        // The first table comes back to its socket as the computer's newest device.
        Replug();
        Reconnect();
    }
}

TEST_F(TableSessionTest, WithoutATableTheInstrumentMeasures)
{
    bus.Unplug(place);
    ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected, notFound});
    ExpectInstrumentMeasures();
    ExpectFailure(J4_GoToHomePosition(), {"J4_GoToHomePosition", J4_ResultDeviceNotConnected, notFound});
    table = &bus.Plug(place);
    ExpectShortSession("plugged in while the application runs");
}

TEST_F(TableSessionTest, WhoMayNotUseTheTableIsToldOfTheRule)
{
    bus.ForbidAccess(place);
    {
        const OrdinaryUser user;
        ExpectFailure(J4_IsTableConnected(),
                      {"J4_IsTableConnected", J4_ResultDeviceNotConnected,
                       "Error in UsbIo function: \"libusb_open\" Error: LIBUSB_ERROR_ACCESS: Access denied "
                       "(insufficient permissions). The user may not use the table: install the udev rule "
                       "70-j4tavla.rules and plug the table in again."});
        ExpectInstrumentMeasures();
    }
    EXPECT_THAT(table->TakeRecord(), IsEmpty());
    Replug();
    ExpectShortSession("with the rule");
}

TEST_F(TableSessionTest, ACableThatComesOutAtAnyRequestIsSurvived)
{
    ExpectShortSession("the first, in which the arm goes home");
    for (const auto& [fault, step] : {std::pair{Fault::Removed, 1}, std::pair{Fault::RemovedInFlight, 3}}) {
        int skip = 0;
        for (;; skip += step) {
            Reconnect();
            table->Fail(skip, fault);
            const J4_Result result = ShortSession();
            if (!table->IsRemoved()) {
                break;
            }
            EXPECT_EQ(result, J4_ResultDeviceNotConnected) << skip;
            // The question whether there is a table has an answer, and no failure.
            EXPECT_THAT(GetOption("LastError"), AnyOf(HasSubstr("LIBUSB_ERROR_NO_DEVICE"), StrEq("no error"))) << skip;
            EXPECT_EQ(J4_IsTableConnected(), J4_ResultDeviceNotConnected) << skip;
            Replug();
            Reconnect();
            ExpectShortSession("after the cable came out at request " + std::to_string(skip));
        }
        EXPECT_GT(skip, 30) << "requests of a session";
        Replug();
    }
}

TEST_F(TableSessionTest, ACableThatComesOutDuringAScanIsSurvived)
{
    MakeReady();
    Set("MeasurementMode", "ScanningReflectance");
    int skip = 0;
    for (;; skip += 4) {
        table->Fail(skip, Fault::Removed);
        const J4_Result result = ScanRow();
        if (!table->IsRemoved()) {
            break;
        }
        EXPECT_EQ(result, J4_ResultDeviceNotConnected) << skip;
        Replug();
        // The end of the motion that was under way may be told to the new connection, and cost it this call.
        EXPECT_THAT(SetOption("J4TDeviceType", "J4TSorvaneTable1"), AnyOf(0, J4_ResultDeviceFault)) << skip;
        EXPECT_EQ(ScanRow(), 0) << skip << ": " << GetOption("LastError");
        ExpectPatches();
    }
    EXPECT_GT(skip, 30) << "requests of a scan";
}

TEST_F(TableSessionTest, AStallAtAnyRequestCostsOneCall)
{
    ExpectShortSession("the first, in which the arm goes home");
    int failed = 0;
    for (int skip = 0; skip < 45; ++skip) {
        Reconnect();
        table->Fail(skip, Fault::Stall);
        if (const J4_Result result = ShortSession(); result != 0) {
            ++failed;
            // Where the table is reset after it, the unread answer can be what the reset stumbles over.
            EXPECT_THAT(std::pair(result, GetOption("LastError")),
                        AnyOf(Pair(J4_ResultDeviceNotConnected, HasSubstr("Error: LIBUSB_ERROR_PIPE: Pipe error.")),
                              Pair(J4_ResultDeviceNotConnected, HasSubstr("Error: LIBUSB_ERROR_OTHER: Other error.")),
                              Pair(J4_ResultDeviceFault, StrEq("Missing ':'."))))
                << skip;
        }
        ExpectShortSession("after a stall at request " + std::to_string(skip));
    }
    EXPECT_GT(failed, 30);
}

TEST_F(TableSessionTest, ATimeOutLosesNothingThatCame)
{
    ExpectShortSession("before");
    // The answer comes in the transfer after the question.
    for (const size_t bytes : {1u, 7u}) {
        table->TakeRecord();
        table->Fail(1, Fault::Silence, bytes);
        ExpectPosition(300.0f, 300.0f);
        EXPECT_THAT(table->TakeRecord(), testing::Contains("cancel"));
        EXPECT_THAT(Application::failures, IsEmpty());
    }
    const struct {
        int skip;
        size_t bytes;
        const char* call;
    } silences[] = {
        {0, 0, "libusb_bulk_transfer(out)"}, {0, 3, "libusb_bulk_transfer(out)"}, {1, 0, "libusb_bulk_transfer(in)"}};
    for (const auto& silence : silences) {
        table->Fail(silence.skip, Fault::Silence, silence.bytes);
        float x = -1.0f;
        float y = -1.0f;
        ExpectFailure(J4_GetPosition(&x, &y), {"J4_GetPosition", J4_ResultDeviceNotConnected,
                                               std::string("Error in UsbIo function: \"") + silence.call +
                                                   "\" Error: LIBUSB_ERROR_TIMEOUT: Operation timed out."});
        EXPECT_EQ(x, -1.0f);
        // What is left of the exchange on the line may cost one more call.
        EXPECT_THAT(ShortSession(), AnyOf(0, J4_ResultDeviceFault));
        ExpectShortSession("after a time-out");
    }
}

TEST_F(TableSessionTest, TransfersOfAnyLengthMakeAWholeSession)
{
    for (const auto& [in, out] : std::vector<std::pair<size_t, size_t>>{{1, 1}, {3, 7}, {61, 2}}) {
        Reconnect();
        table->Limit(in, out);
        ExpectShortSession("at most " + std::to_string(in) + " and " + std::to_string(out));
        EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
        EXPECT_THAT(Application::failures, IsEmpty());
    }
}

TEST_F(TableSessionTest, SerialStringsThatAreNoNumbers)
{
    const struct {
        MockedDevice::Traits traits;
        J4_Result connected;
        const char* serial;
        const char* failure;
    } cases[] = {
        {{.hasSerial = false}, J4_ResultDeviceNotConnected, "", "Empty serial number."},
        {{.serial = std::vector<uint8_t>{2, 3}}, J4_ResultDeviceNotConnected, "", "Empty serial number."},
        {{.serial = StringDescriptor(std::string(126, 'S'))}, 0, "", "lexical_cast(): fail to convert 'SSSSS"},
        {{.needsLanguage = true}, 0, "640001", "no error"},
    };
    for (const auto& device : cases) {
        bus.Unplug(place);
        table = &bus.Plug(place, device.traits);
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
