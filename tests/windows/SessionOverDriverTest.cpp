// Sessions of an application with the shipped library, down to the driver's requests.
#include <cstdio>
#include <fstream>
#include <optional>

#include "simulator/world/Bench.h"
#include "tests/session/Session.h"
#include "tests/simulator/ChartText.h"
#include "tests/windows/DriverTest.h"
#include "tests/windows/RealLibrary.h"

namespace J4Test {
namespace {

using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::EndsWith;
using testing::FloatNear;
using testing::IsEmpty;
using testing::Not;
using testing::StartsWith;

constexpr const char* noTable = "No device connected.";

std::string WireRequest(const std::string& line)
{
    static constexpr char digits[] = "0123456789ABCDEF";
    std::string text = "2 write ";
    for (const char character : line + "\r") {
        text += digits[character >> 4];
        text += digits[character & 15];
    }
    return text;
}

const Lines opening = {
    "1 open table 0",
    "1 8094206C out 12",
    "1 80942028",
    // configuration 0 with one interface, number 0, setting 0, transfers of up to 131072 bytes
    "1 80942024 0000010000000000"
    "00000200" +
        std::string(2 * 248, '0'),
    "1 8094203C out 8",
    "1 80942040 0001000000000000",
    "2 open table 0",
    "2 8094206C out 12",
    "2 80942078 02",
    "3 open table 0",
    "3 8094206C out 12",
    "3 80942078 81",
    "2 80942080",
    "3 80942080",
};
const Lines clearing(10, "3 read 131072");
const Lines bridgeSetUp = {
    "1 80942035 000000000200000000000000000000000000", "1 80942035 000000000200000000000000000001000000",
    "1 80942035 000000000200000000000000000002000000", "1 80942035 000000000200000000000000000334000000",
    "1 80942035 000000000200000000000000000408000000",
};
/// Hold released, foil off, foil button on; each is answered.
const Lines leaving = {WireRequest(";s022"), "3 read 131072",      WireRequest(";f02f"),
                       "3 read 131072",      WireRequest(";f32c"), "3 read 131072"};
const Lines closing = {"1 80942054", "3 80942084", "2 80942084", "3 close", "2 close", "1 close"};

Lines Tail(const Lines& lines, size_t count)
{
    return {lines.end() - static_cast<ptrdiff_t>(std::min(count, lines.size())), lines.end()};
}

Lines TakeAll()
{
    EXPECT_TRUE(World().WaitUntilClosed());
    return World().Take();
}

struct SessionOverDriverTest : OverDriver<SessionTest> {
    static constexpr float patches[] = {0.2f, 0.6f, 0.1f, 0.4f};
    static constexpr const char* chartFile = "windows_tests_row.cgats";

    void SetUp() override
    {
        OverDriver::SetUp();
        Load();
    }

    void TearDown() override
    {
        library.reset();
        OverDriver::TearDown();
    }

    void Load()
    {
        library.emplace();
        Application::failures.clear();
        Application::messages.clear();
        Application::RegisterHandlers();
    }

    /// A row of four patches of 20 mm from x 200 to 280, at y 250.
    static void LayChart()
    {
        std::vector<J4Bench::FlatPatch> row;
        for (size_t i = 0; i < std::size(patches); ++i) {
            row.push_back(
                {"patch", 210.0 + 20.0 * static_cast<double>(i), 250.0, 20.0, 20.0, static_cast<double>(patches[i])});
        }
        std::ofstream(chartFile) << J4Bench::ChartText(row);
        Set("Simulator.ChartFile", chartFile);
        std::remove(chartFile);
    }

    static void Prepare()
    {
        LayChart();
        MakeReady();
        Set("MeasurementMode", "ScanningReflectance");
    }

    static J4_Result ScanRow() { return J4_Scan(192.0f, 250.0f, 288.0f, 250.0f); }

    static void ExpectPatches()
    {
        EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
        ASSERT_EQ(J4_GetNumberOfAvailableSamples(), 4);
        for (uint32_t i = 0; i < std::size(patches); ++i) {
            EXPECT_THAT(Measured(i), Each(FloatNear(patches[i], 0.001f))) << "patch " << i;
        }
    }

    /// The cable comes out: no interface, and the open handles' device has gone.
    static void PullCable()
    {
        Driver().Unplug(0);
        World().LoseDevices();
    }

    std::optional<RealLibrary> library;
};

TEST_F(SessionOverDriverTest, OpensSetsUpAndClosesInOrder)
{
    EXPECT_EQ(J4_IsTableConnected(), 0) << GetOption("LastError");
    const Lines start = Joined({opening, clearing, bridgeSetUp});
    Lines lines = World().Take();
    ASSERT_GT(lines.size(), start.size());
    EXPECT_THAT(Lines(lines.begin(), lines.begin() + static_cast<ptrdiff_t>(start.size())), ElementsAreArray(start));
    EXPECT_EQ(lines[start.size()], WireRequest(";a034"));
    // Then only transfers, and at the end the question whether the table is there.
    const Lines presence = {"1 80942006 0000000001000000 out 18", "1 80942006 0000000003030000 out 516"};
    EXPECT_THAT(Tail(lines, 2), ElementsAreArray(presence));
    lines.resize(lines.size() - 2);
    EXPECT_THAT(Lines(lines.begin() + static_cast<ptrdiff_t>(start.size()), lines.end()),
                Each(AnyOf("3 read 131072", StartsWith("2 write 3B"))));

    library.reset();
    EXPECT_THAT(TakeAll(), ElementsAreArray(Joined({leaving, closing})));
}

TEST_F(SessionOverDriverTest, AWholeSessionMeasuresWhatLiesOnTheChart)
{
    Prepare();
    ExpectPatches();
    EXPECT_EQ(J4_SetPosition(230.0f, 250.0f), 0);
    ExpectPosition(230.0f, 250.0f);
    Set("MeasurementMode", "SingleReflectance");
    EXPECT_EQ(J4_TriggerMeasurement(), 0) << GetOption("LastError");
    EXPECT_THAT(Measured(), Each(FloatNear(patches[1], 0.001f)));
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), seated);
    EXPECT_THAT(Application::failures, IsEmpty());
}

TEST_F(SessionOverDriverTest, ALateReadIsCancelledAndReported)
{
    Relay::Answer silent;
    silent.isSilent = true;
    World().Inject(DriverRead, silent, 3);
    const Failure late{"J4_IsTableConnected", J4_ResultDeviceNotConnected,
                       "Error in UsbIo function: \"ReadSync\" Error: Error code 0xE000100C: The request has been "
                       "timed out."};
    ExpectFailure(J4_IsTableConnected(), late);
    EXPECT_THAT(TakeAll(), ElementsAreArray(Joined({opening, Lines(4, "3 read 131072"), {"3 cancelled"}, closing})));
    EXPECT_EQ(J4_IsTableConnected(), 0);

    World().Inject(DriverWrite, silent);
    ExpectFailure(J4_SetPosition(300.0f, 300.0f),
                  {"J4_SetPosition", J4_ResultDeviceNotConnected,
                   "Error in UsbIo function: \"WriteSync\" Error: Error code 0xE000100C: The request has been timed "
                   "out."});
    EXPECT_EQ(J4_GoToHomePosition(), 0) << "the table goes on";
}

TEST_F(SessionOverDriverTest, AFailedStepOfTheOpeningIsNamed)
{
    const uint32_t status = 0xE000101F;
    const auto label = [](const char* name) {
        return "Error in UsbIo function: \"" + std::string(name) + "\" Error: Error code 0xE000101F: Invalid process.";
    };
    for (const auto& [code, skip, message] : std::vector<std::tuple<uint32_t, uint32_t, std::string>>{
             {UsbIo::ControlGetDriverInfo, 0, noTable},
             {UsbIo::ControlUnconfigureDevice, 0, label("UnconfigureDevice")},
             {UsbIo::ControlSetConfiguration, 0, label("SetConfiguration")},
             {UsbIo::ControlGetDeviceParameters, 0, label("GetDeviceParameters")},
             {UsbIo::ControlSetDeviceParameters, 0, label("GetDeviceParameters")},
             {UsbIo::ControlGetDriverInfo, 1, label("Bind(out)")},
             {UsbIo::ControlBind, 0, label("Bind(out)")},
             {UsbIo::ControlBind, 1, label("Bind(in)")},
             {UsbIo::ControlResetPipe, 0, label("Reset(out)")},
             {UsbIo::ControlResetPipe, 1, label("Reset(in)")},
             {UsbIo::ControlClassOrVendorOutRequest, 4, label("ClassOrVendorOutRequest")}}) {
        World().Inject(code, {status}, skip);
        ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected, message});
        EXPECT_TRUE(World().WaitUntilClosed()) << message;
    }
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(SessionOverDriverTest, AnUnpluggedTableComesBack)
{
    Prepare();
    // In the scan: delay, way to the start and way along the row have been ordered; the cable comes out under the
    // question for the ramp data.
    World().Inject(DriverWrite, PullCable, 3);
    ExpectFailure(ScanRow(),
                  {"J4_Scan", J4_ResultDeviceNotConnected,
                   "Error in UsbIo function: \"WriteSync\" Error: Error code 0xE000100A: Device is removed."});
    EXPECT_LE(J4_GetNumberOfAvailableSamples(), 0);
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultDeviceNotConnected);
    EXPECT_EQ(GetOption("J4TConnection"), "no");
    EXPECT_EQ(J4_Calibrate(), J4_ResultDeviceNotConnected) << "the instrument still counts as the table's";

    Set("Reset", "All");
    Application::RegisterHandlers();
    ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultDeviceNotConnected, noTable});
    EXPECT_TRUE(World().WaitUntilClosed()) << "nothing is kept open";

    Driver().Plug(0);
    MakeReady();
    Set("MeasurementMode", "ScanningReflectance");
    ExpectPatches();

    // The other way back: choosing the table anew.
    PullCable();
    EXPECT_EQ(J4_GoToHomePosition(), J4_ResultDeviceNotConnected);
    Driver().Plug(0);
    Set("J4TDeviceType", "J4TSorvaneTable1");
    EXPECT_EQ(J4_GoToHomePosition(), 0);
}

TEST_F(SessionOverDriverTest, NoTableIsSaid)
{
    const Failure missing{"J4_IsTableConnected", J4_ResultDeviceNotConnected, noTable};
    Driver().UnplugAll();
    ExpectFailure(J4_IsTableConnected(), missing);
    EXPECT_EQ(J4_Calibrate(), 0) << "the instrument alone can be calibrated";

    Driver().Announce(0);
    ExpectFailure(J4_IsTableConnected(), missing);

    Driver().Plug(0);
    for (const uint16_t version : {0x022F, 0x0330, 0x0130}) {
        World().SetDriverInfo({version, 0, 0, 0});
        ExpectFailure(J4_IsTableConnected(), missing);
    }
    World().SetDriverInfo({0x0231, 0, 0, 0});
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(SessionOverDriverTest, ChoosesAmongTablesByIndex)
{
    Driver().Plug(1);
    Driver().Plug(2);
    Set("Simulator.Tables", "3");
    Set("Simulator.SeatedInstrument", "240118;240117;none");
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
    for (const auto& [option, index, serial, instrument] :
         std::vector<std::tuple<const char*, const char*, const char*, const char*>>{
             {"J4TSorvaneTable2", "1", "640002", "240117"}, {"J4TSorvaneTable1", "0", "640001", "240118"}}) {
        World().Take();
        Set("J4TDeviceType", option);
        EXPECT_EQ(GetOption("J4TSerialNumber"), serial);
        EXPECT_EQ(GetOption("J4TJ4SerialNumber"), instrument);
        EXPECT_THAT(LinesThatBegin(World().Take(), {"1 open", "2 open", "3 open"}),
                    ElementsAre(std::string("1 open table ") + index, std::string("2 open table ") + index,
                                std::string("3 open table ") + index));
    }
    ExpectFailure(SetOption("J4TDeviceType", "J4TSorvaneTable4"),
                  {"J4_SetOption", J4_ResultDeviceNotConnected, noTable});
    ExpectFailure(SetOption("J4TDeviceType", "J4TSorvaneTable3"),
                  {"J4_SetOption", J4_ResultSpectrophotometerNotConnected, "No j4 device connected to table"});
}

TEST_F(SessionOverDriverTest, TheInstrumentsLibraryGoesWithTheLibrary)
{
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_NE(GetModuleHandleA("sorvane64.dll"), nullptr);
    EXPECT_THAT(GetOption("J4TJ4SDKPath"), testing::StrCaseEq(ProgramFolder() + "sorvane64.dll"));
    Set("J4THoldPosition", "yes");
    World().Take();
    library.reset();
    EXPECT_EQ(GetModuleHandleA("j4tavla64.dll"), nullptr);
    EXPECT_EQ(GetModuleHandleA("sorvane64.dll"), nullptr);
    EXPECT_THAT(TakeAll(), ElementsAreArray(Joined({leaving, closing})));

    // An application that has the instrument's library open keeps it.
    Load();
    const HMODULE own = LoadLibraryA("sorvane64.dll");
    EXPECT_EQ(J4_IsTableConnected(), 0);
    library.reset();
    EXPECT_EQ(GetModuleHandleA("sorvane64.dll"), own);
    FreeLibrary(own);
    EXPECT_EQ(GetModuleHandleA("sorvane64.dll"), nullptr);
}

TEST_F(SessionOverDriverTest, AResetClosesReloadsAndOpensAnew)
{
    Prepare();
    World().Take();
    Set("Reset", "All");
    EXPECT_THAT(TakeAll(), ElementsAreArray(Joined({leaving, closing})));
    EXPECT_NE(GetModuleHandleA("sorvane64.dll"), nullptr) << "loaded again by the call itself";
    Application::RegisterHandlers();
    EXPECT_EQ(J4_TriggerMeasurement(), 3) << "the instrument's library has started over";
    MakeReady();
    Set("MeasurementMode", "ScanningReflectance");
    ExpectPatches();
}

TEST_F(SessionOverDriverTest, SerialNumbersOfAnyShapeAreRead)
{
    EXPECT_EQ(J4_IsTableConnected(), 0);
    const auto text = [](size_t size, uint8_t character) {
        Relay::Bytes bytes(size, 0);
        for (size_t i = 2; i < size; i += 2) {
            bytes[i] = character;
        }
        bytes[0] = static_cast<uint8_t>(std::min<size_t>(size, 255));
        bytes[1] = UsbIo::DescriptorString;
        return bytes;
    };
    // As many digits as there are, without a terminator; then digits with a bad end; then nothing at all.
    World().Inject(UsbIo::ControlGetDescriptor, {0, text(255, '7')}, 1);
    EXPECT_EQ(J4_IsTableConnected(), 0);
    World().Inject(UsbIo::ControlGetDescriptor, {0, text(516, '7')}, 1);
    EXPECT_EQ(J4_IsTableConnected(), 0);
    World().Inject(UsbIo::ControlGetDescriptor, {0, Relay::Bytes(516, 0xFF)}, 1);
    EXPECT_EQ(J4_IsTableConnected(), 0);
    World().Inject(UsbIo::ControlGetDescriptor, {0, text(14, '7'), 502}, 1);
    EXPECT_EQ(GetOption("J4TSerialNumber"), "777777") << "a count that is too high";
    World().Inject(UsbIo::ControlGetDescriptor, {0, text(255, '7')}, 1);
    EXPECT_EQ(GetOption("J4TSerialNumber"), "");
    EXPECT_EQ(Application::failures.back().status, J4_ResultException) << "no such number";
    World().Inject(UsbIo::ControlGetDescriptor, {0, {2, UsbIo::DescriptorString}}, 1);
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultDeviceNotConnected) << "no serial number, no table";
    World().Inject(UsbIo::ControlGetDescriptor, {0, {}}, 0);
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultDeviceNotConnected) << "an empty device descriptor names no text";
    EXPECT_EQ(GetOption("J4TSerialNumber"), "640001");
}

TEST_F(SessionOverDriverTest, AListThatChangesUnderTheOpeningIsNoOverrun)
{
    // The table goes between the opening of its device and that of its pipes.
    World().Inject(UsbIo::ControlSetConfiguration, [] { Driver().Unplug(0); });
    ExpectFailure(J4_IsTableConnected(),
                  {"J4_IsTableConnected", J4_ResultDeviceNotConnected,
                   "Error in UsbIo function: \"Bind(out)\" Error: Error code 0xE0001100: Device not found or acquired "
                   "for exclusive use."});
    EXPECT_TRUE(World().WaitUntilClosed());
    Driver().Plug(0);

    // Another one comes: this one is meant.
    World().Inject(UsbIo::ControlSetConfiguration, [] { Driver().Plug(1); });
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_THAT(World().Take(), Not(Contains(EndsWith("open table 1"))));
}

TEST_F(SessionOverDriverTest, LongPathsAreOpened)
{
    Driver().Unplug(0);
    const size_t longer = 170;
    Driver().Plug(0, longer);
    EXPECT_EQ(J4_IsTableConnected(), 0) << GetOption("LastError");
}

TEST_F(SessionOverDriverTest, TransfersOfAnyShapeAreTaken)
{
    float x = 0.0f;
    EXPECT_EQ(J4_GetPosition(&x, &x), 0);
    // More bytes are reported than there is room for; a lone byte, which is an empty transfer; a second packet
    // without its status.
    for (const auto& [answer, status] :
         std::vector<std::pair<Relay::Answer, J4_Result>>{{{0, Relay::Bytes(131072, 1), 64}, J4_ResultDeviceFault},
                                                          {{0, {1}}, J4_ResultNoError},
                                                          {{0, Relay::Bytes(65, 1)}, J4_ResultException}}) {
        World().Inject(DriverRead, answer);
        EXPECT_EQ(J4_GetPosition(&x, &x), status) << GetOption("LastError");
        Set("J4TDeviceType", "J4TSorvaneTable1");
        EXPECT_EQ(J4_GetPosition(&x, &x), 0) << "a table that is opened anew starts clean";
    }
}

}  // namespace
}  // namespace J4Test
