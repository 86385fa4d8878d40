// An open channel over the scripted device, with nothing written down yet.
#pragma once

#include "src/Communication/j4TableComManager.h"
#include "tests/support/ScriptedClock.h"
#include "tests/support/ScriptedUsb.h"
#include "tests/unit/UnitTest.h"

namespace J4Test {

struct Channel {
    Channel()
    {
        usb.Clear();
        ScriptedClock::Reset();
    }

    ScriptedUsb usb;
    Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager manager{0};
};

}  // namespace J4Test
