#include "tests/usb/TableDevice.h"

#include <algorithm>
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

TableDevice::End EndOf(Bridge::Status status)
{
    switch (status) {
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

TableDevice::TableDevice(const Traits& traits, std::function<void()> settle) : traits(traits), settle(std::move(settle))
{}

void TableDevice::Fail(int skip, UsbFault next, size_t count)
{
    const std::lock_guard lock(mutex);
    untilFault = skip;
    fault = next;
    faultCharacters = count;
}

void TableDevice::Limit(size_t in, size_t out)
{
    const std::lock_guard lock(mutex);
    limitIn = in;
    limitOut = out;
}

void TableDevice::Deliver(const Bytes& transfer)
{
    const std::lock_guard lock(mutex);
    deliveries.push_back(transfer);
}

void TableDevice::Remove()
{
    const std::lock_guard lock(mutex);
    removed = true;
}

bool TableDevice::IsRemoved() const
{
    const std::lock_guard lock(mutex);
    return removed;
}

Lines TableDevice::TakeRecord()
{
    if (settle) {
        settle();
    }
    const std::lock_guard lock(mutex);
    return std::exchange(record, {});
}

void TableDevice::Note(const std::string& line)
{
    const std::lock_guard lock(mutex);
    record.push_back(line);
}

UsbFault TableDevice::Begin()
{
    const std::lock_guard lock(mutex);
    if (removed) {
        return UsbFault::Removed;
    }
    if (untilFault < 0 || untilFault-- > 0) {
        return UsbFault::None;
    }
    removed = fault == UsbFault::Removed || fault == UsbFault::RemovedInFlight;
    return fault;
}

TableDevice::Reply TableDevice::Control(uint8_t request, uint16_t value)
{
    const auto table = Table();
    return {table != nullptr ? EndOf(table->GetBridge().Control(request, value)) : End::Removed};
}

TableDevice::Reply TableDevice::Read(size_t room, UsbFault happening)
{
    Note("in " + std::to_string(room));
    const std::lock_guard lock(mutex);
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
        const auto table = Table();
        Bytes read(room);
        size_t length = room;
        const End end = table != nullptr ? EndOf(table->GetBridge().Read(read.data(), length)) : End::Removed;
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
    const std::lock_guard lock(mutex);
    const bool isSilent = happening == UsbFault::Silence;
    const std::string taken = text.substr(0, isSilent ? faultCharacters : limitOut > 0 ? limitOut : text.size());
    record.push_back("out " + taken.substr(0, taken.find('\r')));
    const auto table = Table();
    const End end = table != nullptr ? EndOf(table->GetBridge().Write(taken)) : End::Removed;
    return {isSilent ? End::Never : end, {}, taken.size()};
}

TableDevice::Reply TableDevice::Serial(uint16_t language)
{
    const auto table = Table();
    if (table == nullptr || !traits.hasSerial || (traits.needsLanguage && language == 0)) {
        return {End::Stalled};
    }
    if (const End end = EndOf(table->GetBridge().Probe()); end != End::Done) {
        return {end};
    }
    return {End::Done, traits.serial ? *traits.serial : StringDescriptor(table->UsbSerial())};
}

std::shared_ptr<J4Bench::TableUnit> TableDevice::Table() const
{
    return J4Bench::Bench::Instance().TableAt(traits.table);
}

}  // namespace J4Test
