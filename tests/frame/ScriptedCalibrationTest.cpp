// The two checks of a calibration at their limits, with a tile and an integration time that the test scripts.
#include "tests/frame/FrameTest.h"

#include <cmath>
#include <cstdio>

#include "Utilities/Exceptions/TableExceptions.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

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
        bool isWritten;
    };
    for (const Check& check : {Check{"0.005", 0, false},
                               {"0.00549", 0, false},
                               {"0.00451", 0, false},
                               {"0.0056", 0, true},
                               {"0.0044", 0, true},
                               {FullText(limit), 0, true},
                               {FullText(std::nextafter(limit, 1.0f)), J4_ResultNotCalibrated, false},
                               {"1e3", J4_ResultNotCalibrated, false}}) {
        SetUp();
        ASSERT_EQ(J4_Calibrate(), 0) << "learns the time";
        ASSERT_EQ(GetOption("J4TFlash_3003"), "0.005");
        library.options["IntegrationTime"] = check.time;
        TakeJournal();
        const J4_Result result = J4_Calibrate();
        const Lines journal = TakeJournal();
        EXPECT_EQ(!LinesThatBegin(journal, {"table u1"}).empty(), check.isWritten) << check.time;
        if (check.status != 0) {
            ExpectFailure(result, {"J4_Calibrate", check.status, "Sorvane not placed properly."});
            EXPECT_THAT(LinesThatBegin(journal, {"J4_TriggerMeasurement", "table m"}), IsEmpty());
        }
        EXPECT_EQ(result, check.status) << check.time;
        EXPECT_EQ(std::stof(GetOption("J4TFlash_3003")) != stored, check.isWritten) << check.time;
        EXPECT_EQ(library.options["MeasurementMode"], "SingleReflectance");
    }
}

TEST_F(ScriptedCalibrationTest, ANewInstrumentPassesAtAnyTime)
{
    ASSERT_EQ(J4_Calibrate(), 0);
    // The library's serial number is also what the pairing compares with: a new pairing learns it.
    library.options["SerialNumber"] = "17";
    library.options["IntegrationTime"] = "0.5";
    library.deviceMessageHandler(1, ScriptedLibrary::serialNumber);
    EXPECT_EQ(J4_Calibrate(), 0);
    EXPECT_EQ(GetOption("J4TFlash_3002"), "17");
    EXPECT_EQ(GetOption("J4TFlash_3003"), "0.5");
}

TEST_F(ScriptedCalibrationTest, TextsThatAreNoNumbersAreRefused)
{
    for (const char* time : {"abc", "0.005s", ""}) {
        library.options["IntegrationTime"] = time;
        EXPECT_EQ(J4_Calibrate(), J4_ResultException);
        EXPECT_THAT(Application::failures.back().message,
                    testing::StartsWith("lexical_cast(): fail to convert '" + std::string(time) + "' from "));
        EXPECT_EQ(library.options["MeasurementMode"], "SingleReflectance");
    }
    EXPECT_EQ(GetOption("J4TFlash_3002"), "-1") << "nothing learnt";
    library.options["IntegrationTime"] = "0.005";
    EXPECT_EQ(J4_Calibrate(), 0);
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
        library.samples.assign(3, std::vector<float>(J4_SPECTRUM_LENGTH, 0.5f));
        const J4_Result result = J4_Calibrate();
        if (tile.status != 0) {
            ExpectFailure(result, {"J4_Calibrate", tile.status, "White base is dirty."});
        }
        EXPECT_EQ(result, tile.status);
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
    library.script.clear();
    EXPECT_EQ(J4_Calibrate(), 0);
}

TEST_F(ScriptedCalibrationTest, TheStatusOfTheLibrarysCalibrationIsNotLookedAt)
{
    library.Answer("J4_Calibrate", 4);
    EXPECT_EQ(J4_Calibrate(), 0) << "with the table, the checks decide";
    library.options["SerialNumber"] = "other";
    ExpectFailure(J4_Calibrate(), {"J4_Calibrate", 4, "library text"});
}

}  // namespace
}  // namespace J4Test
