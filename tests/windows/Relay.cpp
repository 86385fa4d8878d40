#include "tests/windows/Relay.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <utility>

#include "simulator/table/TableUnit.h"
#include "simulator/world/Bench.h"
#include "tests/windows/KernelDriver.h"

namespace J4Test {

namespace {

using J4Bench::Bridge;

constexpr uint32_t Stalled = 0xE0000004;
constexpr uint32_t NotBound = 0xE0001009;
constexpr uint32_t Removed = 0xE000100A;
constexpr uint32_t UnknownCode = 0xE000100F;
constexpr uint32_t WrongDirection = 0xE0001010;

constexpr uint8_t EndpointOut = 0x02;
constexpr uint8_t EndpointIn = 0x81;
constexpr uint8_t SerialNumberIndex = 3;

/// Larger than the largest transfer with its header.
constexpr size_t ExchangeRoom = 0x21000;

constexpr DWORD CatchUpTime = 5000;  ///< ms

/// What is shorter is no pause of the library but the time that it takes to run, on a busy machine too.
constexpr DWORD ShortestPause = 300;  ///< ms

uint32_t StatusOf(Bridge::Status status)
{
    switch (status) {
    case Bridge::Status::Done:
        return 0;
    case Bridge::Status::Removed:
        return Removed;
    default:
        return Stalled;
    }
}

template <class Record>
Relay::Bytes BytesOf(const Record& record)
{
    const auto* first = reinterpret_cast<const uint8_t*>(&record);
    return {first, first + sizeof(record)};
}

template <class Record>
Record RecordOf(const Relay::Bytes& bytes)
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

}  // namespace

Relay::Relay()
    : device(KernelDriver::OpenControl(FILE_FLAG_OVERLAPPED)),
      done(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      stop(CreateEventA(nullptr, TRUE, FALSE, nullptr)),
      marked(CreateEventA(nullptr, FALSE, FALSE, nullptr))
{
    if (device == INVALID_HANDLE_VALUE) {
        throw std::runtime_error("the driver's control device can't be opened");
    }
    thread = std::thread([this] { Run(); });
    Reset();
}

Relay::~Relay()
{
    SetEvent(stop);
    thread.join();
    CloseHandle(device);
    CloseHandle(done);
    CloseHandle(stop);
    CloseHandle(marked);
}

void Relay::Abandon() { CancelIoEx(device, nullptr); }

void Relay::Reset()
{
    CatchUp();
    const std::lock_guard guard(mutex);
    lines.clear();
    pendingFaults.clear();
    driverInfo = UsbIo::DriverInfo{0x0230, 0x0255, 1, 0};
    parameters = UsbIo::DeviceParameters{0x00000100, 1000};
}

void Relay::Inject(Subject subject, Answer answer, uint32_t skip)
{
    const std::lock_guard guard(mutex);
    pendingFaults.push_back({subject, std::move(answer), nullptr, skip});
}

void Relay::Inject(Subject subject, std::function<void()> event, uint32_t skip)
{
    const std::lock_guard guard(mutex);
    pendingFaults.push_back({subject, {}, std::move(event), skip});
}

size_t Relay::FaultsLeft()
{
    const std::lock_guard guard(mutex);
    return pendingFaults.size();
}

void Relay::LoseDevices()
{
    const std::lock_guard guard(mutex);
    for (auto& [id, handle] : handles) {
        handle.hasDevice = false;
    }
}

void Relay::SetDriverInfo(const UsbIo::DriverInfo& info)
{
    const std::lock_guard guard(mutex);
    driverInfo = info;
}

void Relay::CatchUp()
{
    if (KernelDriver::Ask(J4_DRIVER_MARK, nullptr, 0)) {
        WaitForSingleObject(marked, CatchUpTime);
    }
}

std::vector<std::string> Relay::Take()
{
    CatchUp();
    const std::lock_guard guard(mutex);
    return std::exchange(lines, {});
}

bool Relay::WaitUntilClosed()
{
    for (int i = 0; i < 500; ++i) {
        {
            const std::lock_guard guard(mutex);
            if (handles.empty()) {
                return true;
            }
        }
        Sleep(10);
    }
    return false;
}

void Relay::Run()
{
    Bytes input;
    Bytes output;
    while (Exchange(input, output)) {
        input.clear();
        const auto request = RecordOf<DriverRequest>(output);
        const Bytes data(output.begin() + sizeof(request), output.end());
        Answer answer;
        if (Handle(request, data, answer)) {
            const uint32_t size = static_cast<uint32_t>(answer.data.size());
            const uint32_t count = request.kind == DriverWrite && answer.status == 0 ? request.inputSize : size;
            input = BytesOf(DriverAnswer{request.id, answer.status,
                                         answer.isPending ? static_cast<uint32_t>(DriverKeepPending) : 0,
                                         count + answer.extra, size});
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
    BOOL good = DeviceIoControl(device, J4_DRIVER_EXCHANGE, const_cast<uint8_t*>(input.data()),
                                static_cast<DWORD>(input.size()), output.data(), ExchangeRoom, nullptr, &overlapped);
    if (!good && GetLastError() == ERROR_IO_PENDING) {
        const HANDLE both[] = {done, stop};
        if (WaitForMultipleObjects(2, both, FALSE, INFINITE) != WAIT_OBJECT_0) {
            CancelIo(device);
        }
        good = TRUE;
    }
    good = good && GetOverlappedResult(device, &overlapped, &bytes, TRUE) && bytes >= sizeof(DriverRequest);
    output.resize(bytes);
    return good;
}

bool Relay::Handle(const DriverRequest& request, const Bytes& data, Answer& answer)
{
    if (request.kind == DriverMark) {
        SetEvent(marked);
        return false;
    }
    const std::lock_guard guard(mutex);
    WriteDown(request, data);
    if (request.kind < DriverControl) {
        return false;
    }
    ++requests;
    const Subject subject = request.kind == DriverControl ? request.code : request.kind;
    Fault fault;
    if (TakeFault(subject, fault)) {
        ++faults;
        if (!fault.event) {
            answer = fault.answer;
            return !answer.isSilent;
        }
        fault.event();
    }
    CatchUpWithPause();
    answer = AnswerFor(request, data);
    lastAnswer = GetTickCount();
    return true;
}

void Relay::CatchUpWithPause()
{
    const DWORD pause = GetTickCount() - lastAnswer;
    if (lastAnswer != 0 && pause >= ShortestPause) {
        J4Bench::Bench::Instance().Clock().Advance(int64_t{1000} * pause);
    }
}

bool Relay::TakeFault(Subject subject, Fault& found)
{
    for (auto fault = pendingFaults.begin(); fault != pendingFaults.end(); ++fault) {
        if (fault->subject == subject && fault->skip-- == 0) {
            found = *fault;
            pendingFaults.erase(fault);
            return true;
        }
    }
    return false;
}

void Relay::WriteDown(const DriverRequest& request, const Bytes& data)
{
    if (request.kind == DriverOpened) {
        if (handles.empty()) {
            lastHandle = 0;
        }
        handles[request.handle].number = ++lastHandle;
    }
    if (!handles.contains(request.handle)) {
        return;  // it was opened while another program listened
    }
    std::string line = std::to_string(handles[request.handle].number);
    switch (request.kind) {
    case DriverOpened:
        line += " open table " + std::to_string(request.table);
        break;
    case DriverClosed:
        line += " close";
        break;
    case DriverCancelled:
        line += " cancelled";
        break;
    case DriverControl:
        line += " " + Hex(request.code, 8);
        break;
    case DriverRead:
        line += " read " + std::to_string(request.outputSize);
        break;
    case DriverWrite:
        line += " write";
        break;
    default:
        line += " unknown";
        break;
    }
    if (!data.empty()) {
        line += " ";
        for (const uint8_t byte : data) {
            line += Hex(byte, 2);
        }
    }
    if (request.kind == DriverControl && request.outputSize != 0) {
        line += " out " + std::to_string(request.outputSize);
    }
    lines.push_back(line);
    if (request.kind == DriverClosed) {
        handles.erase(request.handle);
    }
}

Relay::Answer Relay::AnswerFor(const DriverRequest& request, const Bytes& data)
{
    J4Bench::Bench& bench = J4Bench::Bench::Instance();
    const auto table = bench.TableAt(request.table);
    const OpenHandle& handle = handles[request.handle];
    if (table == nullptr || bench.GetFaults().tableUnplugged || !handle.hasDevice) {
        return {Removed};
    }
    if (request.kind == DriverControl) {
        return Control(request, data);
    }
    if (handle.endpoint == 0) {
        return {NotBound};
    }
    if (handle.endpoint != (request.kind == DriverRead ? EndpointIn : EndpointOut)) {
        return {WrongDirection};
    }
    if (request.kind == DriverWrite) {
        return {StatusOf(table->GetBridge().Write({reinterpret_cast<const char*>(data.data()), data.size()}))};
    }
    Answer answer;
    answer.data.resize(request.outputSize);
    size_t length = answer.data.size();
    answer.status = StatusOf(table->GetBridge().Read(answer.data.data(), length));
    answer.data.resize(length);
    return answer;
}

Relay::Answer Relay::Control(const DriverRequest& request, const Bytes& data)
{
    J4Bench::TableUnit& table = *J4Bench::Bench::Instance().TableAt(request.table);
    switch (request.code) {
    case UsbIo::ControlGetDriverInfo:
        return {0, BytesOf(driverInfo)};
    case UsbIo::ControlGetDeviceParameters:
        return {0, BytesOf(parameters)};
    case UsbIo::ControlSetDeviceParameters:
        parameters = RecordOf<UsbIo::DeviceParameters>(data);
        return {};
    case UsbIo::ControlBind:
        handles[request.handle].endpoint = data.empty() ? 0 : data.front();
        return {};
    case UsbIo::ControlSetConfiguration:
    case UsbIo::ControlUnconfigureDevice:
    case UsbIo::ControlResetDevice:
    case UsbIo::ControlResetPipe:
    case UsbIo::ControlAbortPipe:
        return {};
    case UsbIo::ControlGetDescriptor:
        if (const uint32_t status = StatusOf(table.GetBridge().Probe()); status != 0) {
            return {status};
        }
        return Descriptor(data, table.UsbSerial());
    case UsbIo::ControlClassOrVendorOutRequest: {
        const auto record = RecordOf<UsbIo::ClassOrVendorRequest>(data);
        return {StatusOf(table.GetBridge().Control(record.request, record.value))};
    }
    case UsbIo::ControlClassOrVendorInRequest:
        return {Stalled};
    default:
        return {UnknownCode};
    }
}

Relay::Answer Relay::Descriptor(const Bytes& data, const std::string& serial) const
{
    const auto request = RecordOf<UsbIo::DescriptorRequest>(data);
    if (request.type == UsbIo::DescriptorDevice) {
        UsbIo::DeviceDescriptor descriptor{};
        descriptor.bLength = sizeof(descriptor);
        descriptor.bDescriptorType = UsbIo::DescriptorDevice;
        descriptor.idVendor = 0x0971;
        descriptor.idProduct = 0x2004;
        descriptor.iSerialNumber = SerialNumberIndex;
        return {0, BytesOf(descriptor)};
    }
    if (request.type != UsbIo::DescriptorString || request.index != SerialNumberIndex) {
        return {Stalled};
    }
    Bytes text = {static_cast<uint8_t>(2 + 2 * serial.size()), UsbIo::DescriptorString};
    for (const char character : serial) {
        text.insert(text.end(), {static_cast<uint8_t>(character), 0});
    }
    return {0, text};
}

}  // namespace J4Test
