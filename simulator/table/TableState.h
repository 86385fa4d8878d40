// What a table keeps while it is switched off: where its arm stands, its counters and its flash; and the file in which a
// simulated table keeps it from one program to the next.
#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <vector>

#include "simulator/ground/Point.h"
#include "simulator/table/TableMotors.h"

namespace J4Bench {

struct TableState {
    Point arm;
    TableMotors::Counters counters;
    uint32_t resets = 0;
    std::vector<uint8_t> flash;  ///< TableFlash::MemorySize bytes

    /// The lines of the file: the flash in rows without those that are erased, and last a checksum over all before.
    std::string Text() const;

    /// @param text  what Text gave
    /// @throws std::runtime_error with the line and what is wrong in it
    static TableState Parse(const std::string& text);

    /// @throws std::runtime_error with the reason, also for what is no regular file
    static TableState Load(const std::filesystem::path& file);

    /// Replaces the file whole or not at all, whenever the program ends, and never by another program's half.
    /// @return false when that failed
    bool Save(const std::filesystem::path& file) const;
};

}  // namespace J4Bench
