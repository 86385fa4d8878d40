#include "src/SerialUSB/SerialUSB.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstring>
#include <stdexcept>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/WrappingArithmetic.h"
#include "src/SerialUSB/UsbBridge.h"
#include "src/SerialUSB/UsbFactory.h"

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

namespace {

using UsbBridge::PacketSize;
using UsbBridge::PayloadSize;
using UsbBridge::StatusSize;

constexpr uint32_t VendorId = 0x0971;
constexpr uint32_t ProductId = 0x2004;

/// Bit 0 of the first status byte is set in every good packet.
constexpr uint8_t StatusAlwaysSet = 0x01;

// The bridge answers every 16 milliseconds (its default latency), so that is the length of one poll.
constexpr int32_t PollShift = 4;
constexpr int32_t PollHalf = 8;
constexpr int32_t MinimumPolls = 5;
constexpr int32_t ClearPolls = 10;

/// The bridge's set-up, as vendor requests.
struct BridgeRequest {
    unsigned char request;
    unsigned short value;
};
constexpr std::array<BridgeRequest, 5> bridgeSetUp = {{
    {UsbBridge::Reset, UsbBridge::ResetAll},
    {UsbBridge::Reset, UsbBridge::PurgeReceived},
    {UsbBridge::Reset, UsbBridge::PurgeSent},
    {UsbBridge::BaudRate, UsbBridge::TableDivisor},
    {UsbBridge::LineFormat, UsbBridge::EightBitsNoParityOneStop},
}};

/// Sixteen bytes that the compiler keeps in one register.
struct Chunk {
    uint64_t words[2];
};

/// Moves a packet's payload behind that of the packets before it. All is read before anything is written, in
/// registers and with an overlap of the last two chunks, so that the move is safe in place and fast.
inline void MovePayload(uint8_t* cache, std::size_t packet)
{
    const uint8_t* from = cache + PacketSize * packet + StatusSize;
    uint8_t* to = cache + PayloadSize * packet;
    constexpr std::size_t last = PayloadSize - sizeof(Chunk);
    Chunk first;
    Chunk second;
    Chunk third;
    Chunk fourth;
    std::memcpy(&first, from, sizeof(Chunk));
    std::memcpy(&second, from + sizeof(Chunk), sizeof(Chunk));
    std::memcpy(&third, from + 2 * sizeof(Chunk), sizeof(Chunk));
    std::memcpy(&fourth, from + last, sizeof(Chunk));
    std::memcpy(to, &first, sizeof(Chunk));
    std::memcpy(to + sizeof(Chunk), &second, sizeof(Chunk));
    std::memcpy(to + 2 * sizeof(Chunk), &third, sizeof(Chunk));
    std::memcpy(to + last, &fourth, sizeof(Chunk));
}

}  // namespace

SerialUSB::SerialUSB()
try : usb(CreateUsb(VendorId, ProductId)), cache(UsbBridge::LargestTransfer) {
}
J4T_TRACE_FRAME

SerialUSB::~SerialUSB()
{
    try {
        CloseDevice();
    } catch (...) {
        // A device that fails while it is closed is gone.
    }
}

void SerialUSB::OpenDevice(uint16_t index)
try {
    CloseDevice();
    usb->Open(index);
    open = true;
}
J4T_TRACE_FRAME

void SerialUSB::CloseDevice()
try {
    if (open) {
        usb->Close();
        open = false;
    }
}
J4T_TRACE_FRAME

void SerialUSB::InitCom()
try {
    ThrowIfNotOpen();
    for (const BridgeRequest& request : bridgeSetUp) {
        usb->DeviceIo(request.request, request.value, 0, false, nullptr, 0);
    }
}
J4T_TRACE_FRAME

void SerialUSB::ClearCache()
try {
    int32_t retries = ClearPolls;
    RefreshCache(retries, true);
    cachePosition = 0;
    cacheLength = 0;
}
J4T_TRACE_FRAME

void SerialUSB::WriteString(const std::string& data)
try {
    ThrowIfNotOpen();
    WriteDataInternal(reinterpret_cast<const uint8_t*>(data.data()), static_cast<uint32_t>(data.size()));
}
J4T_TRACE_FRAME

void SerialUSB::WriteDataInternal(const uint8_t* data, uint32_t length)
try {
    usb->Write(Usb::PipeOut, data, length);
}
J4T_TRACE_FRAME

std::string SerialUSB::Read(int32_t count, int32_t timeout)
try {
    ThrowIfNotOpen();
    std::vector<char> result(static_cast<std::size_t>(count));
    std::size_t filled = 0;
    const int32_t polls = Utilities::Tools::WrapAdd(timeout, PollHalf) >> PollShift;
    int32_t retries = std::max(polls, MinimumPolls);
    for (;;) {
        if (cacheLength > 0 && count > 0) {
            const int32_t taken = std::min(static_cast<int32_t>(cacheLength), count);
            std::memcpy(result.data() + filled, cache.data() + cachePosition, static_cast<std::size_t>(taken));
            cachePosition += static_cast<uint64_t>(taken);
            cacheLength -= static_cast<uint64_t>(taken);
            filled += static_cast<std::size_t>(taken);
            count -= taken;
        }
        if (count <= 0) {
            break;
        }
        RefreshCache(retries, true);
        if (retries <= 0) {
            break;
        }
    }
    return std::string(result.data(), filled);
}
J4T_TRACE_FRAME

void SerialUSB::RefreshCache(int32_t& retries, bool ignoreTimeout)
try {
    cachePosition = 0;
    cacheLength = 0;
    unsigned long transferred = 0;
    while (retries > 0) {
        transferred = static_cast<unsigned long>(cache.size());
        usb->Read(Usb::PipeIn, cache.data(), &transferred);
        if (transferred > StatusSize && (cache[0] & StatusAlwaysSet) != 0) {
            break;
        }
        --retries;
    }
    // A last transfer that failed the status test is unpacked all the same.
    if (transferred <= StatusSize && !ignoreTimeout) {
        throw CommunicationTimeoutException("Timeout during read.");
    }
    UnpackCache(std::min<std::size_t>(transferred, cache.size()));
}
J4T_TRACE_FRAME

void SerialUSB::UnpackCache(std::size_t transferred)
{
    cacheLength = transferred;
    const std::size_t wholePackets = transferred / PacketSize;
    for (std::size_t packet = 0; packet < wholePackets; ++packet) {
        MovePayload(cache.data(), packet);
    }
    cacheLength -= StatusSize * wholePackets;
    const std::size_t tail = transferred % PacketSize;
    if (tail == 1) {
        throw std::length_error("last package contains only one byte");
    }
    if (tail > 0) {
        MovePayload(cache.data(), wholePackets);
        cacheLength -= StatusSize;
    }
}

std::string SerialUSB::SerialNumber()
try {
    std::array<char, Usb::SerialNumberSize + 1> serial{};
    usb->GetSerialNumber(serial.data());
    return serial.data();
}
J4T_TRACE_FRAME

void SerialUSB::WriteToLogFile(const std::string&) {}

void SerialUSB::ThrowIfNotOpen() const
try {
    if (!open) {
        throw CommunicationException("Connection to device not established");
    }
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
