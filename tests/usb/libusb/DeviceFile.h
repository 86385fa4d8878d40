// The kernel's device file of one table: takes the requests that libusb sends to it, lets the modelled device answer
// them, and keeps the transfers that have not ended. It works in umockdev's thread.
#pragma once

#include <umockdev.h>

#include <deque>
#include <list>
#include <memory>
#include <set>

#include "tests/usb/TableDevice.h"

namespace J4Test {

struct Urb;

class DeviceFile {
public:
    explicit DeviceFile(std::shared_ptr<TableDevice> device);
    ~DeviceFile();
    DeviceFile(const DeviceFile&) = delete;
    DeviceFile& operator=(const DeviceFile&) = delete;

    /// Who takes the requests.
    UMockdevIoctlBase* Handler() const { return handler; }

    const std::shared_ptr<TableDevice> device;

private:
    static gboolean HandleIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer file);

    int Handle(unsigned long request, UMockdevIoctlData* argument);
    int HandleDeviceRequest(unsigned long request, UMockdevIoctlData* argument);
    int Submit(UMockdevIoctlData* argument);
    int Reap(UMockdevIoctlData* argument);
    int Discard(UMockdevIoctlData* argument);
    UsbEnd Answer(Urb& urb);
    UsbEnd AnswerControl(Urb& urb);

    UMockdevIoctlBase* handler;
    std::set<uint8_t> halted;
    std::list<std::unique_ptr<Urb>> pending;
    std::deque<std::unique_ptr<Urb>> finished;
};

}  // namespace J4Test
