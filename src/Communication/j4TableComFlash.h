// Reads and writes the table's flash: sectors of 8192 bytes, written 512 bytes at a time through a small
// RAM buffer on the table. Arguments out of range and refusals by the table are FirmwareExceptions.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "src/Communication/j4TableCommunication.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

class j4TableComFlash : public j4TableCommunication {
public:
    using ByteBlock = std::vector<uint8_t>;

    static constexpr uint32_t SectorSize = 0x2000;
    static constexpr uint32_t WriteSize = 512;    ///< alignment and granularity of WriteToFlash
    static constexpr uint32_t LargestRead = 256;  ///< of ReadMemory

    // The firmware's numbers of the configuration block.
    static constexpr int32_t BlockToUnlock = 1;
    static constexpr int32_t BlockToRead = 2;
    static constexpr int32_t BlockToWrite = 3;

    using j4TableCommunication::j4TableCommunication;

    /// Sectors are 1 to 14. Needed before each erase and each copy.
    void PrepareSector(uint16_t start, uint16_t end);
    void EraseSector(uint16_t start, uint16_t end);

    /// @param count  512, 1024 or 4096
    void CopyRamToFlash(uint32_t flashAddress, uint32_t ramAddress, uint32_t count);

    /// @param attempts  how often the transfer is tried in all
    void ReadMemory(ByteBlock& result, uint32_t start, uint32_t count, int32_t attempts);
    /// ReadMemory in pieces.
    void ReadBigMemory(ByteBlock& result, uint32_t start, uint32_t count, int32_t attempts);

    /// @param data  128 or 256 bytes
    void WriteToRam(const ByteBlock& data, uint32_t ramAddress, int32_t attempts);
    /// @param data  a multiple of 512 bytes inside one sector, which has been erased
    void WriteToFlash(const ByteBlock& data, uint32_t address, int32_t attempts);

    /// @param selector  block, 0 to 2
    void Unlock(int32_t selector);
    void Lock();

    /// Where a configuration block lies.
    /// @param selector  block, 0 to 3
    /// @param id        the block's version
    /// @param address   its address
    /// @return the table's error value; with throwOnError a value other than 0 is thrown
    uint8_t ConfigDataBlockStatus(int32_t selector, uint8_t& id, uint32_t& address, int32_t& third, bool throwOnError);

    static std::string GetFlashErrorString(uint8_t error);
    static std::string GetConfigDataErrorString(uint8_t error);

private:
    /// Runs the exchange; an error of the table is thrown behind the given words.
    void Execute(j4TableComCommand& command, const char* failure);
    /// Execute, for a transfer that may be tried more than once.
    void Transfer(j4TableComCommand& command, int32_t attempts, const char* failure);
};

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
