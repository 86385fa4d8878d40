// What happened between application, instrument and table: a call, a frame on the wire, a request to the USB bridge, a run of samples.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace J4Trace {

struct JournalEntry {
    enum class Kind {
        Call,      ///< the application calls a function of the table's library
        Return,    ///< that ends
        Library,   ///< a function of the instrument's library has ended
        Samples,   ///< the instrument took samples
        Sent,      ///< a frame to the table
        Received,  ///< a frame from the table
        Usb,       ///< something else on its USB cable: "open 0", "control 3 52", "close"
    };

    /// The kinds by their names in a trace, in their order.
    static constexpr const char* KindNames[] = {"call", "return", "library", "samples", "sent", "received", "usb"};

    Kind kind;
    std::string name;  ///< function; frame without its carriage return; what is on the cable
    std::vector<std::string> arguments = {};
    std::optional<int32_t> status = {};
    std::optional<std::string> result = {};  ///< of a function without a status; the text of a failure
    std::string table = {};                  ///< serial number of the table whose cable it is
    int64_t begin = 0;                       ///< of samples: when the first began, microseconds
    uint32_t count = 0;                      ///< of samples

    const char* KindName() const { return KindNames[static_cast<size_t>(kind)]; }
    bool IsFrame() const { return kind == Kind::Sent || kind == Kind::Received; }
};

}  // namespace J4Trace
