// A table as a device on the USB: what its transfers bring and how they fail. A table of the bench answers; the
// platform's provider turns each request of the library into a call here, and the reply into what the platform's
// kernel would say. A test changes it between requests only.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/support/CallJournal.h"

namespace J4Test {

using Bytes = std::vector<uint8_t>;

/// What happens to a request instead of its being answered.
enum class UsbFault {
    None,
    Removed,          ///< the cable is out: the system refuses it
    RemovedInFlight,  ///< a transfer is accepted, then the cable comes out
    Stall,            ///< the device refuses it
    Silence           ///< the transfer never ends by itself; some characters may have gone over before
};

/// The pauses of the library under test take no real time: each passes on the bench.
void PassOnBench(unsigned milliseconds);

/// The string descriptor of a text.
Bytes StringDescriptor(const std::string& text);

class TableDevice {
public:
    struct Traits {
        size_t table = 0;  ///< the bench's table behind it
        bool hasSerial = true;
        std::optional<Bytes> serial = {};  ///< the descriptor as it stands; otherwise the bench's text
        bool needsLanguage = false;        ///< stalls when asked for a text in no language
        int configuration = 1;             ///< in force when it is plugged in; 0: none yet
    };

    enum class End { Done, Stalled, Removed, Never };

    struct Reply {
        End end = End::Done;
        Bytes data = {};   ///< of an IN transfer
        size_t taken = 0;  ///< bytes of an OUT transfer
    };

    /// @param settle  waits until the provider has written down all that has happened
    explicit TableDevice(const Traits& traits, std::function<void()> settle = {})
        : traits(traits), settle(std::move(settle))
    {}

    const Traits traits;
    bool isRemoved = false;
    size_t limitIn = 0;            ///< an IN transfer has at most so many characters of the line in it; 0: no limit
    size_t limitOut = 0;           ///< of an OUT transfer at most so many characters are taken; 0: no limit
    std::deque<Bytes> deliveries;  ///< what the next IN transfers bring, whatever the table has to say

    /// Does this to one of the next requests, after so many others.
    /// @param characters  of a silent transfer, how many go over before
    void Fail(int skip, UsbFault next, size_t characters = 0)
    {
        untilFault = skip;
        fault = next;
        faultCharacters = characters;
    }

    /// The requests since the last call: "in 131072", "out ;a034", "cancel", and the provider's own.
    Lines TakeRecord();
    void Note(const std::string& line) { record.push_back(line); }

    /// For each request that can fail, before it is answered. @return the fault that is due
    UsbFault Begin();

    Reply Control(uint8_t request, uint16_t value);
    Reply Read(size_t room, UsbFault happening);
    Reply Write(const std::string& text, UsbFault happening);
    Reply Serial(uint16_t language);

private:
    std::function<void()> settle;
    int untilFault = -1;
    UsbFault fault = UsbFault::None;
    size_t faultCharacters = 0;
    std::string characters;  ///< of the line, left over from a transfer that ended early
    Lines record;
};

}  // namespace J4Test
