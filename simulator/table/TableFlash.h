// The controller's flash memory with its access rules: 14 writable sectors that are unlocked by block, prepared
// for each single operation, erased to FF and programmed from a small RAM buffer.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

namespace J4Bench {

class TableFlash {
public:
    /// The status values of the controller's flash loader.
    enum class Status {
        Done = 0,
        CommandLength = 2,
        Interval = 3,
        Alignment = 4,
        DestinationOrSize = 5,
        Busy = 6,
        SectorLocked = 7,
        NotPrepared = 8,
        Boundary = 9,
        WrongUnlockId = 10,
    };

    static constexpr uint32_t SectorSize = 0x2000;
    static constexpr uint32_t LastSector = 14;
    static constexpr uint32_t MemorySize = (LastSector + 1) * SectorSize;
    static constexpr uint32_t WriteAlignment = 512;
    static constexpr uint32_t LargestRead = 256;
    static constexpr uint32_t RamSize = 0x1100;
    static constexpr uint8_t Erased = 0xff;
    static constexpr uint32_t ConfigurationAddress = 7 * SectorSize;

    /// A delivered table: a boot loader below the first sector, erased sectors, the factory's configuration.
    TableFlash();

    /// Lets the sectors of the block that belongs to this id be written, and locks every other one.
    Status Unlock(std::string_view id);

    /// Locks all sectors; a preparation is gone.
    void Lock();

    /// Allows one following erase or copy within these sectors.
    Status Prepare(uint32_t startSector, uint32_t endSector);

    Status Erase(uint32_t startSector, uint32_t endSector);

    /// Programs count bytes of the RAM buffer: bits can be cleared by it, never set.
    /// @param count  512, 1024 or 4096
    Status Copy(uint32_t flashAddress, uint32_t ramAddress, uint32_t count);

    Status WriteRam(uint32_t ramAddress, std::span<const uint8_t> data);

    Status Read(uint32_t address, uint32_t count, std::vector<uint8_t>& data) const;

    /// The power fails within the next erase or copy: only its first half is done.
    void TearNext() { isTorn = true; }

    std::span<const uint8_t> Memory() const { return memory; }

    /// Has other content from now on, MemorySize bytes.
    void Replace(std::span<const uint8_t> content);

    /// Calls this after each erase and copy.
    void OnChange(std::function<void()> callback) { onChange = std::move(callback); }

private:
    struct Sectors {
        uint32_t first;
        uint32_t last;
        bool Contain(uint32_t start, uint32_t end) const { return first <= start && end <= last; }
    };

    struct Block {
        std::string_view unlockId;
        Sectors sectors;
    };

    static const Block Blocks[];

    static bool IsInterval(uint32_t startSector, uint32_t endSector);
    bool IsUnlocked(uint32_t startSector, uint32_t endSector) const;

    /// Tests and spends the preparation.
    Status Claim(uint32_t startSector, uint32_t endSector);

    /// How much of an operation's bytes is done. Spends a tear.
    uint32_t DoneOf(uint32_t count);

    std::vector<uint8_t> memory;
    std::vector<uint8_t> ram;
    std::optional<Sectors> unlocked;
    std::optional<Sectors> prepared;
    bool isTorn = false;
    std::function<void()> onChange = [] {};
};

}  // namespace J4Bench
