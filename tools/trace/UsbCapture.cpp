#include "tools/trace/UsbCapture.h"

#include <algorithm>
#include <cstdint>
#include <iterator>
#include <map>
#include <optional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include "src/SerialUSB/UsbBridge.h"

namespace J4Tool {

namespace UsbBridge = Kestrelon::DeviceDriver::J4T::LowLevel::UsbBridge;

namespace {

constexpr uint32_t PcapNumber = 0xa1b2c3d4;
constexpr uint32_t PcapNanosecondsNumber = 0xa1b23c4d;
constexpr uint32_t PcapNgNumber = 0x0a0d0d0a;
constexpr size_t FileHeader = 24;
constexpr size_t RecordHeader = 16;
constexpr uint32_t LargestRecord = 1 << 24;

constexpr uint32_t LinkUsb = 189;        // LINKTYPE_USB_LINUX
constexpr uint32_t LinkUsbMapped = 220;  // LINKTYPE_USB_LINUX_MMAPPED

constexpr uint8_t VendorOut = 0x40;    // type of a request
constexpr size_t LongestFrame = 4096;  // beyond it a line is noise

enum Transfer : uint8_t { Control = 2, Bulk = 3 };

// Why a transfer ended, negative errno numbers of Linux whatever system reads the capture.
constexpr int32_t FewerBytes = -121;  // than asked for, which is usual

struct UsbFailure {
    int32_t status;
    const char* words;
};

constexpr const char* Cancelled = "cancelled by the program";

constexpr UsbFailure UsbFailures[] = {
    {-2, Cancelled},
    {-19, "the device is gone"},
    {-32, "the device refused it (stall)"},
    {-62, "the device did not answer in time"},
    {-71, "error on the cable, or the device was pulled out"},
    {-75, "the device sent more than was asked for"},
    {-84, "damaged on the cable, or the device was pulled out"},
    {-104, Cancelled},
    {-108, "the device was pulled out or switched off"},
    {-110, "timeout"},
};

const char* UsbFailureText(int32_t status)
{
    const auto* const known = std::ranges::find(UsbFailures, status, &UsbFailure::status);
    return known == std::end(UsbFailures) ? "failed" : known->words;
}

bool IsCancelled(int32_t status) { return UsbFailureText(status) == Cancelled; }

/// Numbers at their places in a record.
class Fields {
public:
    Fields(std::span<const uint8_t> bytes, bool isBigEndian) : bytes(bytes), isBigEndian(isBigEndian) {}

    uint64_t At(size_t place, size_t size) const
    {
        uint64_t value = 0;
        for (size_t i = 0; i < size; ++i) {
            value = value << 8 | bytes[place + (isBigEndian ? i : size - 1 - i)];
        }
        return value;
    }
    uint32_t Word(size_t place) const { return static_cast<uint32_t>(At(place, 4)); }
    uint8_t Byte(size_t place) const { return bytes[place]; }

private:
    std::span<const uint8_t> bytes;
    bool isBigEndian;
};

/// One USB device of the capture. Which of them is a table shows in what is said to it.
class Device {
public:
    explicit Device(std::string name) : name(std::move(name)) {}

    /// What is no data: a request, or the end of a transfer that failed.
    /// @param status  why it failed; 0 for a request
    void TakeOther(int64_t time, const std::string& what, int32_t status, const TraceListener& listener)
    {
        TraceEvent event{time, {.kind = Kind::Usb, .name = what, .table = name}};
        if (status != 0) {
            event.entry.result = UsbFailureText(status);
            event.entry.status = IsCancelled(status) ? std::nullopt : std::optional(status);
        }
        if (isTable) {
            listener(event);
        } else {
            before.push_back(std::move(event));
            before.erase(before.begin(), before.size() > 16 ? before.begin() + 1 : before.begin());
        }
    }

    void TakeOut(int64_t time, std::span<const uint8_t> data, const TraceListener& listener)
    {
        if (!isTable && !data.empty() && data[0] == ';') {
            isTable = true;
            for (const TraceEvent& event : std::exchange(before, {})) {
                listener(event);
            }
        }
        Collect(sent, time, Kind::Sent, data, listener);
    }

    void TakeIn(int64_t time, std::span<const uint8_t> data, const TraceListener& listener)
    {
        while (!data.empty()) {
            const std::span<const uint8_t> packet = data.first(std::min(data.size(), UsbBridge::PacketSize));
            data = data.subspan(packet.size());
            if (packet.size() > UsbBridge::StatusSize) {
                Collect(received, time, Kind::Received, packet.subspan(UsbBridge::StatusSize), listener);
            }
        }
    }

private:
    void Tell(int64_t time, Kind kind, std::string text, const TraceListener& listener) const
    {
        listener({time, {.kind = kind, .name = std::move(text), .table = name}});
    }

    void Collect(std::string& line, int64_t time, Kind kind, std::span<const uint8_t> data,
                 const TraceListener& listener)
    {
        for (const uint8_t byte : data) {
            if (!isTable) {
                return;
            }
            if (byte != '\r' && line.size() < LongestFrame) {
                line += static_cast<char>(byte);
            } else {
                Tell(time, kind, std::exchange(line, {}), listener);
            }
        }
    }

    std::string name;
    bool isTable = false;
    std::vector<TraceEvent> before;  ///< its set-up comes before the first frame
    std::string sent;
    std::string received;
};

class Capture {
public:
    explicit Capture(std::istream& stream) : stream(stream) {}

    std::string Read(const TraceListener& listener)
    {
        ReadFileHeader();
        while (const auto record = NextRecord()) {
            Take(*record, listener);
        }
        return isCut ? "record " + std::to_string(number) : std::string();
    }

private:
    [[noreturn]] void Fail(const std::string& reason) const
    {
        throw UsbCaptureError((number == 0 ? std::string() : "record " + std::to_string(number) + ": ") + reason);
    }

    /// @return how many bytes there were
    size_t ReadBytes(std::vector<uint8_t>& bytes, size_t count)
    {
        bytes.resize(count);
        stream.read(reinterpret_cast<char*>(bytes.data()), static_cast<std::streamsize>(count));
        return static_cast<size_t>(stream.gcount());
    }

    void ReadFileHeader()
    {
        std::vector<uint8_t> header;
        const size_t size = ReadBytes(header, FileHeader);
        for (const bool isBig : {false, true}) {
            const uint32_t mark = size < 4 ? 0 : Fields(header, isBig).Word(0);
            if (mark == PcapNgNumber) {
                Fail("this is pcapng; save it as pcap ('editcap -F pcap')");
            }
            if ((mark == PcapNumber || mark == PcapNanosecondsNumber) && size == FileHeader) {
                isBigEndian = isBig;
                link = Fields(header, isBig).Word(20) & 0xffff;
                if (link != LinkUsb && link != LinkUsbMapped) {
                    Fail("its link type is " + std::to_string(link) + " and not that of usbmon, 189 or 220");
                }
                return;
            }
        }
        Fail("this is neither a trace nor a pcap file");
    }

    std::optional<std::vector<uint8_t>> NextRecord()
    {
        std::vector<uint8_t> bytes;
        const size_t size = ReadBytes(bytes, RecordHeader);
        if (size == 0) {
            return std::nullopt;
        }
        ++number;
        const uint32_t length = size == RecordHeader ? Fields(bytes, isBigEndian).Word(8) : 0;
        if (length > LargestRecord) {
            Fail("it has " + std::to_string(length) + " bytes, which no record has");
        }
        isCut = size < RecordHeader || ReadBytes(bytes, length) < length;
        return isCut ? std::nullopt : std::optional(bytes);
    }

    void Take(const std::vector<uint8_t>& record, const TraceListener& listener)
    {
        const size_t header = link == LinkUsb ? 48 : 64;
        if (record.size() < header) {
            Fail("it is shorter than its header");
        }
        const Fields fields(record, isBigEndian);
        const char type = static_cast<char>(fields.Byte(8));
        const uint8_t transfer = fields.Byte(9);
        const uint8_t endpoint = fields.Byte(10);
        const bool isEnd = type == 'C' || type == 'E';
        const bool isControl = transfer == Control && (endpoint & 0x7f) == 0 && (isEnd || fields.Byte(14) == 0);
        const bool isOut = transfer == Bulk && endpoint == UsbBridge::EndpointOut;
        const bool isIn = transfer == Bulk && endpoint == UsbBridge::EndpointIn;
        if ((!isControl && !isOut && !isIn) || (!isEnd && type != 'S')) {
            return;
        }
        const uint64_t moment = fields.At(16, 8) * 1000000 + fields.Word(24);
        begin = begin.value_or(moment);
        // Records of two processors may stand the wrong way round by some microseconds.
        const int64_t time = std::clamp<int64_t>(static_cast<int64_t>(moment - *begin), 0, LatestTime);
        Device& device = DeviceOf(fields.Byte(11), static_cast<uint16_t>(fields.At(12, 2)));
        const auto status = isEnd ? static_cast<int32_t>(fields.Word(28)) : 0;
        const bool isFailed = status != 0 && status != FewerBytes;
        if (isControl) {
            std::string& running = requests[fields.At(0, 8)];
            const std::string ended = std::exchange(running, isEnd ? std::string() : VendorRequest(record));
            if (isFailed && !ended.empty()) {
                device.TakeOther(time, ended, status, listener);
            }
            if (!running.empty()) {
                device.TakeOther(time, running, 0, listener);
            }
        } else if (isFailed) {
            device.TakeOther(time, isOut ? "out" : "in", status, listener);
        }
        if (isControl || (isOut ? type != 'S' : type != 'C')) {
            return;
        }
        const uint32_t length = fields.Word(32);
        const uint32_t captured = fields.Word(36);
        if (captured > record.size() - header || (captured < length && captured > 0)) {
            Fail("only " + std::to_string(std::min<size_t>(captured, record.size() - header)) + " of its " +
                 std::to_string(length) + " bytes were captured; capture with a larger length");
        }
        const std::span<const uint8_t> data(record.data() + header, captured);
        if (isOut) {
            device.TakeOut(time, data, listener);
        } else {
            device.TakeIn(time, data, listener);
        }
    }

    /// "control 3 52" for a vendor request, empty for another one.
    static std::string VendorRequest(const std::vector<uint8_t>& record)
    {
        // What is on the wire has the wire's byte order, the lowest first.
        const Fields setup(record, false);
        return setup.Byte(40) != VendorOut
                   ? std::string()
                   : "control " + std::to_string(setup.Byte(41)) + " " + std::to_string(setup.At(42, 2));
    }

    Device& DeviceOf(uint8_t address, uint16_t bus)
    {
        const std::string name = std::to_string(bus) + "." + std::to_string(address);
        return devices.try_emplace(name, name).first->second;
    }

    std::istream& stream;
    bool isBigEndian = false;
    uint32_t link = 0;
    size_t number = 0;
    bool isCut = false;
    std::map<uint64_t, std::string> requests;  ///< those of the vendor that run
    std::optional<uint64_t> begin;
    std::map<std::string, Device> devices;
};

}  // namespace

std::string ReadUsbCapture(std::istream& stream, const TraceListener& listener)
{
    return Capture(stream).Read(listener);
}

}  // namespace J4Tool
