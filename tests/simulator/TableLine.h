// A serial line of no length to a table's controller: sends request lines and gives the replies.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "simulator/table/TableController.h"
#include "trace/WireText.h"

namespace J4Bench {

using J4Trace::FromHex;
using J4Trace::HasWireChecksum;
using J4Trace::ToHex;
using J4Trace::WireChecksum;

class TableLine {
public:
    static constexpr int64_t Shortly = 1000;   ///< microseconds in which a command is answered
    static constexpr int64_t Long = 20000000;  ///< microseconds in which every motion ends

    TableLine(BenchClock& clock, TableController& table) : clock(clock), table(table) {}

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
        while ((next || (next = table.TakeReply())) && next->moment <= clock.Now()) {
            std::string text = next->text.substr(0, next->text.size() - 1);
            next.reset();
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

    /// @param command  for instance "m0"; coordinates as the host writes them: a negative one fills eight digits
    static std::string MoveTo(const std::string& command, int32_t x, int32_t y, uint32_t speed)
    {
        const auto field = [](int32_t value) { return ToHex(static_cast<uint32_t>(value), value < 0 ? 8 : 4); };
        return command + field(x) + field(y) + ToHex(speed, 4);
    }

private:
    BenchClock& clock;
    TableController& table;
    std::optional<TableController::Reply> next;  ///< made, and not yet on the line
};

/// A table that has just been switched on, with no bench around it.
struct LoneTable {
    BenchClock clock;
    Faults faults;
    TableController table{clock, faults};
    TableLine line{clock, table};
};

}  // namespace J4Bench
