#include "simulator/table/Bridge.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace J4Bench {

namespace {

using UsbBridge::PacketSize;
using UsbBridge::PayloadSize;

// What the table needs, reckoned and not taken from those who set it up.
constexpr double BaseBaud = 3000000.0;
constexpr double TableBaud = 57600.0;
constexpr double BaudTolerance = 0.03;    // what a UART that samples the middle of each bit can bear
constexpr int64_t BitsPerCharacter = 10;  // start bit, eight data bits, stop bit
constexpr uint8_t FirstStatus = 0x01;     // bit 0 is always set, the modem lines are not connected
constexpr uint8_t SecondStatus = 0x60;    // the transmitter is empty
constexpr uint8_t Garble = 0x55;          // what a line at the wrong speed makes of a character
constexpr int64_t Nano = 1000;            // nanoseconds per microsecond
constexpr int64_t Milli = 1000;           // microseconds per millisecond

}  // namespace

Bridge::Bridge(BenchClock& clock, Journal& journal, Faults& faults, TableController& controller, std::string table)
    : clock(clock), journal(journal), faults(faults), controller(controller), table(std::move(table))
{}

void Bridge::Note(const std::string& event)
{
    journal.Add({.kind = JournalEntry::Kind::Usb, .name = event, .table = table});
}

void Bridge::Collect(std::string& text, char character, JournalEntry::Kind kind, int64_t moment)
{
    if (character != '\r') {
        text += character;
    } else {
        journal.Add({.kind = kind, .name = std::exchange(text, {}), .table = table}, moment);
    }
}

Bridge::Status Bridge::Probe()
{
    if (faults.unplugAfterTransfers == 0) {
        faults.tableUnplugged = true;
    }
    if (faults.unplugAfterTransfers >= 0) {
        --faults.unplugAfterTransfers;
    }
    return faults.tableUnplugged ? Status::Removed : Status::Done;
}

int64_t Bridge::CharacterTime() const { return std::llround(1e9 * BitsPerCharacter * divisor / BaseBaud); }

bool Bridge::MatchesTable() const
{
    return lineFormat == UsbBridge::EightBitsNoParityOneStop &&
           std::fabs(BaseBaud / divisor / TableBaud - 1.0) < BaudTolerance;
}

void Bridge::Queue(std::deque<TimedByte>& line, int64_t& lineFree, int64_t moment, uint8_t value)
{
    lineFree = std::max(lineFree, moment) + CharacterTime();
    line.push_back(TimedByte{lineFree, MatchesTable() ? value : static_cast<uint8_t>(value ^ Garble)});
}

void Bridge::RunTo(int64_t moment)
{
    while (!toTable.empty() && toTable.front().moment <= moment * Nano) {
        const TimedByte byte = toTable.front();
        toTable.pop_front();
        controller.Receive(static_cast<char>(byte.value), (byte.moment + Nano - 1) / Nano);
    }
    controller.RunTo(moment);
    while (const auto reply = controller.TakeReply()) {
        for (const char character : reply->text) {
            Queue(fromTable, fromTableFree, reply->moment * Nano, static_cast<uint8_t>(character));
        }
    }
}

Bridge::Status Bridge::Control(uint8_t request, uint16_t value)
{
    if (const Status status = Probe(); status != Status::Done) {
        return status;
    }
    Note("control " + std::to_string(request) + " " + std::to_string(value));
    RunTo(clock.Now());
    switch (request) {
    case UsbBridge::Reset:
        if (value > UsbBridge::PurgeSent) {
            return Status::Stalled;
        }
        if (value != UsbBridge::PurgeSent) {
            std::erase_if(fromTable, [this](const TimedByte& byte) { return byte.moment <= clock.Now() * Nano; });
            receivedLine.clear();
        }
        if (value != UsbBridge::PurgeReceived) {
            toTable.clear();
            toTableFree = 0;
            sentLine.clear();
        }
        return Status::Done;
    case UsbBridge::ModemControl:
    case UsbBridge::FlowControl:
        return Status::Done;
    case UsbBridge::BaudRate:
        divisor = std::max<uint32_t>(value, 1);
        return Status::Done;
    case UsbBridge::LineFormat:
        lineFormat = value;
        return Status::Done;
    case UsbBridge::LatencyTimer:
        latency = Milli * std::max<int64_t>(value, 1);
        return Status::Done;
    default:
        return Status::Stalled;
    }
}

Bridge::Status Bridge::Write(std::string_view data)
{
    if (const Status status = Probe(); status != Status::Done) {
        return status;
    }
    for (const char character : data) {
        Queue(toTable, toTableFree, clock.Now() * Nano, static_cast<uint8_t>(character));
        Collect(sentLine, character, JournalEntry::Kind::Sent, clock.Now());
    }
    return Status::Done;
}

Bridge::Status Bridge::Read(uint8_t* buffer, size_t& length)
{
    const size_t room = std::exchange(length, 0);
    if (const Status status = Probe(); status != Status::Done) {
        return status;
    }
    const int64_t start = clock.Now();
    int64_t moment = start;
    bool isFull = true;
    while (isFull && room - length >= PacketSize && moment - start < LongestTransfer) {
        const int64_t deadline = std::max(moment, lastPacket + latency);
        RunTo(deadline);
        const auto arrived = static_cast<size_t>(
            std::ranges::find_if(fromTable, [&](const TimedByte& byte) { return byte.moment > deadline * Nano; }) -
            fromTable.begin());
        isFull = arrived >= PayloadSize;
        const size_t payload = std::min(arrived, PayloadSize);
        moment = isFull ? std::max(moment, (fromTable[PayloadSize - 1].moment + Nano - 1) / Nano) : deadline;
        lastPacket = moment;

        buffer[length++] = FirstStatus;
        buffer[length++] = SecondStatus;
        for (size_t i = 0; i < payload; ++i) {
            const uint8_t value = fromTable.front().value;
            fromTable.pop_front();
            buffer[length++] = value;
            Collect(receivedLine, static_cast<char>(value), JournalEntry::Kind::Received, moment);
        }
    }
    clock.AdvanceTo(moment);
    return Status::Done;
}

}  // namespace J4Bench
