// The configuration blocks of the tables that this user has worked with, each as it was when it was last seen whole: one
// file for each table in the user's state folder. A table whose block was lost gets it back from there.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace J4Tool {

using Block = std::vector<uint8_t>;

class SavedBlocks {
public:
    /// @param ofVirtualTables  which have a folder of their own: their serial numbers may be those of real ones
    explicit SavedBlocks(bool ofVirtualTables) : ofVirtualTables(ofVirtualTables) {}

    /// Where the block of this table is kept.
    /// @throws ToolError when there is no state folder
    std::string FileOf(const std::string& tableSerial) const;

    /// Puts a block in the place of the one that was kept; one that is the same is not written again.
    /// @throws ToolError for a block that is not whole, which leaves the one before, and when it can't be written
    void Keep(const std::string& tableSerial, const Block& block) const;

private:
    bool ofVirtualTables;
};

/// @throws ToolError for bytes that are not exactly one block with its checksum; the text begins with the words for it
void RequireWhole(const Block& block, const std::string& what);

/// @throws ToolError for a file that can't be read or is no block
Block LoadBlock(const std::string& fileName);

}  // namespace J4Tool
