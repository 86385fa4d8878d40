#include "tests/usb/TableDevice.h"

#include <utility>

#include "simulator/table/TableUnit.h"
#include "simulator/world/Bench.h"
#include "src/SerialUSB/UsbBridge.h"
#include "tests/support/Packets.h"

namespace J4Test {

using J4Bench::Bridge;
namespace UsbBridge = Kestrelon::DeviceDriver::J4T::LowLevel::UsbBridge;

namespace {

/// The characters of a transfer without the status bytes of its packets.
std::string Unpacked(const Bytes& transfer)
{
    std::string text;
    for (size_t i = 0; i < transfer.size(); ++i) {
        if (i % UsbBridge::PacketSize >= UsbBridge::StatusSize) {
            text += static_cast<char>(transfer[i]);
        }
    }
    return text;
}

/// Asks the bridge of the bench's table, unless that has gone.
template <class Question>
UsbEnd Ask(const TableDevice::Traits& traits, Question question)
{
    const auto table = J4Bench::Bench::Instance().TableAt(traits.table);
    switch (table != nullptr ? question(table->GetBridge()) : Bridge::Status::Removed) {
    case Bridge::Status::Done:
        return UsbEnd::Done;
    case Bridge::Status::Stalled:
        return UsbEnd::Stalled;
    default:
        return UsbEnd::Removed;
    }
}

}  // namespace

void PassOnBench(unsigned milliseconds) { J4Bench::Bench::Instance().Clock().Advance(int64_t{1000} * milliseconds); }

int64_t BenchTime() { return J4Bench::Bench::Instance().Clock().Now(); }

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

Bytes TableDevice::Descriptors() const
{
    const uint8_t serial = traits.hasSerial ? SerialIndex : 0;
    return {
        18, 1, 0x00, 0x02, 0,  0,    0,    64,   0x71, 0x09, 0x04, 0x20, 0x00, 0x06, 1, 2, serial, 1,  // device
        9,  2, 32,   0,    1,  1,    0,    0xA0, 45,  // configuration 1
        9,  4, 0,    0,    2,  0xFF, 0xFF, 0xFF, 2,   // interface 0
        7,  5, 0x81, 2,    64, 0,    0,               // bulk IN
        7,  5, 0x02, 2,    64, 0,    0,               // bulk OUT
    };
}

UsbEnd TableDevice::Other()
{
    if (isRemoved) {
        return UsbEnd::Gone;
    }
    if (untilFault < 0 || untilFault-- > 0) {
        return UsbEnd::Done;
    }
    isRemoved = fault == UsbEnd::Gone || fault == UsbEnd::Removed;
    return fault;
}

UsbEnd TableDevice::Control(uint8_t request, uint16_t value)
{
    const UsbEnd end = Other();
    return end != UsbEnd::Done ? end : Ask(traits, [&](Bridge& bridge) { return bridge.Control(request, value); });
}

TableDevice::Reply TableDevice::Read(size_t room)
{
    Reply reply{Other()};
    const bool isSilent = reply.end == UsbEnd::Never;
    if (reply.end != UsbEnd::Done && !isSilent) {
        return reply;
    }
    Note("in " + std::to_string(room));
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
        const UsbEnd end = Ask(traits, [&](Bridge& bridge) { return bridge.Read(read.data(), length); });
        if (end != UsbEnd::Done) {
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

TableDevice::Reply TableDevice::Write(const std::string& text)
{
    const UsbEnd fault = Other();
    if (fault != UsbEnd::Done && fault != UsbEnd::Never) {
        return {fault};
    }
    const bool isSilent = fault == UsbEnd::Never;
    const std::string taken = text.substr(0, isSilent ? faultCharacters : limitOut > 0 ? limitOut : text.size());
    Note("out " + taken.substr(0, taken.find('\r')));
    const UsbEnd end = Ask(traits, [&](Bridge& bridge) { return bridge.Write(taken); });
    return {isSilent ? fault : end, {}, taken.size()};
}

TableDevice::Reply TableDevice::Serial(uint16_t language)
{
    UsbEnd end = Other();
    if (end == UsbEnd::Done && (!traits.hasSerial || (traits.needsLanguage && language == 0))) {
        end = UsbEnd::Stalled;
    }
    if (end == UsbEnd::Done) {
        end = Ask(traits, [](Bridge& bridge) { return bridge.Probe(); });
    }
    if (end != UsbEnd::Done) {
        return {end};
    }
    const auto table = J4Bench::Bench::Instance().TableAt(traits.table);
    return {end, traits.serial ? *traits.serial : StringDescriptor(table->UsbSerial())};
}

}  // namespace J4Test
