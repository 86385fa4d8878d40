#include "tools/AtomicFile.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tools/ToolError.h"

namespace J4Tool {
namespace {

namespace fs = std::filesystem;

TEST(AtomicFile, AFailureSaysWhyAndLeavesWhatWasThere)
{
    const fs::path folder = "atomic_file_test";
    fs::remove_all(folder);
    fs::create_directories(folder / "taken" / "inside");
    const std::string file = (folder / "file.txt").string();
    WriteAtomically(file, "old");
    WriteAtomically(file, "new");
    RequireWritable(file);
    std::string content;
    std::ifstream(file) >> content;
    EXPECT_EQ(content, "new");

    std::error_code reason;
    fs::rename(file, folder / "taken", reason);
    ASSERT_TRUE(reason);
    try {
        WriteAtomically((folder / "taken").string(), "text");
        ADD_FAILURE() << "a folder was replaced";
    } catch (const ToolError& error) {
        EXPECT_TRUE(std::string(error.what()).ends_with("failed: " + reason.message())) << error.what();
    }
    EXPECT_THROW(WriteAtomically("no such folder/file.txt", "text"), ToolError);
    EXPECT_THROW(RequireWritable("no such folder/file.txt"), ToolError);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2) << "nothing is left beside the file";
    fs::remove_all(folder);
}

}  // namespace
}  // namespace J4Tool
