// The search for the instrument in the table, and the white correction, with a library that answers badly.
#include "tests/frame/FrameTest.h"

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TableExceptions.h"

namespace J4Test {
namespace {

using Kestrelon::DeviceDriver::J4T::SDKError;
using testing::Each;
using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FloatNear;
using testing::HasSubstr;
using testing::IsEmpty;

const Failure notFound{"J4_IsTableConnected", J4_ResultSpectrophotometerNotConnected,
                       "No j4 device connected to table"};

struct ScriptedPairingTest : FrameTest {
    /// The devices that the search looked at.
    static Lines Searched() { return LinesThatBegin(TakeJournal(), {"set DeviceType"}); }
};

TEST_F(ScriptedPairingTest, TheStatusOfEachDeviceDecides)
{
    struct Search {
        std::map<std::string, int32_t> devices;
        const char* seated;
        Lines searched;
        bool found;
    };
    for (const Search& search : std::vector<Search>{
             {{{"Sorvane0", 0}}, "Sorvane0", {"set DeviceType Sorvane0"}, true},
             {{{"Sorvane0", 0}, {"Sorvane1", 5}, {"Sorvane2", 1}, {"Sorvane3", 0}},
              "Sorvane3",
              {"set DeviceType Sorvane0", "set DeviceType Sorvane1", "set DeviceType Sorvane2",
               "set DeviceType Sorvane3"},
              true},
             {{{"Sorvane0", 0}, {"Sorvane2", 0}},  // 1 does not exist: the end
              "Sorvane2",
              {"set DeviceType Sorvane0", "set DeviceType Sorvane1", "set DeviceType Sorvane0"},
              false},
             {{{"Sorvane0", 7}}, "Sorvane0", {"set DeviceType Sorvane0"}, false},  // the start device must answer
             {{}, "Sorvane0", {"set DeviceType Sorvane0"}, false}}) {
        SetUp();
        library.devices = search.devices;
        library.seatedDevice = search.seated;
        TakeJournal();
        const J4_Result result = J4_IsTableConnected();
        EXPECT_THAT(Searched(), ElementsAreArray(search.searched));
        if (search.found) {
            EXPECT_EQ(result, 0);
            EXPECT_EQ(library.options["DeviceType"], search.seated);
        } else {
            ExpectFailure(result, notFound);
            EXPECT_EQ(library.options["DeviceType"], "Sorvane0");
        }
    }
}

TEST_F(ScriptedPairingTest, TheSearchEndsAfter128Devices)
{
    library.seatedDevice.clear();
    for (int i = 0; i < 200; ++i) {
        library.devices["Sorvane" + std::to_string(i)] = 0;
    }
    ExpectFailure(J4_IsTableConnected(), notFound);
    const Lines searched = Searched();
    ASSERT_EQ(searched.size(), 129u);
    EXPECT_EQ(searched[127], "set DeviceType Sorvane127");
    EXPECT_EQ(searched[128], "set DeviceType Sorvane0") << "back";
    library.seatedDevice = "Sorvane127";
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(ScriptedPairingTest, AnExceptionSkipsADeviceOrEndsTheSearch)
{
    for (const auto& [throws, found] : std::vector<std::pair<std::function<int32_t()>, bool>>{
             {[]() -> int32_t { throw J4LibraryException("Mode not supported."); }, true},
             {[]() -> int32_t { throw SDKError(5, "busy", ""); }, true},
             {[]() -> int32_t { throw SDKError(2, "no such device", ""); }, false}}) {
        SetUp();
        library.devices = {{"Sorvane0", 0}, {"Sorvane1", 0}};
        library.seatedDevice = "Sorvane1";
        library.script["J4_SetOption DeviceType Sorvane0"] = throws;
        library.options["DeviceType"] = "Sorvane1";
        EXPECT_EQ(J4_IsTableConnected(), found ? 0 : J4_ResultSpectrophotometerNotConnected);
        EXPECT_EQ(library.options["DeviceType"], "Sorvane1");
        library.script.clear();
        EXPECT_EQ(J4_IsTableConnected(), 0);
    }
    SetUp();
    library.Throw("J4_GetOption DeviceType", std::runtime_error("anything"));
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultSpectrophotometerNotConnected) << "no start, no search";
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"J4_IsConnected"}), IsEmpty());
}

TEST_F(ScriptedPairingTest, AnInstrumentWithoutTheModeIsSkipped)
{
    library.devices = {{"Sorvane0", 0}, {"Sorvane1", 0}};
    library.seatedDevice = "Sorvane1";
    int modes = 0;
    library.script["J4_SetOption MeasurementMode SingleReflectance"] = [&] { return ++modes <= 2 ? 6 : 0; };
    library.samples.assign(2, std::vector<float>(J4_SPECTRUM_LENGTH, 0.25f));
    library.samples[1].assign(J4_SPECTRUM_LENGTH, 0.75f);
    EXPECT_EQ(J4_IsTableConnected(), 0);
    EXPECT_EQ(library.options["DeviceType"], "Sorvane1");
    ASSERT_EQ(library.samples.size(), 2u) << "the application's samples, in their order";
    EXPECT_THAT(library.samples[0], Each(0.25f));
    EXPECT_THAT(library.samples[1], Each(0.75f));
}

TEST_F(ScriptedPairingTest, ASampleThatCannotBeReadEndsThePairingWithTheStoreAsItIs)
{
    library.samples.assign(2, std::vector<float>(J4_SPECTRUM_LENGTH, 0.25f));
    library.Answer("J4_GetSpectrum 1", 7);
    library.options["MeasurementMode"] = "ScanningReflectance";
    EXPECT_EQ(J4_IsTableConnected(), J4_ResultException);
    EXPECT_THAT(Application::failures.back().message, testing::StartsWith("Can't get sample 1 in j4 SDK.\n"));
    EXPECT_EQ(library.samples.size(), 2u);
    EXPECT_EQ(library.options["MeasurementMode"], "ScanningReflectance");
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"private", "table c1"}), IsEmpty());
    library.script.clear();
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(ScriptedPairingTest, WhatFailsWhileSomethingIsRestored)
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
    library.script.clear();
    EXPECT_EQ(J4_IsTableConnected(), 0);
}

TEST_F(ScriptedPairingTest, TheCorrectionIsWhiteBaseOverReference)
{
    Connect();
    std::vector<float> white;
    std::istringstream stream(GetOption("J4TFlash_3000"));
    for (float value = 0.0f; stream >> value;) {
        white.push_back(value / 0.9f);
    }
    ASSERT_EQ(white.size(), static_cast<size_t>(J4_SPECTRUM_LENGTH));
    for (const char* mode : {"SingleReflectance", "ScanningReflectance"}) {
        EXPECT_THAT(library.corrections[mode], testing::Pointwise(FloatNear(1e-5f), white)) << mode;
    }
}

TEST_F(ScriptedPairingTest, ABrokenWhiteReferenceIsRefused)
{
    const std::string good = library.options["1100"];  // "0.9 0.9 ..."
    struct Reference {
        std::string text;
        int32_t status;
        const char* message;
    };
    for (const Reference& reference :
         std::vector<Reference>{{good.substr(4), 10, "Invalid Sorvane white reference"},
                                {good + " 0.9", 10, "Invalid Sorvane white reference"},
                                {"", 10, "Invalid Sorvane white reference"},
                                {"0.0" + good.substr(3), 10, "Invalid Sorvane white reference (division by zero)"},
                                {"abc" + good.substr(3), 9, "lexical_cast(): fail to convert 'abc' from "},
                                {"0.9x" + good.substr(3), 9, "lexical_cast(): fail to convert '0.9x' from "}}) {
        SetUp();
        library.options["1100"] = reference.text;
        EXPECT_EQ(J4_IsTableConnected(), reference.status) << reference.text;
        EXPECT_THAT(Application::failures.back().message, testing::StartsWith(reference.message));
        EXPECT_THAT(library.corrections["SingleReflectance"], IsEmpty());
        EXPECT_THAT(LinesThatBegin(TakeJournal(), {"private 0"}), ElementsAre("private 0 0"))
            << "removed, not installed";
        library.options["1100"] = good;
        EXPECT_EQ(J4_IsTableConnected(), 0);
    }
}

TEST_F(ScriptedPairingTest, OnlyModesThatTheInstrumentHasArePrepared)
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

}  // namespace
}  // namespace J4Test
