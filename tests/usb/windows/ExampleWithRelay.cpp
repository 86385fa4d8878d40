// The example program with the world behind the driver in it, so that its instruments and its table are of one world.
// When it has finished, the relay of another process answers what the library still asks while the program ends.
#include "tests/usb/windows/Relay.h"

extern "C" int ScanChartMain(int argc, char** argv);

int main(int argc, char** argv)
{
    J4Test::RedirectPauses();
    int code = 0;
    {
        J4Test::Relay relay;
        relay.CatchUp();
        relay.Plug(0, std::make_shared<J4Test::TableDevice>(J4Test::TableDevice::Traits{}));
        const HANDLE ready = OpenEventA(EVENT_MODIFY_STATE, FALSE, J4Test::relayReady);
        SetEvent(ready);
        CloseHandle(ready);
        code = ScanChartMain(argc, argv);
    }
    J4Test::Relay::WaitForListener();
    return code;
}
