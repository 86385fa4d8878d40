#include "tools/AtomicFile.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>

#include "tools/ToolError.h"

namespace J4Tool {
namespace {

using testing::AnyOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::ThrowsMessage;

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

    // What the systems say of a folder that stands in the way.
    EXPECT_THAT([&] { WriteAtomically((folder / "taken").string(), "text"); },
                ThrowsMessage<ToolError>(AnyOf(EndsWith("Is a directory"), HasSubstr("failed: Access"))));
    EXPECT_THROW(WriteAtomically("no such folder/file.txt", "text"), ToolError);
    EXPECT_THROW(RequireWritable("no such folder/file.txt"), ToolError);
    EXPECT_EQ(std::distance(fs::directory_iterator(folder), {}), 2) << "nothing is left beside the file";
    fs::remove_all(folder);
}

}  // namespace
}  // namespace J4Tool
