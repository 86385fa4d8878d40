#include "tests/usb/UsbTest.h"

#include <cstdio>
#include <fstream>

#include "tests/simulator/ChartText.h"

namespace J4Test {

namespace {

std::unique_ptr<UsbStand> stand;

/// A machine that can't have the stand skips the tests and says why.
struct StandEnvironment : testing::Environment {
    void SetUp() override
    {
        try {
            stand = UsbStand::Create();
        } catch (const std::exception& reason) {
            GTEST_SKIP() << "No USB stand on this machine: " << reason.what();
        }
    }

    void TearDown() override { stand.reset(); }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new StandEnvironment);

}  // namespace

UsbStand& Stand() { return *stand; }

const Lines leaving = {"out ;s022", "in 131072", "out ;f02f", "in 131072", "out ;f32c", "in 131072"};

void UsbSessionTest::PrepareRow()
{
    constexpr const char* chartFile = "usb_tests_row.cgats";
    std::vector<J4Bench::FlatPatch> row;
    for (const float reflectance : patches) {
        row.push_back({"patch", 210.0 + 20.0 * static_cast<double>(row.size()), 250.0, 20.0, 20.0,
                       static_cast<double>(reflectance)});
    }
    std::ofstream(chartFile) << J4Bench::ChartText(row);
    Set("Simulator.ChartFile", chartFile);
    std::remove(chartFile);
    MakeReady();
    Set("MeasurementMode", "ScanningReflectance");
}

void UsbSessionTest::ExpectPatches()
{
    ASSERT_EQ(J4_GetNumberOfAvailableSamples(), 4);
    for (uint32_t i = 0; i < std::size(patches); ++i) {
        EXPECT_THAT(Measured(i), testing::Each(testing::FloatNear(patches[i], 0.001f))) << "patch " << i;
    }
}

J4_Result UsbSessionTest::ShortSession()
{
    float x = 0.0f;
    float y = 0.0f;
    J4_Result result = J4_IsTableConnected();
    result = result == 0 ? J4_SetPosition(300.0f, 300.0f) : result;
    return result == 0 ? J4_GetPosition(&x, &y) : result;
}

void UsbSessionTest::ExpectShortSession(const std::string& when)
{
    EXPECT_EQ(ShortSession(), 0) << when << ": " << GetOption("LastError");
    ExpectPosition(300.0f, 300.0f);
}

void UsbSessionTest::Reconnect()
{
    Set("Reset", "All");
    Application::RegisterHandlers();
}

}  // namespace J4Test
