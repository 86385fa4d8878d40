#include "tools/OutputFile.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <system_error>

#include "Utilities/Tools/FilePath.h"
#include "tools/AtomicFile.h"
#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::PathOf;

namespace {

bool IsSameFile(const std::string& first, const std::string& second)
{
    std::error_code error;
    return std::filesystem::equivalent(PathOf(first), PathOf(second), error) ||
           std::filesystem::absolute(PathOf(first), error).lexically_normal() ==
               std::filesystem::absolute(PathOf(second), error).lexically_normal();
}

}  // namespace

void OutputFile::RequireRegular(const std::string& name)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::symlink_status(PathOf(name), error);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        const char* const kind = std::filesystem::is_directory(status) ? "a folder"
                                 : std::filesystem::is_symlink(status) ? "a link"
                                                                       : "no regular file";
        throw ToolError(ExitCode::File, "'" + name + "' is " + kind + " and is not replaced",
                        "Name a file, or - for standard output.");
    }
}

void OutputFile::RequireDifferent(const std::vector<std::string>& names)
{
    for (size_t i = 0; i < names.size(); ++i) {
        for (size_t k = 0; k < i; ++k) {
            if (!names[i].empty() && !names[k].empty() && IsSameFile(names[i], names[k])) {
                throw ToolError(ExitCode::Usage, "'" + names[i] + "' is named for two files that are to be written",
                                "Name a file for each.");
            }
        }
    }
}

OutputFile::OutputFile(const std::string& name, bool replace, const std::vector<std::string>& inputs) : name(name)
{
    if (name.empty()) {
        throw ToolError(ExitCode::Usage, "the name of the file to write is empty",
                        "Name a file, or - for standard output.");
    }
    if (IsStandardOutput()) {
        return;
    }
    RequireRegular(name);
    for (const std::string& input : inputs) {
        if (!input.empty() && IsSameFile(name, input)) {
            throw ToolError(ExitCode::Usage, "'" + name + "' is read by this command and can't be its output too",
                            "Name another file to write.");
        }
    }
    RequireWritable(name);
    lock = std::make_shared<FileLock>(name);
    std::error_code error;
    if (!replace && std::filesystem::exists(PathOf(name), error)) {
        throw ToolError(ExitCode::File, "'" + name + "' exists", "Name another file, or replace it with --force.");
    }
}

void OutputFile::Write(const std::string& content) const
{
    if (!IsStandardOutput()) {
        WriteAtomically(name, content);
        return;
    }
    Platform::KeepBytes(stdout);  // they are those of the file
    std::fwrite(content.data(), 1, content.size(), stdout);
    FlushStandardOutput();
}

void FlushStandardOutput()
{
    errno = 0;
    if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) {
        const std::error_code reason(errno == 0 ? EIO : errno, std::generic_category());
        throw ToolError(ExitCode::File, "writing to standard output failed: " + reason.message(),
                        "Not everything that was to be shown arrived.");
    }
}

}  // namespace J4Tool
