// Reads the table's configuration block byte by byte over the connection that the library has: its options tell the values
// of the block rounded, and a copy has to be the block itself.
#pragma once

#include <cstdint>
#include <string>

#include "tools/SavedBlocks.h"
#include "tools/TableFunctions.h"

namespace J4Tool {

class BlockReader {
public:
    /// @param functions  of a library that is connected to the table; must last
    explicit BlockReader(const TableFunctions& functions) : functions(functions) {}

    /// @throws ToolError
    Block Read() const;

private:
    /// One command of the table's line protocol.
    /// @param request   command, sub-command and data
    /// @param expected  characters of data in the reply
    std::string Ask(const std::string& request, int32_t expected) const;
    void Transfer(int32_t operation, J4PrivateTableRequest& record) const;
    Block ReadMemory(uint32_t address, uint32_t count) const;

    const TableFunctions& functions;
};

}  // namespace J4Tool
