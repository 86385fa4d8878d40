#include "src/Communication/j4TableComFlash.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/HexStringHelper.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using Utilities::Tools::HexStringHelper;

namespace {

constexpr uint16_t FirstSector = 1;
constexpr uint16_t LastSector = 14;
constexpr uint32_t FirstFlashAddress = 0x2000;
constexpr uint32_t LastAddress = 0x1DFFF;
constexpr uint32_t LastRamAddress = 0x1000;
constexpr uint32_t RamSlots = 2;  ///< pieces of the RAM buffer that one copy takes
constexpr uint32_t RamSlotSize = 256;
constexpr uint32_t TransferRetryDelay = 100;  ///< ms

/// A block size with the character that stands for it on the wire.
struct SizeCode {
    std::size_t size;
    char code;
};
constexpr std::array<SizeCode, 2> ramSizes = {{{128, '1'}, {256, '2'}}};
constexpr std::array<SizeCode, 3> flashSizes = {{{512, '3'}, {1024, '4'}, {4096, '6'}}};

/// Access codes of the blocks, sent as they stand.
constexpr std::array<const char*, 3> unlockIds = {"850462", "317598", "264083"};

constexpr std::array<const char*, 13> flashErrors = {
    "no error (0)",
    "unknown command (1)",
    "command length (2)",
    "interval (3)",
    "address aligment (4)",
    "invalid destination or block size (5)",
    "FLASH busy (6)",
    "sector locked (7)",
    "sector not prepared for write operation (8)",
    "FLASH address boundary (9)",
    "Wrong unlock ID (10)",
    "Unlockable block (11)",
    "Config data only in 'S' mode writeable (12)",
};

template <class Sizes>
char SizeCharacter(const Sizes& sizes, std::size_t size)
{
    const auto found =
        std::find_if(sizes.begin(), sizes.end(), [size](const SizeCode& entry) { return entry.size == size; });
    if (found == sizes.end()) {
        throw FirmwareException("Invalid number of bytes.");
    }
    return found->code;
}

void ThrowIf(bool invalid, const char* words, uint32_t value)
{
    if (invalid) {
        throw FirmwareException(words + std::to_string(value));
    }
}

bool IsSector(uint16_t sector) { return sector >= FirstSector && sector <= LastSector; }

bool IsFlashAddress(uint32_t address) { return address >= FirstFlashAddress && address <= LastAddress; }

std::string SectorRange(uint16_t start, uint16_t end)
{
    return HexStringHelper::ToHexString(start, 1) + HexStringHelper::ToHexString(end, 1);
}

}  // namespace

void j4TableComFlash::Execute(j4TableComCommand& command, const char* failure)
{
    SendAndReceive2(command);
    if (command.errorByte != 0) {
        throw FirmwareException(failure + GetFlashErrorString(command.errorByte) + ".");
    }
}

void j4TableComFlash::Transfer(j4TableComCommand& command, int32_t attempts, const char* failure)
{
    command.retries = attempts;
    command.retryDelay = TransferRetryDelay;
    Execute(command, failure);
}

void j4TableComFlash::PrepareSector(uint16_t start, uint16_t end)
try {
    ThrowIf(!IsSector(start), "Invalid StartSector: ", start);
    ThrowIf(!IsSector(end), "Invalid EndSector: ", end);
    j4TableComCommand command(Commands::PrepareSector);
    command.SetSendData(SectorRange(start, end));
    Execute(command, "Can't prepare sector: ");
}
J4T_TRACE_FRAME

void j4TableComFlash::EraseSector(uint16_t start, uint16_t end)
try {
    ThrowIf(!IsSector(start), "Invalid start sector: ", start);
    ThrowIf(!IsSector(end), "Invalid end sector: ", end);
    j4TableComCommand command(Commands::EraseSector);
    command.SetSendData(SectorRange(start, end));
    Execute(command, "Can't erase sector: ");
}
J4T_TRACE_FRAME

void j4TableComFlash::CopyRamToFlash(uint32_t flashAddress, uint32_t ramAddress, uint32_t count)
try {
    ThrowIf(!IsFlashAddress(flashAddress), "Invalid Flash address: ", flashAddress);
    ThrowIf(ramAddress > LastRamAddress, "Invalid Ram address: ", ramAddress);
    j4TableComCommand command(Commands::CopyRamToFlash);
    command.SetSendData(HexStringHelper::ToHexString(flashAddress, 5) + HexStringHelper::ToHexString(ramAddress, 4) +
                        SizeCharacter(flashSizes, count));
    Execute(command, "Can't copy ram to flash: ");
}
J4T_TRACE_FRAME

void j4TableComFlash::ReadMemory(ByteBlock& result, uint32_t start, uint32_t count, int32_t attempts)
try {
    ThrowIf(start > LastAddress, "Invalid start address: ", start);
    ThrowIf(count > LargestRead, "Invalid number of bytes: ", count);
    j4TableComCommand command(Commands::ReadMemory);
    command.expectedLength = static_cast<int32_t>(2 * count);
    command.SetSendData(HexStringHelper::ToHexString(start, 8) + HexStringHelper::ToHexString(count, 4));
    Transfer(command, attempts, "Can't read memory: ");
    result = HexStringHelper::ByteBlockFromHexString(command.GetReceiveData());
    if (result.size() != count) {
        throw FirmwareException("Memory size not as expected (" + std::to_string(count) + ").");
    }
}
J4T_TRACE_FRAME

void j4TableComFlash::ReadBigMemory(ByteBlock& result, uint32_t start, uint32_t count, int32_t attempts)
try {
    ThrowIf(count > LastAddress, "Invalid end address: ", count);
    result.clear();
    uint32_t done = 0;
    do {
        const uint32_t piece = std::min(count - done, LargestRead);
        ByteBlock bytes;
        ReadMemory(bytes, start + done, piece, attempts);
        result.insert(result.end(), bytes.begin(), bytes.end());
        done += piece;
    } while (done < count);
}
J4T_TRACE_FRAME

void j4TableComFlash::WriteToRam(const ByteBlock& data, uint32_t ramAddress, int32_t attempts)
try {
    ThrowIf(ramAddress > LastRamAddress, "Invalid start address: ", ramAddress);
    j4TableComCommand command(Commands::WriteToRam);
    command.SetSendData(HexStringHelper::ToHexString(ramAddress, 4) + SizeCharacter(ramSizes, data.size()) +
                        HexStringHelper::ToHexString(data));
    Transfer(command, attempts, "Can't write to ram: ");
}
J4T_TRACE_FRAME

void j4TableComFlash::WriteToFlash(const ByteBlock& data, uint32_t address, int32_t attempts)
try {
    ThrowIf(!IsFlashAddress(address), "Invalid flash address: ", address);
    if (address % WriteSize != 0) {
        throw FirmwareException("Flash address not on boundary.");
    }
    if (data.empty()) {
        throw FirmwareException("No data to send.");
    }
    const uint32_t last = address + static_cast<uint32_t>(data.size()) - 1;
    if ((address ^ last) >= SectorSize) {
        throw FirmwareException("Data are not in same sector.");
    }
    const uint16_t sector = static_cast<uint16_t>(address / SectorSize);
    std::size_t done = 0;
    while (done < data.size()) {
        std::size_t loaded = 0;
        for (uint32_t slot = 0; slot < RamSlots && done + loaded < data.size(); ++slot) {
            const auto begin = data.begin() + static_cast<std::ptrdiff_t>(done + loaded);
            const std::size_t piece = std::min<std::size_t>(data.size() - done - loaded, RamSlotSize);
            WriteToRam(ByteBlock(begin, begin + static_cast<std::ptrdiff_t>(piece)), slot * RamSlotSize, attempts);
            loaded += piece;
        }
        PrepareSector(sector, sector);
        CopyRamToFlash(address + static_cast<uint32_t>(done), 0, static_cast<uint32_t>(loaded));
        done += loaded;
    }
}
J4T_TRACE_FRAME

void j4TableComFlash::Unlock(int32_t selector)
try {
    if (selector < 0 || selector >= static_cast<int32_t>(unlockIds.size())) {
        throw FirmwareException("Invalid block.");
    }
    j4TableComCommand command(Commands::Unlock);
    command.SetSendData(unlockIds[static_cast<std::size_t>(selector)]);
    Execute(command, "Can't unlock: ");
}
J4T_TRACE_FRAME

void j4TableComFlash::Lock()
try {
    j4TableComCommand command(Commands::Lock);
    Execute(command, "Can't Lock: ");
}
J4T_TRACE_FRAME

uint8_t j4TableComFlash::ConfigDataBlockStatus(int32_t selector, uint8_t& id, uint32_t& address, int32_t& third,
                                               bool throwOnError)
try {
    if (selector < 0 || selector > 3) {
        throw FirmwareException("Invalid block structure.");
    }
    j4TableComCommand command(Commands::ConfigDataBlockStatus, static_cast<uint8_t>(selector));
    SendAndReceive2(command);
    if (throwOnError && command.errorByte != 0) {
        throw FirmwareException(GetConfigDataErrorString(command.errorByte));
    }
    const std::string reply = command.GetReceiveData();
    id = HexStringHelper::CharFromHexString(reply.substr(0, 2));
    address = HexStringHelper::LongFromHexString(reply.substr(2, 4));
    third = HexStringHelper::SignedLongFromHexString(reply.substr(6, 8));
    return command.errorByte;
}
J4T_TRACE_FRAME

std::string j4TableComFlash::GetFlashErrorString(uint8_t error)
{
    return error < flashErrors.size() ? flashErrors[error] : "unknown firmware error (" + std::to_string(error) + ")";
}

std::string j4TableComFlash::GetConfigDataErrorString(uint8_t error)
{
    switch (error) {
    case 0:
        return std::string();
    case 1:
        return "No config block.";
    case 2:
        return "Checksum error in config block.";
    default:
        return "Can't get config block" + std::to_string(error) + ")";
    }
}

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
