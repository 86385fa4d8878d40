// How fast the status bytes of the bridge are taken out of a full transfer.

#include <array>
#include <cstring>
#include <vector>

#include "bench/SideBySide.h"
#include "src/SerialUSB/SerialUSB.h"
#include "src/SerialUSB/UsbFactory.h"

namespace {

constexpr std::size_t TransferSize = 0x20000;

/// Answers every read with a full transfer, the one that the buffer happens to hold.
class FullTransferUsb : public Kestrelon::DeviceDriver::J4T::LowLevel::Usb {
public:
    void Scan(unsigned short& count) override { count = 1; }
    void Open(unsigned short) override {}
    void Close() override {}
    void DeviceIo(unsigned char, unsigned short, unsigned short, bool, void*, short) override {}
    void Read(short, void* buffer, unsigned long* length) override
    {
        static_cast<unsigned char*>(buffer)[0] = 1;
        *length = TransferSize;
    }
    void Write(short, const void*, unsigned long) override {}
    void Abort(short) override {}
    void GetSerialNumber(char* serial) override { serial[0] = '\0'; }
};

void UnpackTransfer(benchmark::State& state)
{
    Kestrelon::DeviceDriver::J4T::LowLevel::SerialUSB channel;
    channel.OpenDevice(0);
    std::vector<unsigned char> from(TransferSize, 1);
    std::vector<unsigned char> to(TransferSize);
    SideBySide(
        state, 100, "memmove",
        [&] {
            std::memmove(to.data(), from.data(), TransferSize);
            benchmark::ClobberMemory();
        },
        "unpack", [&] { channel.ClearCache(); });
}
BENCHMARK(UnpackTransfer)->UseManualTime();

}  // namespace

namespace Kestrelon::DeviceDriver::J4T::LowLevel {

Utilities::Tools::SmartPointer<Usb> CreateUsb(uint32_t, uint32_t)
{
    return Utilities::Tools::SmartPointer<Usb>(new FullTransferUsb());
}

}  // namespace Kestrelon::DeviceDriver::J4T::LowLevel
