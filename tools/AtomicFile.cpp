#include "tools/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <filesystem>

#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

std::string TemporaryName(const std::string& fileName) { return fileName + ".tmp"; }

[[noreturn]] void Fail(const std::string& fileName)
{
    const std::string reason = std::strerror(errno);
    std::error_code ignored;
    std::filesystem::remove(TemporaryName(fileName), ignored);
    throw ToolError(ExitCode::File, "writing '" + fileName + "' failed: " + reason,
                    "Check that the folder exists, may be written to, and has room.");
}

}  // namespace

void WriteAtomically(const std::string& fileName, const std::string& content)
{
    const std::string temporary = TemporaryName(fileName);
    std::FILE* file = std::fopen(temporary.c_str(), "wb");
    bool good = file != nullptr;
    if (good) {
        good = std::fwrite(content.data(), 1, content.size(), file) == content.size() && Platform::WriteThrough(file);
        good = std::fclose(file) == 0 && good;
        good = good && Platform::MoveOver(temporary, fileName);
    }
    if (!good) {
        Fail(fileName);
    }
}

void RequireWritable(const std::string& fileName)
{
    std::FILE* file = std::fopen(TemporaryName(fileName).c_str(), "wb");
    if (file == nullptr) {
        Fail(fileName);
    }
    std::fclose(file);
    std::error_code ignored;
    std::filesystem::remove(TemporaryName(fileName), ignored);
}

}  // namespace J4Tool
