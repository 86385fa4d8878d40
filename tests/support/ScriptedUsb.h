// The table's USB device in the hands of a test: what the bridge delivers is laid down beforehand or comes
// from the answers to requests, and all that the library does to the device is written down.
#pragma once

#include <cstdint>
#include <deque>
#include <functional>
#include <string>
#include <vector>

#include "tests/support/Packets.h"

namespace J4Test {

/// A reply of the table, such as Reply("$a000a12f0"): start byte, checksum and carriage return are added.
std::string Reply(const std::string& body);

/// Exists for the length of a test. Every Usb that the library makes meanwhile, and none other, works.
class ScriptedUsb {
public:
    using Replies = std::vector<std::string>;

    ScriptedUsb();
    ~ScriptedUsb();
    ScriptedUsb(const ScriptedUsb&) = delete;
    ScriptedUsb& operator=(const ScriptedUsb&) = delete;

    // What the bridge delivers, one transfer after the other; between and after them two status bytes alone.

    /// Bytes of the table, delivered in one transfer. @param delay  ms that the clock moves on by it
    void Deliver(const std::string& payload, uint32_t delay = 0)
    {
        if (!payload.empty()) {
            DeliverRaw(Packed(payload), delay);
        }
    }
    /// A transfer as it stands, status bytes included.
    void DeliverRaw(const std::vector<uint8_t>& transfer, uint32_t delay = 0)
    {
        transfers.push_back({transfer, delay});
    }

    // What the table answers.

    /// The next request that is not yet scripted has to be this one (without start byte and checksum), and is
    /// answered by these lines, each in a transfer of its own. None means silence.
    void Expect(const std::string& request, const Replies& replies) { expected.push_back({request, replies}); }
    /// Answers requests when no expected ones are left.
    void SetTable(const std::function<Replies(const std::string& request)>& handler) { table = handler; }
    /// Expected requests that did not come.
    std::size_t Missing() const { return expected.size(); }

    /// Makes a call of the device fail with a CommunicationException.
    /// @param call  "open", "close", "control", "read", "write" or "serial"
    /// @param skip  how many such calls pass before
    void FailAt(const std::string& call, int skip = 0) { failures.push_back({call, skip}); }

    /// Forgets what was written down, and scripted transfers.
    void Clear();

    std::vector<std::string> journal;   ///< all calls but reads: "open 0", "control 3 52 0 out 0", "write ;a034"
    std::vector<std::string> requests;  ///< well-formed requests, without start byte, checksum and CR
    int reads = 0;                      ///< transfers asked for
    int idlePolls = 0;                  ///< of those, answered by two status bytes
    std::string serialNumber = "T1001";
    uint32_t vendorId = 0;
    uint32_t productId = 0;

private:
    friend class ScriptedUsbFace;

    struct Transfer {
        std::vector<uint8_t> bytes;
        uint32_t delay;
    };
    struct Exchange {
        std::string request;
        Replies replies;
    };
    struct Failure {
        std::string call;
        int skip;
    };

    void Enter(const std::string& call);
    std::vector<uint8_t> NextTransfer();
    void Receive(const std::string& line);

    std::deque<Transfer> transfers;
    std::deque<Exchange> expected;
    std::vector<Failure> failures;
    std::function<Replies(const std::string&)> table;
};

}  // namespace J4Test
