// The way from the kernel driver to the modelled devices: a thread that takes the driver's requests, writes them into
// the record of their device, and answers them. What only this driver can do wrong is injected here.
#pragma once

#include <windows.h>

#include <functional>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <thread>

#include "tests/usb/TableDevice.h"
#include "tests/usb/windows/driver/DriverWire.h"
#include "usbio/UsbIoRecords.h"

namespace J4Test {

/// Of the bridge.
inline constexpr uint8_t EndpointOut = 0x02;
inline constexpr uint8_t EndpointIn = 0x81;

class Relay {
public:
    struct Answer {
        uint32_t status = 0;
        Bytes data = {};
        uint32_t extra = 0;      ///< so many bytes more are reported than there are
        bool isPending = false;  ///< the data arrive, and the request goes on
        bool isSilent = false;   ///< no answer at all
    };

    /// What a request is about: a control code, or one of the driver's request kinds.
    using Subject = uint32_t;

    Relay();
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    /// One request to the driver's control device that has no answer. @return whether it was done
    static bool Ask(DWORD code, const void* input = nullptr, size_t size = 0);

    /// Handles that are opened from now on are this device's.
    void Plug(uint32_t table, std::shared_ptr<TableDevice> device);

    /// The next request about this subject is answered so instead; or something happens just before it is answered as
    /// ever.
    void Inject(Subject subject, Answer answer, std::function<void()> event = {});

    /// Whether an injected answer or event waits for its request.
    bool IsWaiting();

    /// Waits until all has been handled that the driver knows of.
    void CatchUp();

    /// Waits until all handles are closed. @return those that are still open after 5 seconds
    Lines Open();

private:
    struct Handle {
        unsigned number = 0;   ///< from 1 as they are opened, and again from 1 once all are closed
        uint8_t endpoint = 0;  ///< 0: not bound
        std::shared_ptr<TableDevice> device;
    };

    struct Injected {
        Subject subject;
        Answer answer;
        std::function<void()> event;
    };

    void Run();
    bool Exchange(const Bytes& input, Bytes& output);
    Answer Take(const DriverRequest& request, const Bytes& data);
    static Answer Transfer(const DriverRequest& request, const Bytes& data, Handle& handle);
    static Answer Control(const DriverRequest& request, const Bytes& data, Handle& handle);
    static Answer Descriptor(const Bytes& data, TableDevice& device);

    HANDLE driver;
    HANDLE done;
    HANDLE stop;
    HANDLE marked;
    std::recursive_mutex mutex;  ///< an event may use the relay
    std::optional<Injected> injected;
    std::map<uint32_t, std::shared_ptr<TableDevice>> plugged;
    std::map<uint64_t, Handle> handles;
    unsigned lastHandle = 0;
    std::thread thread;
};

/// From now on the pauses of the library under test pass on the bench of this process.
void RedirectPauses();

}  // namespace J4Test
