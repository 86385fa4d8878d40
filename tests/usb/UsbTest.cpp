#include "tests/usb/UsbTest.h"

namespace J4Test {

namespace {

/// Ends with the environment, not with the process: what the child of a fork has is the parent's.
UsbStand* stand = nullptr;

/// A machine that can't have the stand skips the tests and says why.
struct StandEnvironment : testing::Environment {
    void SetUp() override
    {
        try {
            stand = UsbStand::Create().release();
        } catch (const std::exception& reason) {
            GTEST_SKIP() << "No USB stand on this machine: " << reason.what();
        }
    }

    void TearDown() override { delete stand; }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new StandEnvironment);

}  // namespace

UsbStand& Stand() { return *stand; }

const Lines leaving = {"out ;s022", "in 131072", "out ;f02f", "in 131072", "out ;f32c", "in 131072"};

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
