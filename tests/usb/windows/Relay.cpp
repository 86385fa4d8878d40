#include "tests/usb/windows/Relay.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

namespace J4Test {

namespace {

constexpr uint32_t Stalled = 0xE0000004;
constexpr uint32_t NotBound = 0xE0001009;
constexpr uint32_t Removed = 0xE000100A;
constexpr uint32_t WrongDirection = 0xE0001010;

/// Larger than the largest transfer with its header.
constexpr size_t ExchangeRoom = 0x21000;

constexpr DWORD Patience = 5000;  ///< ms

const Relay::Answer silence = {.isSilent = true};

uint32_t StatusOf(UsbEnd end) { return end == UsbEnd::Done ? 0 : end == UsbEnd::Stalled ? Stalled : Removed; }

template <class Record>
Bytes BytesOf(const Record& record)
{
    const auto* first = reinterpret_cast<const uint8_t*>(&record);
    return {first, first + sizeof(record)};
}

template <class Record>
Record RecordOf(const Bytes& bytes)
{
    Record record{};
    std::memcpy(&record, bytes.data(), std::min(sizeof(record), bytes.size()));
    return record;
}

std::string Hex(uint64_t value, int digits)
{
    static constexpr char characters[] = "0123456789ABCDEF";
    std::string text;
    for (int i = digits - 1; i >= 0; --i) {
        text += characters[value >> (4 * i) & 15];
    }
    return text;
}

/// "8094206C out 12", "80942078 02".
std::string ControlLine(const DriverRequest& request, const Bytes& data)
{
    std::string line = Hex(request.code, 8);
    line += data.empty() ? "" : " ";
    for (const uint8_t byte : data) {
        line += Hex(byte, 2);
    }
    return request.outputSize != 0 ? line + " out " + std::to_string(request.outputSize) : line;
}

HANDLE OpenControl(DWORD flags)
{
    return CreateFileA("\\\\.\\" J4_DRIVER_CONTROL_DEVICE, GENERIC_READ | GENERIC_WRITE,
                       FILE_SHARE_READ | FILE_SHARE_WRITE, nullptr, OPEN_EXISTING, flags, nullptr);
}

void WINAPI Pass(DWORD milliseconds) { PassOnBench(milliseconds); }

}  // namespace

Relay::Relay()
    : driver(OpenControl(FILE_FLAG_OVERLAPPED)),
      done(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      stop(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      marked(CreateEventA(nullptr, FALSE, FALSE, nullptr))
{
    if (driver == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("the driver's control device can't be opened");
    }
    thread = std::thread([this] { Run(); });
}

Relay::~Relay()
{
    SetEvent(stop);
    thread.join();
    for (const HANDLE handle : {driver, done, stop, marked}) {
        CloseHandle(handle);
    }
}

void Relay::Plug(uint32_t table, std::shared_ptr<TableDevice> device)
{
    const std::lock_guard guard(mutex);
    plugged[table] = std::move(device);
}

void Relay::Inject(Subject subject, Answer answer, std::function<void()> event)
{
    const std::lock_guard guard(mutex);
    injected = {subject, std::move(answer), std::move(event)};
}

bool Relay::IsWaiting()
{
    const std::lock_guard guard(mutex);
    return injected.has_value();
}

bool Relay::Ask(DWORD code, const void* input, size_t size)
{
    DWORD bytes = 0;
    const HANDLE control = OpenControl(0);
    const BOOL good =
        DeviceIoControl(control, code, const_cast<void*>(input), static_cast<DWORD>(size), nullptr, 0, &bytes, nullptr);
    CloseHandle(control);
    return good;
}

void Relay::CatchUp()
{
    Ask(J4_DRIVER_MARK);
    WaitForSingleObject(marked, Patience);
}

Lines Relay::Open()
{
    Lines open;
    for (DWORD waited = 0; waited < Patience; waited += 10) {
        CatchUp();
        open.clear();
        const std::lock_guard guard(mutex);
        for (const auto& [id, handle] : handles) {
            open.push_back("handle " + std::to_string(handle.number));
        }
        if (open.empty()) {
            break;
        }
        Sleep(10);
    }
    return open;
}

void Relay::Run()
{
    Bytes input;
    Bytes output;
    while (Exchange(input, output)) {
        input.clear();
        const auto request = RecordOf<DriverRequest>(output);
        const Answer answer = Take(request, Bytes(output.begin() + sizeof(request), output.end()));
        if (!answer.isSilent) {
            const uint32_t size = static_cast<uint32_t>(answer.data.size());
            const uint32_t count = request.kind == DriverWrite && answer.status == 0 ? request.inputSize : size;
            const uint32_t flags = answer.isPending ? static_cast<uint32_t>(DriverKeepPending) : 0;
            input = BytesOf(DriverAnswer{request.id, answer.status, flags, count + answer.extra, size});
            input.insert(input.end(), answer.data.begin(), answer.data.end());
        }
    }
}

bool Relay::Exchange(const Bytes& input, Bytes& output)
{
    output.resize(ExchangeRoom);
    OVERLAPPED overlapped{};
    overlapped.hEvent = done;
    DWORD bytes = 0;
    BOOL good = DeviceIoControl(driver, J4_DRIVER_EXCHANGE, const_cast<uint8_t*>(input.data()),
                                static_cast<DWORD>(input.size()), output.data(), ExchangeRoom, nullptr, &overlapped);
    if (!good && GetLastError() == ERROR_IO_PENDING) {
        const HANDLE both[] = {done, stop};
        if (WaitForMultipleObjects(2, both, FALSE, INFINITE) != WAIT_OBJECT_0) {
            CancelIo(driver);
        }
        good = TRUE;
    }
    good = good && GetOverlappedResult(driver, &overlapped, &bytes, TRUE);
    output.resize(bytes);
    return good && bytes >= sizeof(DriverRequest);
}

Relay::Answer Relay::Take(const DriverRequest& request, const Bytes& data)
{
    if (request.kind == DriverMark) {
        SetEvent(marked);
        return silence;
    }
    const std::lock_guard guard(mutex);
    Handle& handle = handles[request.handle];
    if (request.kind == DriverOpened) {
        lastHandle = handles.size() == 1 ? 1 : lastHandle + 1;
        handle = {lastHandle, 0, plugged[request.table]};
    }
    TableDevice& device = *handle.device;
    const std::string number = std::to_string(handle.number) + " ";
    switch (request.kind) {
    case DriverOpened:
        device.Note(number + "open");
        return silence;
    case DriverClosed:
        device.Note(number + "close");
        handles.erase(request.handle);
        return silence;
    case DriverCancelled:
        device.Note("cancel");
        return silence;
    case DriverControl:
        device.Note(number + ControlLine(request, data));
        break;
    default:
        break;
    }
    if (injected && injected->subject == (request.kind == DriverControl ? request.code : request.kind)) {
        const Injected taken = *std::exchange(injected, std::nullopt);
        if (!taken.event) {
            return taken.answer;
        }
        taken.event();
    }
    return request.kind == DriverControl ? Control(request, data, handle) : Transfer(request, data, handle);
}

Relay::Answer Relay::Transfer(const DriverRequest& request, const Bytes& data, Handle& handle)
{
    if (handle.endpoint == 0) {
        return {NotBound};
    }
    if (handle.endpoint != (request.kind == DriverRead ? EndpointIn : EndpointOut)) {
        return {WrongDirection};
    }
    TableDevice::Reply reply;
    if (request.kind == DriverRead) {
        reply = handle.device->Read(request.outputSize);
    } else {
        // The driver goes on until the device has taken all.
        std::string text(data.begin(), data.end());
        do {
            reply = handle.device->Write(text);
            text.erase(0, reply.taken);
        } while (!text.empty() && reply.end == UsbEnd::Done);
    }
    if (reply.end == UsbEnd::Never) {
        return reply.data.empty() ? silence : Answer{.data = reply.data, .isPending = true};
    }
    return {StatusOf(reply.end), reply.data};
}

Relay::Answer Relay::Control(const DriverRequest& request, const Bytes& data, Handle& handle)
{
    if (request.code == UsbIo::ControlGetDescriptor) {
        return Descriptor(data, *handle.device);
    }
    if (request.code == UsbIo::ControlClassOrVendorOutRequest) {
        const auto record = RecordOf<UsbIo::ClassOrVendorRequest>(data);
        return {StatusOf(handle.device->Control(record.request, record.value))};
    }
    Answer answer{StatusOf(handle.device->Other())};
    if (answer.status != 0) {
        return answer;
    }
    switch (request.code) {
    case UsbIo::ControlGetDriverInfo:
        answer.data = BytesOf(UsbIo::DriverInfo{0x0230, 0x0255, 1, 0});
        break;
    case UsbIo::ControlGetDeviceParameters:
        answer.data = BytesOf(UsbIo::DeviceParameters{0x00000100, 1000});
        break;
    case UsbIo::ControlBind:
        handle.endpoint = data.empty() ? 0 : data.front();
        break;
    case UsbIo::ControlClassOrVendorInRequest:
        answer.status = Stalled;
        break;
    default:
        break;
    }
    return answer;
}

Relay::Answer Relay::Descriptor(const Bytes& data, TableDevice& device)
{
    const auto request = RecordOf<UsbIo::DescriptorRequest>(data);
    const bool isDevice = request.type == UsbIo::DescriptorDevice;
    if (!isDevice && (request.type != UsbIo::DescriptorString || request.index != TableDevice::SerialIndex)) {
        return {Stalled};
    }
    TableDevice::Reply reply = isDevice ? TableDevice::Reply{device.Other()} : device.Serial(request.languageId);
    if (isDevice) {
        reply.data = device.Descriptors();
        reply.data.resize(sizeof(UsbIo::DeviceDescriptor));
    }
    return {StatusOf(reply.end), reply.data};
}

/// Replaces the library's import of the system's pause.
void RedirectPauses()
{
    auto* const module = reinterpret_cast<uint8_t*>(GetModuleHandleA("j4tavla64.dll"));
    const auto* const headers =
        reinterpret_cast<IMAGE_NT_HEADERS64*>(module + reinterpret_cast<IMAGE_DOS_HEADER*>(module)->e_lfanew);
    const auto* imported = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(
        module + headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress);
    const auto pause =
        reinterpret_cast<ULONGLONG>(reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "Sleep")));
    for (; imported->FirstThunk != 0; ++imported) {
        auto* entry = reinterpret_cast<IMAGE_THUNK_DATA64*>(module + imported->FirstThunk);
        for (; entry->u1.Function != 0; ++entry) {
            DWORD before = 0;
            if (entry->u1.Function == pause && VirtualProtect(entry, sizeof(*entry), PAGE_READWRITE, &before)) {
                entry->u1.Function = reinterpret_cast<ULONGLONG>(reinterpret_cast<void*>(&Pass));
                VirtualProtect(entry, sizeof(*entry), before, &before);
                return;
            }
        }
    }
    throw std::runtime_error("the library's import of its pause is missing");
}

}  // namespace J4Test
