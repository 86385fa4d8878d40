#include "tests/usb/TableDevice.h"

#include <utility>

#include "simulator/table/TableUnit.h"
#include "simulator/world/Bench.h"

namespace J4Test {

using J4Bench::Bridge;

namespace {

constexpr uint8_t StringType = 3;
constexpr uint8_t BridgeStatus[] = {0x01, 0x60};

/// The characters of a transfer without the status bytes of its packets.
std::string Unpacked(const Bytes& transfer)
{
    std::string text;
    for (size_t i = 0; i < transfer.size(); ++i) {
        if (i % Bridge::PacketSize >= Bridge::StatusSize) {
            text += static_cast<char>(transfer[i]);
        }
    }
    return text;
}

Bytes Packed(const std::string& text)
{
    Bytes transfer(std::begin(BridgeStatus), std::end(BridgeStatus));
    for (const char character : text) {
        if (transfer.size() % Bridge::PacketSize == 0) {
            transfer.insert(transfer.end(), std::begin(BridgeStatus), std::end(BridgeStatus));
        }
        transfer.push_back(static_cast<uint8_t>(character));
    }
    return transfer;
}

/// Asks the bridge of the bench's table, unless that has gone.
template <class Question>
TableDevice::End Ask(const TableDevice::Traits& traits, Question question)
{
    const auto table = J4Bench::Bench::Instance().TableAt(traits.table);
    switch (table != nullptr ? question(table->GetBridge()) : Bridge::Status::Removed) {
    case Bridge::Status::Done:
        return TableDevice::End::Done;
    case Bridge::Status::Stalled:
        return TableDevice::End::Stalled;
    default:
        return TableDevice::End::Removed;
    }
}

}  // namespace

void PassOnBench(unsigned milliseconds) { J4Bench::Bench::Instance().Clock().Advance(int64_t{1000} * milliseconds); }

Bytes StringDescriptor(const std::string& text)
{
    Bytes descriptor = {static_cast<uint8_t>(2 + 2 * text.size()), StringType};
    for (const char character : text) {
        descriptor.insert(descriptor.end(), {static_cast<uint8_t>(character), 0});
    }
    return descriptor;
}

Lines TableDevice::TakeRecord()
{
    if (settle) {
        settle();
    }
    return std::exchange(record, {});
}

UsbFault TableDevice::Begin()
{
    if (isRemoved) {
        return UsbFault::Removed;
    }
    if (untilFault < 0 || untilFault-- > 0) {
        return UsbFault::None;
    }
    isRemoved = fault == UsbFault::Removed || fault == UsbFault::RemovedInFlight;
    return fault;
}

TableDevice::Reply TableDevice::Control(uint8_t request, uint16_t value)
{
    return {Ask(traits, [&](Bridge& bridge) { return bridge.Control(request, value); })};
}

TableDevice::Reply TableDevice::Read(size_t room, UsbFault happening)
{
    Note("in " + std::to_string(room));
    const bool isSilent = happening == UsbFault::Silence;
    Reply reply{isSilent ? End::Never : End::Done};
    if (!deliveries.empty()) {
        reply.data = std::move(deliveries.front());
        deliveries.pop_front();
        return reply;
    }
    if (isSilent && faultCharacters == 0) {
        return reply;
    }
    if (characters.empty()) {
        Bytes read(room);
        size_t length = room;
        const End end = Ask(traits, [&](Bridge& bridge) { return bridge.Read(read.data(), length); });
        if (end != End::Done) {
            return {end};
        }
        read.resize(length);
        characters = Unpacked(read);
    }
    const size_t count = isSilent ? faultCharacters : limitIn > 0 ? limitIn : characters.size();
    reply.data = Packed(characters.substr(0, count));
    characters.erase(0, count);
    return reply;
}

TableDevice::Reply TableDevice::Write(const std::string& text, UsbFault happening)
{
    const bool isSilent = happening == UsbFault::Silence;
    const std::string taken = text.substr(0, isSilent ? faultCharacters : limitOut > 0 ? limitOut : text.size());
    Note("out " + taken.substr(0, taken.find('\r')));
    const End end = Ask(traits, [&](Bridge& bridge) { return bridge.Write(taken); });
    return {isSilent ? End::Never : end, {}, taken.size()};
}

TableDevice::Reply TableDevice::Serial(uint16_t language)
{
    if (!traits.hasSerial || (traits.needsLanguage && language == 0)) {
        return {End::Stalled};
    }
    const auto table = J4Bench::Bench::Instance().TableAt(traits.table);
    const End end = Ask(traits, [](Bridge& bridge) { return bridge.Probe(); });
    if (end != End::Done) {
        return {end};
    }
    return {end, traits.serial ? *traits.serial : StringDescriptor(table->UsbSerial())};
}

}  // namespace J4Test
