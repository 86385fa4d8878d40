// Brings a table back that has no valid configuration block: the library does not connect to one, so this works below it,
// straight on the table's line. What it writes it reads back.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "src/Communication/j4TableComManager.h"
#include "tools/SavedBlocks.h"

namespace J4Tool {

class TableRescue {
public:
    /// Serial numbers of all tables that are plugged in, in the order of their places; empty where one does not tell it.
    /// @throws ToolError when there is none
    static std::vector<std::string> Tables();

    /// @param place  among those of Tables
    /// @throws ToolError when the table can't be opened
    explicit TableRescue(size_t place);

    /// What is wrong with the table's block; empty for a good one, of which the table is then locked again.
    /// @throws ToolError when the table does not answer
    std::string Fault();

    /// Writes a block as the library does, reads it back and compares. No signal ends the program meanwhile.
    /// @throws ToolError; another try may be made
    void Write(const Block& block);

private:
    using Manager = Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager;

    Kestrelon::Utilities::Tools::SmartPointer<Manager> manager;
};

}  // namespace J4Tool
