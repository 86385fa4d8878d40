// A table on a serial line of no length: sends request lines to a controller and gives its replies.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simulator/table/TableController.h"
#include "simulator/table/WireText.h"

namespace J4Bench {

struct TableLine {
    BenchClock clock;
    Faults faults;
    TableController table{clock, faults};

    static constexpr int64_t Shortly = 1000;   ///< microseconds in which a command is answered
    static constexpr int64_t Long = 20000000;  ///< microseconds in which every motion ends

    /// Sends a line as it stands.
    void SendRaw(const std::string& line)
    {
        for (const char character : line + "\r") {
            table.Receive(character, clock.Now());
        }
    }

    /// All replies of the next so many microseconds, without start byte and carriage return, checksums taken
    /// off where they are right, separated by blanks.
    std::string Replies(int64_t microseconds)
    {
        clock.Advance(microseconds);
        table.RunTo(clock.Now());
        std::string all;
        while (const auto reply = table.TakeReply()) {
            std::string text = reply->text.substr(0, reply->text.size() - 1);
            if (HasWireChecksum(text)) {
                text.resize(text.size() - 2);
            }
            all += (all.empty() ? "" : " ") + text.substr(1);
        }
        return all;
    }

    /// The answer to a request such as "a0".
    std::string Ask(const std::string& request, int64_t microseconds = Shortly)
    {
        const std::string line = ";" + request;
        SendRaw(line + WireChecksum(line));
        return Replies(microseconds);
    }

    /// Motors ready.
    void Start() { Ask("i0", Long); }

    /// A target's coordinate as the host writes it: a negative one fills eight digits.
    static std::string Field(int32_t value) { return ToHex(static_cast<uint32_t>(value), value < 0 ? 8 : 4); }

    static std::string MoveTo(int32_t x, int32_t y, uint32_t speed, char subCommand = '0')
    {
        return std::string("m") + subCommand + Field(x) + Field(y) + ToHex(speed, 4);
    }
};

}  // namespace J4Bench
