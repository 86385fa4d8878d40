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
#include <utility>
#include <vector>

#include "tests/support/CallJournal.h"

namespace J4Test {

using Bytes = std::vector<uint8_t>;

/// How a request ends.
enum class UsbEnd {
    Done,
    Stalled,  ///< the device refuses it
    Gone,     ///< the cable is out: the system refuses it
    Removed,  ///< it is accepted, then the cable comes out
    Never     ///< the transfer never ends by itself; some characters may have gone over before
};

/// The type that the USB gives to string descriptors.
inline constexpr uint8_t StringType = 3;

/// The pauses of the library under test take no real time: each passes on the bench.
void PassOnBench(unsigned milliseconds);

/// The bench's time, in microseconds.
int64_t BenchTime();

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

    struct Reply {
        UsbEnd end = UsbEnd::Done;
        Bytes data = {};   ///< of an IN transfer
        size_t taken = 0;  ///< bytes of an OUT transfer
    };

    /// @param settle  waits until the provider has written down all that has happened
    explicit TableDevice(const Traits& traits, std::function<void()> settle = {})
        : traits(traits), settle(std::move(settle))
    {}

    static constexpr uint8_t SerialIndex = 3;  ///< of the string descriptor

    const Traits traits;
    bool isRemoved = false;
    size_t limitIn = 0;            ///< an IN transfer has at most so many characters of the line in it; 0: no limit
    size_t limitOut = 0;           ///< of an OUT transfer at most so many characters are taken; 0: no limit
    std::deque<Bytes> deliveries;  ///< what the next IN transfers bring, whatever the table has to say

    /// One of the next requests, after so many others, ends so instead of being answered.
    /// @param characters  of a transfer that never ends, how many go over before
    void Fail(int skip, UsbEnd next, size_t characters = 0)
    {
        untilFault = skip;
        fault = next;
        faultCharacters = characters;
    }

    /// The requests since the last call: "in 131072", "out ;a034", "cancel", and the provider's own.
    Lines TakeRecord();
    void Note(const std::string& line) { record.push_back(line); }

    /// Device and configuration descriptor.
    Bytes Descriptors() const;

    // The requests. Each may be the one that fails.
    UsbEnd Control(uint8_t request, uint16_t value);
    Reply Read(size_t room);
    Reply Write(const std::string& text);
    Reply Serial(uint16_t language);
    UsbEnd Other();  ///< nothing that the table would notice

private:
    std::function<void()> settle;
    int untilFault = -1;
    UsbEnd fault = UsbEnd::Done;
    size_t faultCharacters = 0;
    std::string characters;  ///< of the line, left over from a transfer that ended early
    Lines record;
};

}  // namespace J4Test
