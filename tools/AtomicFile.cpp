#include "tools/AtomicFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <system_error>

#include "Utilities/Tools/FilePath.h"
#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::PathOf;

namespace {

std::error_code LastError() { return {errno, std::generic_category()}; }

[[noreturn]] void Fail(const std::string& fileName, const std::error_code& reason)
{
    throw ToolError(ExitCode::File, "writing '" + fileName + "' failed: " + reason.message(),
                    "Check that the folder exists, may be written to, and has room.");
}

/// A file beside another one, under a name that no file had; goes at the end unless it has taken the other's place.
class TemporaryFile {
public:
    explicit TemporaryFile(const std::string& fileName) : target(fileName)
    {
        for (int number = 1; file == nullptr; ++number) {
            name = fileName + "." + std::to_string(number) + ".tmp";
            file = Platform::CreateNew(PathOf(name));
            if (file == nullptr && errno != EEXIST) {
                Fail(fileName, LastError());
            }
        }
    }

    ~TemporaryFile()
    {
        Close();
        if (!name.empty()) {
            std::error_code ignored;
            std::filesystem::remove(PathOf(name), ignored);
        }
    }

    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    void Write(const std::string& content)
    {
        if (std::fwrite(content.data(), 1, content.size(), file) != content.size() || !Platform::WriteThrough(file)) {
            Fail(target, LastError());
        }
    }

    /// What a full or failing disk kept may be less than what it took.
    void RequireHolds(const std::string& content)
    {
        if (!Close()) {
            Fail(target, LastError());
        }
        if (ContentOf(name) != content) {
            Fail(target, std::make_error_code(std::errc::io_error));
        }
    }

    void TakePlace()
    {
        if (!Close()) {
            Fail(target, LastError());
        }
        if (const std::error_code error = Platform::MoveOver(PathOf(name), PathOf(target))) {
            Fail(target, error);
        }
        name.clear();
    }

private:
    bool Close()
    {
        std::FILE* const open = file;
        file = nullptr;
        return open == nullptr || std::fclose(open) == 0;
    }

    const std::string target;
    std::string name;
    std::FILE* file = nullptr;
};

}  // namespace

void WriteAtomically(const std::string& fileName, const std::string& content)
{
    TemporaryFile file(fileName);
    file.Write(content);
    file.RequireHolds(content);
    file.TakePlace();
}

std::optional<std::string> ContentOf(const std::string& fileName)
{
    std::ifstream input(PathOf(fileName), std::ios::binary);
    if (!input) {
        return std::nullopt;
    }
    std::string content;
    char part[65536];
    while (input.read(part, sizeof part), input.gcount() > 0) {
        content.append(part, static_cast<size_t>(input.gcount()));
    }
    return input.bad() ? std::nullopt : std::optional(content);
}

void RequireWritable(const std::string& fileName) { const TemporaryFile file(fileName); }

}  // namespace J4Tool
