// The world behind the kernel driver: a thread that takes the driver's requests and answers them as the
// tables of the bench would, writes all of them down, and fails some of them on demand. The bench's time jumps
// over all waiting for the table; the pauses that the library makes by itself are real and count for the table.
#pragma once

#include <windows.h>

#include <atomic>
#include <cstdint>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "tests/windows/driver/DriverWire.h"
#include "usbio/UsbIoRecords.h"

namespace J4Test {

class Relay {
public:
    using Bytes = std::vector<uint8_t>;

    struct Answer {
        uint32_t status = 0;
        Bytes data = {};
        uint32_t extra = 0;      ///< so many bytes more are reported than there are
        bool isPending = false;  ///< the data arrive, and the request goes on
        bool isSilent = false;   ///< no answer at all
    };

    /// Name of the event that a relay inside another program sets when it listens.
    static constexpr const char* readyEvent = "J4BenchRelayReady";

    /// What a request is about: a control code, or one of the driver's request kinds.
    using Subject = uint32_t;

    Relay();
    ~Relay();
    Relay(const Relay&) = delete;
    Relay& operator=(const Relay&) = delete;

    /// Answers no more; for the end of a process, when the thread has gone already.
    void Abandon();

    /// All as at the start: nothing written down, no faults, no handles.
    void Reset();

    /// The next request about this subject, after so many others, is answered so instead.
    void Inject(Subject subject, Answer answer, uint32_t skip = 0);

    /// Something happens to the world just before that request is answered.
    void Inject(Subject subject, std::function<void()> event, uint32_t skip = 0);

    /// Faults whose request has not come.
    size_t FaultsLeft();

    /// The cable comes out: the device of every handle that is open now has gone for good. Those that are
    /// opened later are the device's after it has been plugged in again. Also for use in an event.
    void LoseDevices();

    /// What the driver says about itself.
    void SetDriverInfo(const UsbIo::DriverInfo& info);

    /// The requests since the last call, in order. Handles are counted from 1 as they are opened, and again
    /// from 1 once all are closed. For instance "1 open table 0", "2 80942078 02", "1 8094206C out 12",
    /// "3 read 131072", "2 write 0D", "3 cancelled", "1 close".
    std::vector<std::string> Take();

    /// Waits until all handles are closed. @return false after 5 seconds
    bool WaitUntilClosed();

    static uint64_t Requests() { return requests; }
    static uint64_t Faults() { return faults; }

private:
    struct OpenHandle {
        unsigned number = 0;
        uint8_t endpoint = 0;  ///< 0: not bound
        bool hasDevice = true;
    };

    struct Fault {
        Subject subject;
        Answer answer;
        std::function<void()> event;
        uint32_t skip;
    };

    void Run();
    bool Exchange(const Bytes& input, Bytes& output);
    /// The fault that is due for this request, if any.
    bool TakeFault(Subject subject, Fault& found);
    /// @return true when there is something to answer
    bool Handle(const DriverRequest& request, const Bytes& data, Answer& answer);
    /// Waits until all has been handled that the driver knows of.
    void CatchUp();
    void WriteDown(const DriverRequest& request, const Bytes& data);
    /// Lets the bench's time follow a pause of the library.
    void CatchUpWithPause();
    Answer AnswerFor(const DriverRequest& request, const Bytes& data);
    Answer Control(const DriverRequest& request, const Bytes& data);
    Answer Descriptor(const Bytes& data, const std::string& serial) const;

    static inline std::atomic<uint64_t> requests = 0;
    static inline std::atomic<uint64_t> faults = 0;

    HANDLE device;
    HANDLE done;
    HANDLE stop;
    HANDLE marked;
    std::recursive_mutex mutex;  ///< an event may use the relay
    std::vector<std::string> lines;
    std::vector<Fault> pendingFaults;
    std::map<uint64_t, OpenHandle> handles;
    unsigned lastHandle = 0;
    UsbIo::DriverInfo driverInfo{};
    UsbIo::DeviceParameters parameters{};
    DWORD lastAnswer = 0;  ///< ms, real time
    std::thread thread;
};

}  // namespace J4Test
