// The seams of the library, with the bench behind them: each operation may fail.
#include <string>
#include <type_traits>

#include "Utilities/Tools/LibraryLoaderImpl.h"
#include "c_sdk/include/j4tavla.h"
#include "simulator/ground/BenchLines.h"
#include "src/SerialUSB/UsbFactory.h"
#include "src/SerialUSB/Virtual/VirtualUsb.h"
#include "tests/sweep/Fault.h"

// The bench's face, under the names that it is compiled with here.
#define J4T_FOR_ALL_FUNCTIONS(DO)        \
    DO(J4_IsConnected);                  \
    DO(J4_KeyPressed);                   \
    DO(J4_GetNumberOfAvailableSamples);  \
    DO(J4_Calibrate);                    \
    DO(J4_TriggerMeasurement);           \
    DO(J4_TriggerCountedScan);           \
    DO(J4_GetSpectrum);                  \
    DO(J4_GetTriStimulus);               \
    DO(J4_GetDensities);                 \
    DO(J4_GetDensity);                   \
    DO(J4_SetSubstrate);                 \
    DO(J4_SetOption);                    \
    DO(J4_GetOption);                    \
    DO(J4_RegisterErrorHandler);         \
    DO(J4_RegisterDeviceMessageHandler); \
    DO(J4_Private);
#define J4T_DECLARE(name) extern "C" decltype(name) Bench##name
J4T_FOR_ALL_FUNCTIONS(J4T_DECLARE)

namespace J4Test {
namespace {

template <auto* function>
struct Swept;

template <class Result, class... Arguments, Result (*function)(Arguments...)>
struct Swept<function> {
    static Result Call(Arguments... arguments)
    {
        const Within bench(false);
        // Registering a handler can't fail.
        if constexpr (std::is_integral_v<Result> || std::is_same_v<Result, const char*>) {
            if (Fault::Strikes(Seam::Library)) {
                Fault::way->action ? Fault::way->action() : void();
                if constexpr (std::is_integral_v<Result>) {
                    return Fault::way->status;
                } else {
                    return Fault::way->text;
                }
            }
        }
        return function(arguments...);
    }
};

/// One operation of the USB device, which is then tried all the same, unless the way of the fault throws.
struct UsbOperation {
    UsbOperation() { Fault::Strikes(Seam::Usb) ? Fault::way->action() : void(); }
    const Within bench{false};
};

class SweptUsb final : public Kestrelon::DeviceDriver::J4T::LowLevel::VirtualUsb {
public:
    using VirtualUsb::VirtualUsb;
    void Open(unsigned short index) override { UsbOperation(), VirtualUsb::Open(index); }
    void Close() override { UsbOperation(), VirtualUsb::Close(); }
    void DeviceIo(unsigned char request, unsigned short value, unsigned short index, bool in, void* buffer,
                  short length) override
    {
        UsbOperation(), VirtualUsb::DeviceIo(request, value, index, in, buffer, length);
    }
    void Read(short pipe, void* buffer, unsigned long* length) override
    {
        UsbOperation(), VirtualUsb::Read(pipe, buffer, length);
        if (Fault::way != nullptr && Fault::way->received) {
            Fault::way->received(static_cast<unsigned char*>(buffer), *length);
        }
    }
    void Write(short pipe, const void* data, unsigned long length) override
    {
        UsbOperation(), VirtualUsb::Write(pipe, data, length);
    }
    void GetSerialNumber(char* serial) override { UsbOperation(), VirtualUsb::GetSerialNumber(serial); }
};

}  // namespace
}  // namespace J4Test

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t, uint32_t)
{
    return Utilities::Tools::SmartPointer<Usb>(new J4Test::SweptUsb(*J4Bench::J4Bench_Lines()));
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel

namespace Kestrelon::Platform {

void LibraryLoaderImpl::LookForLibrary(const std::string&) {}

std::string LibraryLoaderImpl::GetLibraryPath() { return std::string(); }

void* LibraryLoaderImpl::doResolve(std::string symbol)
{
#define J4T_RESOLVE(name) \
    if (symbol == #name)  \
    return reinterpret_cast<void*>(J4Test::Swept<&Bench##name>::Call)
    J4T_FOR_ALL_FUNCTIONS(J4T_RESOLVE)
    return nullptr;
}

void LibraryLoaderImpl::UnloadLibrary() {}

}  // namespace Kestrelon::Platform
