// One table as it stands on the bench: the controller, the USB bridge before it, the bridge's serial number,
// and the seat for an instrument.
#pragma once

#include <string>

#include "simulator/table/Bridge.h"
#include "simulator/table/TableController.h"

namespace J4Bench {

class TableUnit {
public:
    TableUnit(BenchClock& clock, Journal& journal, Faults& faults, std::string usbSerial);

    /// The text that the USB device shows as its serial number, for instance "640001".
    const std::string& UsbSerial() const { return usbSerial; }

    Bridge& GetBridge() { return bridge; }
    TableController& Controller() { return controller; }

    /// Serial number of the instrument in the seat, empty when there is none.
    std::string seatedInstrument;

private:
    std::string usbSerial;
    TableController controller;
    Bridge bridge;
};

}  // namespace J4Bench
