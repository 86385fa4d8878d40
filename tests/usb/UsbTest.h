// The ground of the USB tests: one table plugged in, and all closed again at the end.
#pragma once

#include "tests/session/RowTest.h"
#include "tests/usb/UsbStand.h"

namespace J4Test {

template <class Base>
struct OnStand : Base {
    void SetUp() override
    {
        table = Stand().Plug(0);
        Base::SetUp();
    }

    void TearDown() override
    {
        EXPECT_THAT(Stand().Held(), testing::IsEmpty());
        Stand().UnplugAll();
    }

    /// The cable is out and in again.
    void Replug(const TableDevice::Traits& traits = {})
    {
        Stand().Unplug(0);
        table = Stand().Plug(0, traits);
    }

    std::shared_ptr<TableDevice> table;
};

/// An application with the shipped library.
struct UsbSessionTest : OnStand<RowTest> {
    static constexpr const char* notFound = "No device connected.";

    void TearDown() override
    {
        Application::StartOver();
        OnStand::TearDown();
    }

    /// Connects where that is not done, moves and asks where the arm is, until a call fails.
    static J4_Result ShortSession();
    static void ExpectShortSession(const std::string& when);

    /// How the application finds a table again that was plugged out.
    static void Reconnect();
};

/// The table is released: hold, foil, the foil's button; each is answered.
extern const Lines leaving;

}  // namespace J4Test
