// The USB-to-serial bridge in the table, seen from the computer: vendor requests set up its line, bulk
// transfers carry the characters. Incoming ones come in packets of 64 bytes that begin with two status bytes.
#pragma once

#include <cstdint>
#include <deque>
#include <string>
#include <string_view>

#include "simulator/ground/BenchApi.h"
#include "simulator/ground/BenchClock.h"
#include "simulator/ground/Faults.h"
#include "simulator/ground/Journal.h"
#include "simulator/table/TableController.h"
#include "src/SerialUSB/UsbBridge.h"
#include "src/SerialUSB/UsbLines.h"

namespace J4Bench {

namespace UsbBridge = Kestrelon::DeviceDriver::J4T::LowLevel::UsbBridge;
using Kestrelon::DeviceDriver::J4T::LowLevel::UsbLine;

class J4BENCH_API Bridge final : public UsbLine {
public:
    static constexpr int64_t LongestTransfer = 1000000;  ///< microseconds

    /// @param table  serial number by which the journal tells tables apart
    Bridge(BenchClock& clock, Journal& journal, Faults& faults, TableController& controller, std::string table);

    Status Probe() override;

    /// Request 0 resets (value 0) or purges what came in (1) or what goes out (2), 3 sets the divisor of 3,000,000 baud,
    /// 4 the line format, 9 the latency in milliseconds, which no reset changes. Modem and flow control, 1 and 2, are
    /// taken and have no effect here.
    Status Control(uint8_t request, uint16_t value) override;

    /// The characters go out on the line one after the other from now on.
    Status Write(std::string_view data) override;

    /// Time passes until the transfer ends: at its first packet that isn't full.
    Status Read(uint8_t* buffer, size_t& length) override;

    void Note(const std::string& event) override;

private:
    /// A character that is complete at a moment, in nanoseconds.
    struct TimedByte {
        int64_t moment;
        uint8_t value;
    };

    /// Adds a character to a line; a complete line goes into the journal.
    void Collect(std::string& text, char character, JournalEntry::Kind kind, int64_t moment);

    /// Lets bridge and controller work up to a moment.
    void RunTo(int64_t moment);
    void Queue(std::deque<TimedByte>& line, int64_t& lineFree, int64_t moment, uint8_t value);
    int64_t CharacterTime() const;
    bool MatchesTable() const;

    BenchClock& clock;
    Journal& journal;
    Faults& faults;
    TableController& controller;
    std::string table;
    std::deque<TimedByte> toTable;
    std::deque<TimedByte> fromTable;
    int64_t toTableFree = 0;    ///< nanoseconds
    int64_t fromTableFree = 0;  ///< nanoseconds
    int64_t lastPacket = 0;     ///< microseconds
    int64_t latency = int64_t{1000} * UsbBridge::UsualLatency;
    uint32_t divisor = 1;
    uint16_t lineFormat = 0;
    std::string sentLine;
    std::string receivedLine;
};

}  // namespace J4Bench
