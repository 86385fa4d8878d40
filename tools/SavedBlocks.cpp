#include "tools/SavedBlocks.h"

#include <cctype>
#include <filesystem>
#include <optional>
#include <system_error>

#include "Utilities/Tools/FilePath.h"
#include "Utilities/Tools/HexStringHelper.h"
#include "src/Flash/j4TableFlashData.h"
#include "tools/AtomicFile.h"
#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::DeviceDriver::J4T::j4TableFlashData;
using Kestrelon::Utilities::Tools::HexStringHelper;
using Kestrelon::Utilities::Tools::NameOf;
using Kestrelon::Utilities::Tools::PathOf;

namespace {

/// A serial number as part of a file's name, whatever characters a table has in it.
std::string FileText(const std::string& serial)
{
    std::string text;
    for (const char character : serial) {
        const auto byte = static_cast<unsigned char>(character);
        text += byte < 0x80 && std::isalnum(byte) != 0 ? std::string(1, character)
                                                       : "%" + HexStringHelper::ToHexString(byte, 2);
    }
    return text;
}

bool Read(const std::string& fileName, Block& block)
{
    const std::optional<std::string> content = ContentOf(fileName);
    if (content) {
        block.assign(content->begin(), content->end());
    }
    return content.has_value();
}

}  // namespace

void RequireWhole(const Block& block, const std::string& what)
{
    std::string fault;
    try {
        if (j4TableFlashData::GetConfigDataSize(block) != block.size()) {
            fault = "it has " + std::to_string(block.size()) + " bytes instead of " +
                    std::to_string(j4TableFlashData::GetConfigDataSize(block));
        } else {
            j4TableFlashData(block).CheckChecksum();
        }
    } catch (const std::exception& error) {
        fault = error.what();
    }
    if (!fault.empty()) {
        throw ToolError(ExitCode::File, what + " is no whole configuration of a table: " + fault,
                        "Name a file that this tool has saved for the table.");
    }
}

Block LoadBlock(const std::string& fileName)
{
    Block block;
    if (!Read(fileName, block)) {
        throw ToolError(ExitCode::File, "'" + fileName + "' can't be read", "Check its name and who may read it.");
    }
    RequireWhole(block, "'" + fileName + "'");
    return block;
}

std::string SavedBlocks::FileOf(const std::string& tableSerial) const
{
    const std::filesystem::path folder = Platform::StateFolder();
    if (folder.empty()) {
        throw ToolError(ExitCode::File, "there is no folder to keep the table's configuration in",
                        "Set HOME or XDG_STATE_HOME (Windows: LOCALAPPDATA) to a folder that may be written to.");
    }
    const std::filesystem::path tables = folder / "j4tavla" / (ofVirtualTables ? "virtual" : "tables");
    return NameOf(tables / ("configuration-" + FileText(tableSerial) + ".block"));
}

void SavedBlocks::Keep(const std::string& tableSerial, const Block& block) const
{
    RequireWhole(block, "what was read from table " + tableSerial);
    const std::string fileName = FileOf(tableSerial);
    Block kept;
    if (Read(fileName, kept) && kept == block) {
        return;
    }
    std::error_code ignored;  // writing tells it
    std::filesystem::create_directories(PathOf(fileName).parent_path(), ignored);
    WriteAtomically(fileName, std::string(block.begin(), block.end()));
}

}  // namespace J4Tool
