// The factory data in the table's flash: 90 little-endian words, the machine's measures, the white base and
// a checksum. Makes the block a new table is delivered with, and reads the machine's measures back out of
// whatever the flash holds.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "simulator/ground/Spectrum.h"
#include "simulator/table/Machine.h"

namespace J4Bench {

class ConfigurationBlock {
public:
    /// What the table says of the block in its flash.
    enum class State { Valid = 0, Missing = 1, Damaged = 2 };

    /// Version of the block's layout, the number behind the version mark "V1.2".
    static constexpr uint8_t Version = 12;
    /// Counts the revisions of the factory data.
    static constexpr int32_t Revision = 3;

    /// The block as the factory writes it.
    static std::vector<uint8_t> Factory();

    /// The reflectance of the white tile as the factory measured it.
    static const Spectrum& FactoryWhiteBase();

    /// @param memory  flash content from the block's start on
    explicit ConfigurationBlock(std::span<const uint8_t> memory);

    State GetState() const { return state; }

    /// The measures of the machine; those of Machine() while the state isn't Valid.
    const Machine& GetMachine() const { return machine; }

private:
    State state = State::Missing;
    Machine machine;
};

}  // namespace J4Bench
