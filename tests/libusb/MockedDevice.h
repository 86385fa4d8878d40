// One mocked table device on the USB: it takes the requests that libusb sends to the kernel's device file, lets a
// table of the bench answer them, and keeps a record. It works in umockdev's thread.
#pragma once

#include <umockdev.h>

#include <cstdint>
#include <deque>
#include <list>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

namespace J4Bench {
class TableUnit;
}

namespace J4Test {

struct Urb;

/// What happens to a request instead of its being answered.
enum class Fault {
    None,
    Removed,          ///< the cable is out: the kernel refuses it
    RemovedInFlight,  ///< a transfer is accepted, then the cable comes out
    Stall,            ///< the device refuses it; the endpoint of a bulk transfer is halted
    Silence           ///< the transfer never ends by itself; some bytes may have gone over before
};

/// The string descriptor of a text.
std::vector<uint8_t> StringDescriptor(const std::string& text);

class MockedDevice {
public:
    struct Traits {
        size_t table = 0;  ///< the bench's table behind it
        bool hasSerial = true;
        std::optional<std::vector<uint8_t>> serial = {};  ///< the descriptor as it stands; otherwise the bench's text
        bool needsLanguage = false;                       ///< stalls when asked for a text in no language
        int configuration = 1;                            ///< in force when it is plugged in; 0: none yet
    };

    explicit MockedDevice(const Traits& traits);
    ~MockedDevice();
    MockedDevice(const MockedDevice&) = delete;
    MockedDevice& operator=(const MockedDevice&) = delete;

    /// Device and configuration descriptor, as sysfs shows them.
    std::vector<uint8_t> Descriptors() const;

    /// Who takes the requests to the device file.
    UMockdevIoctlBase* Handler() const { return handler; }

    /// Does this to one of the next requests.
    /// @param skip   so many requests pass before; transfers and all others count, but not what the kernel
    ///               answers by itself or what fetches or cancels a transfer
    /// @param bytes  of a silent transfer, payload that goes over before
    void Fail(int skip, Fault fault, size_t bytes = 0);

    /// Transfers end early from now on: an IN transfer has at most so many characters of the line in it, of an
    /// OUT transfer at most so many are taken. 0: no limit.
    void Limit(size_t in, size_t out);

    /// The next IN transfers bring this, whatever the table has to say.
    void Deliver(const std::vector<uint8_t>& transfer);

    void Remove();
    bool IsRemoved() const;

    /// The requests since the last call: "claim 0", "clear halt 81", "control 40 3 34", "out ;a034",
    /// "in 131072", "cancel", "reset", "release 0", "connect 0".
    std::vector<std::string> TakeRecord();

private:
    static gboolean HandleIoctl(UMockdevIoctlBase*, UMockdevIoctlClient* client, gpointer device);

    int Handle(unsigned long request, UMockdevIoctlData* argument);
    int HandleDeviceRequest(unsigned long request, UMockdevIoctlData* argument);
    int Submit(UMockdevIoctlData* argument);
    int Reap(UMockdevIoctlData* argument);
    int Discard(UMockdevIoctlData* argument);
    Fault NextFault();
    void Answer(Urb& urb, Fault fault);
    void AnswerControl(Urb& urb);
    void AnswerIn(Urb& urb, Fault fault);
    void AnswerOut(Urb& urb, Fault fault);
    std::shared_ptr<J4Bench::TableUnit> Table() const;
    void Note(const std::string& line) { record.push_back(line); }

    const Traits traits;
    UMockdevIoctlBase* handler;
    mutable std::mutex mutex;
    bool removed = false;
    int untilFault = -1;
    Fault fault = Fault::None;
    size_t faultBytes = 0;
    size_t limitIn = 0;
    size_t limitOut = 0;
    std::set<uint8_t> halted;
    std::deque<std::vector<uint8_t>> deliveries;
    std::string characters;  ///< of the line, left over from a transfer that ended early
    std::list<std::unique_ptr<Urb>> pending;
    std::deque<std::unique_ptr<Urb>> finished;
    std::vector<std::string> record;
};

}  // namespace J4Test
