// Rows of patches: the order of a scan, what is found, and what is left behind when it fails.
#include "tests/session/RowTest.h"

namespace J4Test {
namespace {

using testing::Each;
using testing::ElementsAreArray;
using testing::FloatNear;
using testing::IsEmpty;

struct ScanTest : RowTest {
    void SetUp() override
    {
        RowTest::SetUp();
        PrepareRow();
    }
};

TEST_F(ScanTest, TableAndInstrumentAreCalledInOrder)
{
    // 96 mm at 160 mm/s take 100 ms for each ramp and 500 ms between them; with the delay of 200 ms and samples of
    // 5.007 ms these are 179 samples, raised to 180.
    const std::string count = "180";
    Lines firstRead = flashRead;  // the calibration has written the flash
    for (const auto& [algorithm, option, list] : std::vector<std::tuple<const char*, std::string, Lines>>{
             {"0", "no", {}}, {"1", "yes", {"private 5 0"}}, {"2", "yes", {"private 5 " + count}}}) {
        Set("J4TRecognitionAlgorithm", algorithm);
        StartJournal();
        EXPECT_EQ(ScanRow(), 0);
        EXPECT_THAT(TakeJournal(),
                    ElementsAreArray(Joined({Preparation("ScanningReflectance", firstRead),
                                             {"set Recognition " + option, "table d1 00c8", "table m0 078009c4012c",
                                              "table m2 0b4009c400a0", "get IntegrationTime", "table a3"},
                                             list,
                                             {"J4_TriggerCountedScan " + count}})))
            << algorithm;
        firstRead.clear();
        if (list.empty()) {
            EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 180) << "all samples";
        } else {
            ExpectPatches();
        }
        ExpectPosition(288.0f, 250.0f);
        EXPECT_EQ(GetOption("J4THoldPosition"), "yes") << "a good scan keeps the hold";
    }
    EXPECT_THAT(Application::failures, IsEmpty());
}

TEST_F(ScanTest, RowsRunInEitherDirectionAndAtTheChosenSpeeds)
{
    Set("J4TMoveSpeed", "250");
    Set("J4TScanSpeed", "80");
    StartJournal();
    EXPECT_EQ(J4_Scan(288.0f, 250.0f, 192.0f, 250.0f), 0);
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table m"}),
                ElementsAreArray({"table m0 0b4009c400fa", "table m2 078009c40050"}));
    ASSERT_EQ(J4_GetNumberOfAvailableSamples(), 4);
    EXPECT_THAT(Measured(0), Each(FloatNear(patches[3], 0.001f)));
    EXPECT_THAT(Measured(3), Each(FloatNear(patches[0], 0.001f)));
    Set("J4TScanSpeed", "401");
    ExpectFailure(ScanRow(), {"J4_Scan", J4_ResultResourceFault, "Invalid speed (401 != [1,400])."});
    Set("J4TScanSpeed", "160");
    EXPECT_EQ(J4_Scan(210.0f, 250.0f, 210.0f, 250.0f), 0) << "a row of no length is sent as such";
    EXPECT_EQ(ScanRow(), 0);
    ExpectPatches();
}

TEST_F(ScanTest, WhatFailsBeforeTheRowBeginsTouchesNoSample)
{
    EXPECT_EQ(ScanRow(), 0);
    StartJournal();
    EXPECT_EQ(J4_Scan(2000.0f, 250.0f, 288.0f, 250.0f), J4_ResultIllegalPosition);
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table m", "J4_Trigger"}), IsEmpty());
    EXPECT_EQ(J4_Scan(192.0f, 250.0f, 288.0f, -200.0f), J4_ResultIllegalPosition);
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"table m", "J4_Trigger"}), ElementsAreArray({"table m0 078009c4012c"}));
    Application::failures.clear();
    Set("Simulator.PositionNotReached", "yes");
    TakeJournal();
    ExpectFailure(ScanRow(), {"J4_Scan", J4_ResultPositionNotReached, "Current limit reached."});
    EXPECT_THAT(LinesThatBegin(TakeJournal(), {"J4_Trigger", "private 1", "table m2"}), IsEmpty());
    ExpectPatches();
}

TEST_F(ScanTest, ATableThatFailsOnTheWayIsUsableAgain)
{
    for (const auto& fault : faults) {
        Set(fault.key, fault.valueInScan != nullptr ? fault.valueInScan : fault.value);
        EXPECT_EQ(ScanRow(), fault.status) << fault.key;
        Set(fault.key, fault.healed);
        EXPECT_EQ(ScanRow(), 0) << fault.key << ": " << GetOption("LastError");
        ExpectPatches();
    }
}

TEST_F(ScanTest, SamplesAreReadAsSpectraColoursAndDensities)
{
    ASSERT_EQ(ScanRow(), 0);
    float values[4] = {};
    int32_t index = -1;
    EXPECT_EQ(J4_GetTriStimulus(values, 1), 0);
    EXPECT_NEAR(values[0], 116.0 * std::cbrt(0.6) - 16.0, 0.1) << "a neutral patch of 60 percent in CIELab";
    EXPECT_NEAR(values[1], 0.0, 0.1);
    EXPECT_EQ(J4_GetDensity(values, 1), 0);
    EXPECT_NEAR(values[0], -std::log10(0.6), 0.01);
    EXPECT_EQ(J4_GetDensities(values, &index, 1), 0);
    EXPECT_THAT(values, Each(FloatNear(0.2218f, 0.01f)));
    EXPECT_GE(index, 0);
    Spectrum substrate = Measured(1);
    EXPECT_EQ(J4_SetSubstrate(substrate.data()), 0);
    EXPECT_EQ(J4_GetDensity(values, 1), 0);
    EXPECT_NEAR(values[0], 0.0, 1e-5);

    float untouched = 7.0f;
    ExpectFailure(J4_GetDensity(&untouched, 4), {"J4_GetDensity", 7, "There is no sample 4, only 4 are available."});
    EXPECT_EQ(untouched, 7.0f);
    Set("Recognition", "no");
    EXPECT_EQ(J4_TriggerCountedScan(10), 0) << "also without the table moving";
    EXPECT_EQ(J4_GetNumberOfAvailableSamples(), 10);
    EXPECT_EQ(J4_KeyPressed(), 0);
}

}  // namespace
}  // namespace J4Test
