// Pairing, calibration and scan with answers, figures and failures of the instrument's library that no real
// instrument gives.
#include <array>
#include <cmath>
#include <cstdio>
#include <utility>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TableExceptions.h"
#include "tests/frame/FrameTest.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::SDKError;
using testing::AllOf;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using testing::StartsWith;

const Failure notFound{"J4_IsTableConnected", J4_ResultSpectrophotometerNotConnected,
                       "No j4 device connected to table"};

std::vector<float> Flat(float value) { return std::vector<float>(J4_SPECTRUM_LENGTH, value); }

struct PairingTest : FrameTest {
    /// The numbers of the devices that were selected.
    static std::string Selected()
    {
        std::string numbers;
        for (const std::string& line : LinesThatBegin(TakeJournal(), {"set DeviceType Sorvane"})) {
            numbers += line.substr(std::string("set DeviceType Sorvane").size()) + " ";
        }
        return numbers;
    }
};

TEST_F(PairingTest, TheStatusOfEachDeviceDecides)
{
    struct Search {
        std::vector<int32_t> devices;  ///< status by number; 2: does not exist
        std::string seated;
        std::string selected;
    };
    std::string all;
    for (int i = 0; i < 128; ++i) {
        all += std::to_string(i) + " ";
    }
    const std::vector<int32_t> many(200, 0);
    for (const Search& search : std::vector<Search>{{{0}, "Sorvane0", "0 "},
                                                    {{0, 5, 1, 0}, "Sorvane3", "0 1 2 3 "},
                                                    {{0, 2, 0}, "", "0 1 0 "},  // the end, and back
                                                    {{7}, "", "0 "},            // the start device must answer
                                                    {{}, "", "0 "},
                                                    {many, "", all + "0 "},
                                                    {many, "Sorvane127", all}}) {
        SetUp();
        library.devices.clear();
        for (size_t i = 0; i < search.devices.size(); ++i) {
            library.devices["Sorvane" + std::to_string(i)] = search.devices[i];
        }
        library.seatedDevice = search.seated;
        TakeJournal();
        const J4_Result result = J4_IsTableConnected();
        EXPECT_EQ(Selected(), search.selected);
        if (search.seated.empty()) {
            ExpectFailure(result, notFound);
        } else {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(library.options["DeviceType"], search.seated);
        }
    }
}

TEST_F(PairingTest, AnExceptionSkipsADeviceOrEndsTheSearch)
{
    const auto failing = [this](const auto& exception, bool isFound) {
        SetUp();
        library.devices = {{"Sorvane0", 0}, {"Sorvane1", 0}};
        library.seatedDevice = "Sorvane1";
        library.options["DeviceType"] = "Sorvane1";
        library.Throw("J4_SetOption DeviceType Sorvane0", exception);
        EXPECT_EQ(J4_IsTableConnected(), isFound ? 0 : J4_ResultSpectrophotometerNotConnected);
        EXPECT_EQ(library.options["DeviceType"], "Sorvane1");
        library.script.clear();
        EXPECT_EQ(J4_IsTableConnected(), 0);
    };
    failing(J4LibraryException("Mode not supported."), true);
    failing(SDKError(5, "busy", ""), true);
    failing(SDKError(2, "no such device", ""), false);
    SetUp();
    library.Throw("J4_GetOption DeviceType", std::runtime_error("anything"));
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultSpectrophotometerNotConnected) << "no start, no search";
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"J4_IsConnected"}), IsEmpty());
}

TEST_F(PairingTest, AnInstrumentWithoutTheModeIsSkipped)
{
    library.devices = {{"Sorvane0", 0}, {"Sorvane1", 0}};
    library.seatedDevice = "Sorvane1";
    int modes = 0;
    library.script["J4_SetOption MeasurementMode SingleReflectance"] = [&] { return ++modes <= 1 ? 6 : 0; };
    library.samples = {Flat(0.25f), Flat(0.75f)};
    library.options["MeasurementMode"] = "ScanningReflectance";
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_EQ(library.options["DeviceType"], "Sorvane1");
    EXPECT_EQ(library.options["MeasurementMode"], "ScanningReflectance") << "the application's, as its samples";
    EXPECT_THAT(library.samples, ElementsAre(Each(0.25f), Each(0.75f))) << "in their order";
}

TEST_F(PairingTest, ASampleThatCannotBeReadEndsThePairingWithTheStoreAsItIs)
{
    library.samples = {Flat(0.25f), Flat(0.75f)};
    library.Answer("J4_GetSpectrum 1", 7);
    library.options["MeasurementMode"] = "ScanningReflectance";
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultException);
    EXPECT_THAT(Application::failures.back().message, StartsWith("Can't get sample 1 in j4 SDK.\n"));
    library.Answer("J4_GetNumberOfAvailableSamples", INT32_MAX);
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultException);
    EXPECT_THAT(Application::failures.back().message, StartsWith("Can't get 2147483647 samples in j4 SDK.\n"));
    EXPECT_EQ(library.samples.size(), 2u);
    EXPECT_EQ(library.options["MeasurementMode"], "ScanningReflectance");
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"private", "table c1"}), IsEmpty());
}

TEST_F(PairingTest, WhatFailsWhileSomethingIsRestored)
{
    library.options["MeasurementMode"] = "Sideways";
    library.Throw("J4_SetOption MeasurementMode Sideways", DeviceErrorException("restoring"));
    ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", 1, "restoring"});

    TakeJournal();
    library.Throw("J4_TriggerMeasurement", WhiteBaseException("measuring"));
    library.Throw("J4_Private 1 0", DeviceErrorException("samples"));
    library.options["MeasurementMode"] = "Sideways";
    ExpectFailure(J4_IsTableConnected(), {"J4_IsTableConnected", J4_ResultWhiteBase, "measuring"});
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"private 1", "set MeasurementMode Sideways"}),
                ElementsAre("private 1 0", "set MeasurementMode Sideways"))
        << "each is tried, and the first failure has the precedence";
}

TEST_F(PairingTest, ABrokenWhiteReferenceIsRefused)
{
    const std::string good = library.options["1100"];  // "0.9 0.9 ..."
    const std::string invalid = "Invalid Sorvane white reference";
    const std::string noNumber = "lexical_cast(): fail to convert '";
    for (const auto& [reference, status, message] : std::vector<std::tuple<std::string, int32_t, std::string>>{
             {good.substr(4), 10, invalid},
             {good + " 0.9", 10, invalid},
             {"", 10, invalid},
             {"0.0" + good.substr(3), 10, invalid + " (division by zero)"},
             {"abc" + good.substr(3), 9, noNumber + "abc' from "},
             {"0.9x" + good.substr(3), 9, noNumber + "0.9x' from "}}) {
        SetUp();
        library.options["1100"] = reference;
        EXPECT_EQ(J4_IsTableConnected(), status) << reference;
        EXPECT_THAT(Application::failures.back().message, StartsWith(message));
        EXPECT_THAT(library.corrections["SingleReflectance"], IsEmpty());
        EXPECT_THAT(LinesThatBegin(TakeJournal(), {"private 0"}), ElementsAre("private 0 0")) << "removed";
        library.options["1100"] = good;
        EXPECT_EQ(J4_IsTableConnected(), 0);
    }
}

TEST_F(PairingTest, OnlyModesThatTheInstrumentHasArePrepared)
{
    for (const auto& [modes, prepared] : std::vector<std::pair<const char*, Lines>>{
             {"SingleReflectance", {"set MeasurementMode SingleReflectance"}},
             {"A;ScanningReflectance;B", {"set MeasurementMode ScanningReflectance"}},
             {"", {}}}) {
        SetUp();
        library.options["AvailableMeasurementModes"] = modes;
        Connect();
        library.options["MeasurementMode"] = "Sideways";
        EXPECT_EQ(J4_Calibrate(), 0);
        EXPECT_THAT(
            LinesThatBegin(TakeJournal(), {"set MeasurementMode S"}),
            ElementsAreArray(Joined({prepared, {"set MeasurementMode Sideways", "set MeasurementMode Sideways"}})));
    }
}

/// All digits that tell a float from its neighbours.
std::string FullText(float value)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.9g", static_cast<double>(value));
    return text;
}

struct ScriptedCalibrationTest : FrameTest {
    void SetUp() override
    {
        FrameTest::SetUp();
        library.options["IntegrationTime"] = "0.005";
        Connect();
        ASSERT_EQ(J4_GoToHomePosition(), 0);
    }
};

TEST_F(ScriptedCalibrationTest, ThePlacementCheckFailsOnlyAboveItsFactor)
{
    const float stored = 0.005f;
    const float limit = 1.15f * stored;
    struct Check {
        std::string time;
        int32_t status;
        bool isWritten = false;
    };
    for (const Check& check : {Check{"0.005", 0},
                               {"0.00549", 0},
                               {"0.00451", 0},
                               {"0.0056", 0, true},
                               {"0.0044", 0, true},
                               {FullText(limit), 0, true},
                               {FullText(std::nextafter(limit, 1.0f)), J4_ResultNotCalibrated},
                               {"1e3", J4_ResultNotCalibrated},
                               {"1e-8", J4_ResultNotCalibrated},
                               {"abc", J4_ResultException},
                               {"0.005s", J4_ResultException},
                               {"", J4_ResultException}}) {
        SetUp();
        ASSERT_EQ(J4_Calibrate(), 0) << "learns the time";
        ASSERT_EQ(GetOption("J4TFlash_3003"), "0.005");
        library.options["IntegrationTime"] = check.time;
        TakeJournal();
        EXPECT_EQ(J4_Calibrate(), check.status) << check.time;
        const Lines journal = TakeJournal();
        EXPECT_EQ(!LinesThatBegin(journal, {"table u1"}).empty(), check.isWritten) << check.time;
        if (check.status != 0) {
            EXPECT_THAT(LinesThatBegin(journal, {"J4_TriggerMeasurement", "table m"}), IsEmpty());
            EXPECT_THAT(GetOption("LastError"), StartsWith(check.time == "1e-8" ? "Integration time in j4 is too short."
                                                           : check.status == J4_ResultNotCalibrated
                                                               ? "Sorvane not placed properly."
                                                               : "lexical_cast(): fail to convert '" + check.time));
        }
        EXPECT_EQ(std::stof(GetOption("J4TFlash_3003")) != stored, check.isWritten) << check.time;
        EXPECT_EQ(library.options["MeasurementMode"], "SingleReflectance");
    }
}

TEST_F(ScriptedCalibrationTest, ANewInstrumentPassesAtAnyTime)
{
    library.Answer("J4_Calibrate", 4);
    EXPECT_EQ(J4_Calibrate(), 0) << "with the table, the checks decide, not the library's status";
    library.options["SerialNumber"] = "17";
    ExpectFailure(J4_Calibrate(), {"J4_Calibrate", 4, "library text"});
    library.script.clear();
    // The library's serial number is also what the pairing compares with: a new pairing learns it.
    library.options["IntegrationTime"] = "0.5";
    library.deviceMessageHandler(1, ScriptedLibrary::serialNumber);
    EXPECT_EQ(J4_Calibrate(), 0);
    EXPECT_EQ(GetOption("J4TFlash_3002"), "17");
    EXPECT_EQ(GetOption("J4TFlash_3003"), "0.5");
}

TEST_F(ScriptedCalibrationTest, TheDirtCheckFailsOnlyAboveItsLimit)
{
    struct Tile {
        std::array<float, 3> first, second;
        int32_t status;
        double difference;
    };
    const float above = std::nextafter(0.2f, 1.0f);
    for (const Tile& tile : {Tile{{95.0f, 0.0f, 0.0f}, {95.0f, 0.0f, 0.0f}, 0, 0.0},
                             {{95.0f, 0.0f, 0.0f}, {95.0f, 0.0f, 0.2f}, 0, 0.2},
                             {{95.0f, 0.0f, 0.2f}, {95.0f, 0.0f, 0.0f}, 0, 0.2},
                             {{95.0f, 0.0f, 0.0f}, {95.0f, 0.0f, above}, 3, 0.2},
                             {{95.0f, 1.0f, 2.0f}, {95.0f, 1.0f + 3.0f, 2.0f - 4.0f}, 3, 5.0},
                             {{0.0f, 0.15f, 0.0f}, {0.15f, 0.0f, 0.0f}, 3, std::sqrt(0.045)}}) {
        library.tristimulus = {tile.first, tile.second};
        library.options["ColorSpaceDescription.Type"] = "Own";
        library.samples.assign(3, Flat(0.5f));
        const J4_Result result = J4_Calibrate();
        EXPECT_EQ(result, tile.status);
        if (result != 0) {
            ExpectFailure(result, {"J4_Calibrate", tile.status, "White base is dirty."});
        }
        EXPECT_NEAR(std::stod(GetOption("5045")), tile.difference, 1e-5);
        EXPECT_THAT(library.samples, IsEmpty()) << "no sample of the check is left";
        EXPECT_EQ(library.options["ColorSpaceDescription.Type"], "Own");
        EXPECT_EQ(GetOption("J4THoldPosition"), "no");
    }
}

TEST_F(ScriptedCalibrationTest, AFailureOnTheWayRestoresEverything)
{
    library.options["MeasurementMode"] = "ScanningReflectance";
    library.options["ColorSpaceDescription.Type"] = "Own";
    library.options["Colorimetric.Illumination"] = "A";
    library.options["Colorimetric.Observer"] = "TenDegree";
    library.CallErrorHandler("J4_GetTriStimulus", "J4_GetTriStimulus", 12, "lamp");
    TakeJournal();
    ExpectFailure(J4_Calibrate(), {"J4_Calibrate", 12, "J4_GetTriStimulus failed: lamp"});
    const Lines journal = TakeJournal();
    ASSERT_GE(journal.size(), 5u);
    EXPECT_THAT(
        Lines(journal.end() - 5, journal.end()),
        ElementsAre("set Colorimetric.Observer TenDegree", "set Colorimetric.Illumination A",
                    "set ColorSpaceDescription.Type Own", "private 1 0", "set MeasurementMode ScanningReflectance"))
        << "in the opposite order of saving";
}

struct ScriptedScanTest : FrameTest {
    void SetUp() override
    {
        FrameTest::SetUp();
        Connect();
    }

    /// 100 mm at 160 mm/s: ramps of 100 ms, the second one begins at 625 ms.
    static J4_Result ScanRow() { return J4_Scan(200.0f, 250.0f, 300.0f, 250.0f); }

    /// What follows the start of the motion.
    static Lines AfterTheStart()
    {
        const Lines journal = TakeJournal();
        const auto start = std::find_if(journal.begin(), journal.end(),
                                        [](const std::string& line) { return line.starts_with("table m2"); });
        return start == journal.end() ? Lines{} : Lines(start + 1, journal.end());
    }
};

TEST_F(ScriptedScanTest, TheCountIsAlwaysAboveTheTravel)
{
    // Travel and delay last 725 ms and the delay.
    for (const auto& [integrationTime, delay, count] :
         std::vector<std::tuple<const char*, const char*, uint32_t>>{{"0.03125", "200", 30},  // 29.6
                                                                     {"0.03125", "525", 50},  // 40 exactly
                                                                     {"0.0625", "525", 30},   // 20 exactly
                                                                     {"0.0625", "524", 20},   // 19.98
                                                                     {"0.5", "9000", 20},     // the arm, much later
                                                                     {"2", "0", 10},          // none
                                                                     {"-0.03125", "200", -10u}}) {
        library.options["IntegrationTime"] = integrationTime;
        EXPECT_EQ(J4_SetOption("J4TRecognitionAlgorithm", "1"), 0);
        EXPECT_EQ(J4_SetOption("J4TScanDelay", delay), 0);
        TakeJournal();
        EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
        EXPECT_THAT(AfterTheStart(), ElementsAre("get IntegrationTime", "table a3", "private 5 0",
                                                 "J4_TriggerCountedScan " + std::to_string(count)));
    }
}

TEST_F(ScriptedScanTest, PositionsFollowTheTrapezoid)
{
    EXPECT_EQ(ScanRow(), 0);
    ASSERT_THAT(library.positions, SizeIs(30));
    // Tenths of a millimetre at multiples of 31.25 ms: 0.5 a t^2, then 160 mm/s, then the same ramp down, truncated
    // (919.99 at the end of the plateau). Beyond the travel the formula falls again.
    for (const auto& [index, tenths] : std::vector<std::pair<size_t, uint16_t>>{{0, 0},
                                                                                {1, 7},
                                                                                {3, 70},
                                                                                {4, 120},
                                                                                {10, 420},
                                                                                {20, 919},
                                                                                {21, 962},
                                                                                {22, 988},
                                                                                {23, 999},
                                                                                {24, 995},
                                                                                {29, 737}}) {
        EXPECT_EQ(library.positions[index], tenths) << index;
    }
}

TEST_F(ScriptedScanTest, AFailureAfterTheStartEmptiesTheStoreAndAwaitsTheArm)
{
    struct Wrong {
        std::function<void(ScriptedLibrary&)> script;
        int32_t status;
        std::string message;
        Lines before;  ///< between the start and the clean-up
        size_t samplesLeft = 0;
    };
    const auto time = [](const char* value) {
        return [value](ScriptedLibrary& library) { library.options["IntegrationTime"] = value; };
    };
    const std::string noNumber = "lexical_cast(): fail to convert '";
    const Lines asked = {"get IntegrationTime"};
    const Lines listed = Joined({asked, {"table a3", "private 5 30"}});
    const Lines triggered =
        Joined({listed, {"J4_TriggerCountedScan 30", "get LastError", "get ExtendedErrorInformation"}});
    for (const Wrong& wrong : std::vector<Wrong>{
             {[](auto& library) { library.Answer("J4_TriggerCountedScan", 7); }, 7, "library text", triggered},
             {[](auto& library) {
                  library.Answer("J4_TriggerCountedScan", 7);
                  library.Throw("J4_Private 1 0", DeviceErrorException("each step of the clean-up is tried"));
              },
              7, "library text", triggered, 3},
             {time("0"), 9, "Integration time in j4 is 0.\n", asked},
             {time("abc"), 9, noNumber + "abc' from ", asked},
             {time("1e-8"), 9, "Too many samples in scan (9.25e+07).\n", Joined({asked, {"table a3"}})},
             {time("0.005 s"), 9, noNumber + "0.005 s' from ", asked},
             {[](auto& library) { library.Throw("J4_Private 5 30", WhiteBaseException("positions")); }, 103,
              "positions", listed},
             {[](auto& library) { library.CallErrorHandler("J4_TriggerCountedScan", "Scan", 12, "lamp"); }, 12,
              "Scan failed: lamp", Joined({listed, {"J4_TriggerCountedScan 30", "get ExtendedErrorInformation"}})}}) {
        SetUp();
        wrong.script(library);
        library.samples.assign(3, Flat(0.5f));
        TakeJournal();
        EXPECT_EQ(ScanRow(), wrong.status) << wrong.message;
        EXPECT_THAT(AfterTheStart(), ElementsAreArray(Joined({wrong.before, {"private 1 0", "table s0"}})));
        ASSERT_THAT(Application::failures, SizeIs(1));
        EXPECT_THAT(Application::failures[0].message, StartsWith(wrong.message));
        if (wrong.before == triggered) {
            EXPECT_THAT(GetOption("ExtendedErrorInformation"),
                        AllOf(HasSubstr("\tthird\nfourth"), Not(HasSubstr("second"))))
                << "the heading of the library's text is dropped";
        }
        EXPECT_EQ(library.samples.size(), wrong.samplesLeft);
        ExpectPosition(300.0f, 250.0f);  // the line is clean, and the motion was awaited to its end
        library.script.clear();
        library.options["IntegrationTime"] = "0.03125";
        EXPECT_EQ(ScanRow(), 0) << GetOption("LastError");
    }
}

}  // namespace
}  // namespace J4Test
