// Calibration on the table's tile, its two checks, and the white base in the table's flash.
#include <cmath>

#include "tests/session/Session.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::ElementsAreArray;
using testing::FloatNear;
using testing::IsEmpty;
using testing::Pointwise;
using testing::SizeIs;

struct CalibrationTest : SessionTest {
    static constexpr float homeX = 100.0f;
    static constexpr float homeY = 80.0f;

    void SetUp() override
    {
        SessionTest::SetUp();
        ASSERT_EQ(J4_IsTableConnected(), 0);
        ASSERT_EQ(J4_GoToHomePosition(), 0);
    }

    static Lines DirtCheck()
    {
        return {"get ColorSpaceDescription.Type",
                "get Colorimetric.Illumination",
                "get Colorimetric.Observer",
                "set MeasurementMode SingleReflectance",
                "set ColorSpaceDescription.Type CIELab",
                "set Colorimetric.Illumination D50",
                "set Colorimetric.Observer TwoDegree",
                "J4_TriggerMeasurement",
                "J4_GetTriStimulus 0",
                "table p0",
                "table m0 03e8031b012c",
                "J4_TriggerMeasurement",
                "J4_GetTriStimulus 0",
                "table m0 03e80320012c",
                "table s0",
                "set Colorimetric.Observer TwoDegree",
                "set Colorimetric.Illumination D50",
                "set ColorSpaceDescription.Type CIEXYZ",
                "private 1 0"};
    }

    /// Everything up to the decision of the placement check.
    static Lines BeforeTheDecision(const std::string& mode)
    {
        return Joined({{"get SerialNumber", "get MeasurementMode"},
                       Preparation(mode),
                       {"get MeasurementMode", "set MeasurementMode ScanningReflectance", "J4_Calibrate",
                        "get SerialNumber", "get IntegrationTime"}});
    }
};

TEST_F(CalibrationTest, BothModesAreCalibratedAndCheckedInOrder)
{
    Set("MeasurementMode", "ScanningReflectance");
    Set("ColorSpaceDescription.Type", "CIEXYZ");
    EXPECT_EQ(GetOption("J4TFlash_3002"), "-1");
    const Lines learnt = {"table k3", "table r",  "table uA", "table u0", "table u2", "table u9",
                          "table u9", "table u0", "table u1", "table uB", "table a0", "table i0"};
    const Lines rest = Joined({{"set MeasurementMode SingleReflectance", "J4_Calibrate"},
                               DirtCheck(),
                               {"set MeasurementMode ScanningReflectance"}});
    StartJournal();
    EXPECT_EQ(J4_Calibrate(), 0);
    EXPECT_THAT(TakeJournal(), ElementsAreArray(Joined({BeforeTheDecision("ScanningReflectance"), learnt, rest})));
    EXPECT_EQ(GetOption("J4TFlash_3002"), seated) << "the instrument is known now";
    const std::string time = GetOption("J4TFlash_3003");
    EXPECT_EQ(time, GetOption("IntegrationTime"));
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 0) << "the check's own samples are gone";
    ExpectPosition(homeX, homeY);
    EXPECT_THAT(Numbers("5045"), ElementsAre(FloatNear(0.0f, 1e-4f)));

    TakeJournal();
    EXPECT_EQ(J4_Calibrate(), 0);
    EXPECT_THAT(TakeJournal(), ElementsAreArray(Joined({BeforeTheDecision("ScanningReflectance"), rest})))
        << "a known instrument leaves the flash alone";
    EXPECT_THAT(Application::failures, IsEmpty());
}

TEST_F(CalibrationTest, OtherModesInstrumentsAndSettingsAreCalibratedPlainly)
{
    for (const auto& [key, value, journal] : std::vector<std::tuple<const char*, const char*, Lines>>{
             {"MeasurementMode", "SingleEmission",
              Joined({{"get SerialNumber", "get MeasurementMode"},
                      Preparation("SingleEmission"),
                      {"get MeasurementMode", "J4_Calibrate", "set MeasurementMode SingleEmission"}})},
             {"DeviceType", "Sorvane0", {"get SerialNumber", "J4_Calibrate"}}}) {
        Set(key, value);
        StartJournal();
        EXPECT_EQ(J4_Calibrate(), 0);
        EXPECT_THAT(TakeJournal(), ElementsAreArray(journal)) << value;
    }
    SetUp();
    for (const char* switchedOff : {"5040", "5042"}) {
        Set(switchedOff, "0");
    }
    Set("Simulator.DirtyTile", "yes");
    Set("Simulator.InstrumentLoose", "yes");
    StartJournal();
    EXPECT_EQ(J4_Calibrate(), 0);
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table", "J4_Calibrate"}), ElementsAre("J4_Calibrate", "J4_Calibrate"))
        << "no move, no write to the flash";
}

TEST_F(CalibrationTest, LooseInstrumentAndDirtyTileAreFoundInAllNoise)
{
    Set("Simulator.Noise", "0.005");
    for (int i = 0; i < 100; ++i) {
        ASSERT_EQ(J4_Calibrate(), 0) << i << ": " << GetOption("LastError");
    }
    Set("Simulator.DirtyTile", "yes");
    const Failure dirty{"J4_Calibrate", J4_ResultNotCalibrated, "White base is dirty."};
    ExpectFailure(J4_Calibrate(), dirty);
    ExpectPosition(homeX, homeY);
    Set("Simulator.Noise", "0");
    ExpectFailure(J4_Calibrate(), dirty);
    const std::vector<float> difference = Numbers("5045");
    ASSERT_THAT(difference, SizeIs(1));
    Set("5044", std::to_string(difference[0] + 0.1f));
    EXPECT_EQ(J4_Calibrate(), 0) << "within a wider limit";

    const std::string time = GetOption("J4TFlash_3003");
    Set("Simulator.InstrumentLoose", "yes");
    StartJournal();
    ExpectFailure(J4_Calibrate(), {"J4_Calibrate", J4_ResultNotCalibrated, "Sorvane not placed properly."});
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table", "J4_Calibrate"}), ElementsAre("J4_Calibrate"))
        << "no second calibration, no dirt check, nothing written";
    EXPECT_EQ(GetOption("J4TFlash_3003"), time);
    Set("5041", "1.3");
    EXPECT_EQ(J4_Calibrate(), 0) << "within a wider factor";
    EXPECT_NE(GetOption("J4TFlash_3003"), time) << "and learnt, since it is far off";
}

TEST_F(CalibrationTest, ResultsReferToTheWhiteBaseInTheFlash)
{
    const std::vector<float> factory = Numbers("J4TFlash_3000");
    ASSERT_THAT(factory, SizeIs(J4_SPECTRUM_LENGTH));
    const auto tile = [] {
        EXPECT_EQ(J4_Calibrate(), 0) << GetOption("LastError");
        EXPECT_EQ(J4_TriggerMeasurement(), 0) << GetOption("LastError");
        return Measured();
    };
    EXPECT_THAT(tile(), Pointwise(FloatNear(1e-4f), factory));

    Spectrum white;
    for (size_t i = 0; i < white.size(); ++i) {
        white[i] = 0.7f + 0.005f * static_cast<float>(i);
    }
    StartJournal();
    EXPECT_EQ(J4_SynchronizeWhitebases(white.data()), 0);
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table u", "table i", "set DeviceType", "private 0 1"}),
                ElementsAre("table u8", "table u8", "table uA", "table u0", "table u2", "table u9", "table u9",
                            "table u0", "table u1", "table uB", "table i0", "set DeviceType Sorvane0",
                            "set DeviceType Sorvane1", "table u8", "table u8", "private 0 1", "private 0 1"))
        << "read, written, then set up anew with the new correction";
    EXPECT_THAT(Numbers("J4TFlash_3000"), Pointwise(FloatNear(1e-5f), white));
    EXPECT_GT(std::stoll(GetOption("J4TLastWhiteBaseTransferTime")), 1704067200) << "not the factory's any more";
    EXPECT_EQ(GetOption("J4TMaxSpeed"), "400") << "the rest of the block is as it was";
    EXPECT_EQ(GetOption("J4TFlash_1001"), "5000");
    EXPECT_EQ(GetOption("J4TJ4SerialNumber"), seated);
    EXPECT_EQ(J4_GoToHomePosition(), 0);
    EXPECT_THAT(tile(), Pointwise(FloatNear(1e-4f), white));

    Set("Reset", "All");
    EXPECT_THAT(Numbers("J4TFlash_3000"), Pointwise(FloatNear(1e-5f), white)) << "kept by the table";
    Set("J4TEnableWhitebaseCorrection", "no");
    EXPECT_EQ(J4_TriggerMeasurement(), 3) << "the library has forgotten its calibration";
}

}  // namespace
}  // namespace J4Test
