#include "simulator/table/TableFlash.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "simulator/table/ConfigurationBlock.h"

namespace J4Bench {

namespace {

constexpr std::string_view BootBanner = "J4 scanning table, boot loader 1.4";

}  // namespace

const TableFlash::Block TableFlash::Blocks[] = {
    {"850462", {1, 6}},   // firmware
    {"317598", {7, 7}},   // configuration
    {"264083", {8, 14}},  // free for service tools
};

TableFlash::TableFlash() : memory(MemorySize, Erased), ram(RamSize, 0)
{
    std::ranges::copy(BootBanner, memory.begin());
    std::ranges::copy(ConfigurationBlock::Factory(), memory.begin() + ConfigurationAddress);
}

TableFlash::Status TableFlash::Unlock(std::string_view id)
{
    const auto block = std::ranges::find(Blocks, id, &Block::unlockId);
    if (block == std::end(Blocks)) {
        return Status::WrongUnlockId;
    }
    unlocked = block->sectors;
    return Status::Done;
}

void TableFlash::Lock()
{
    unlocked.reset();
    prepared.reset();
}

bool TableFlash::IsInterval(uint32_t startSector, uint32_t endSector)
{
    return Sectors{1, LastSector}.Contain(startSector, endSector) && startSector <= endSector;
}

bool TableFlash::IsUnlocked(uint32_t startSector, uint32_t endSector) const
{
    return unlocked && unlocked->Contain(startSector, endSector);
}

TableFlash::Status TableFlash::Prepare(uint32_t startSector, uint32_t endSector)
{
    if (!IsInterval(startSector, endSector)) {
        return Status::Interval;
    }
    if (!IsUnlocked(startSector, endSector)) {
        return Status::SectorLocked;
    }
    prepared = Sectors{startSector, endSector};
    return Status::Done;
}

TableFlash::Status TableFlash::Claim(uint32_t startSector, uint32_t endSector)
{
    if (!IsUnlocked(startSector, endSector)) {
        return Status::SectorLocked;
    }
    if (!prepared || !prepared->Contain(startSector, endSector)) {
        return Status::NotPrepared;
    }
    prepared.reset();
    return Status::Done;
}

TableFlash::Status TableFlash::Erase(uint32_t startSector, uint32_t endSector)
{
    if (!IsInterval(startSector, endSector)) {
        return Status::Interval;
    }
    const Status status = Claim(startSector, endSector);
    if (status == Status::Done) {
        const uint32_t count = DoneOf((endSector - startSector + 1) * SectorSize);
        std::fill_n(memory.begin() + startSector * SectorSize, count, Erased);
        onChange();
    }
    return status;
}

TableFlash::Status TableFlash::Copy(uint32_t flashAddress, uint32_t ramAddress, uint32_t count)
{
    if (ramAddress > RamSize || count > RamSize - ramAddress) {
        return Status::DestinationOrSize;
    }
    if (flashAddress % WriteAlignment != 0 || ramAddress % 4 != 0) {
        return Status::Alignment;
    }
    const uint32_t sector = flashAddress / SectorSize;
    if (!IsInterval(sector, sector) || (flashAddress + count - 1) / SectorSize != sector) {
        return Status::Boundary;
    }
    const Status status = Claim(sector, sector);
    if (status == Status::Done) {
        const uint32_t done = DoneOf(count);
        for (uint32_t i = 0; i < done; ++i) {
            memory[flashAddress + i] &= ram[ramAddress + i];
        }
        onChange();
    }
    return status;
}

uint32_t TableFlash::DoneOf(uint32_t count) { return std::exchange(isTorn, false) ? count / 2 : count; }

void TableFlash::Replace(std::span<const uint8_t> content) { std::ranges::copy(content, memory.begin()); }

TableFlash::Status TableFlash::WriteRam(uint32_t ramAddress, std::span<const uint8_t> data)
{
    if (ramAddress > RamSize || data.size() > RamSize - ramAddress) {
        return Status::DestinationOrSize;
    }
    std::ranges::copy(data, ram.begin() + ramAddress);
    return Status::Done;
}

TableFlash::Status TableFlash::Read(uint32_t address, uint32_t count, std::vector<uint8_t>& data) const
{
    if (count > LargestRead) {
        return Status::DestinationOrSize;
    }
    if (address > MemorySize || count > MemorySize - address) {
        return Status::Boundary;
    }
    data.assign(memory.begin() + address, memory.begin() + address + count);
    return Status::Done;
}

}  // namespace J4Bench
