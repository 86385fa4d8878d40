// The ground of the tests with a whole table on a mocked USB: the shipped library, real libusb, and one table of
// the bench plugged in. What a test opened must be closed when it ends.
#pragma once

#include <string>
#include <vector>

#include "tests/libusb/MockedBus.h"
#include "tests/session/Session.h"

namespace J4Test {

/// What libusb holds in this process: "device" for each handle, "timer" for each context, "thread" for its watch
/// for new devices.
std::vector<std::string> HeldByLibusb();

struct LibusbTest : SessionTest {
    static constexpr const char* place = "1-2";

    void SetUp() override
    {
        table = &bus.Plug(place);
        SessionTest::SetUp();
    }

    void TearDown() override
    {
        Application::StartOver();
        EXPECT_THAT(HeldByLibusb(), testing::IsEmpty());
    }

    /// The cable is out and in again.
    void Replug()
    {
        bus.Unplug(place);
        table = &bus.Plug(place);
    }

    MockedBus bus;
    MockedDevice* table = nullptr;
};

}  // namespace J4Test
