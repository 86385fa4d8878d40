#include "tools/AtomicFile.h"

#include <filesystem>
#include <fstream>
#include <system_error>

#include "Utilities/Tools/FilePath.h"
#include "Utilities/Tools/ReplacementFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::NameOf;
using Kestrelon::Utilities::Tools::PathOf;
using Kestrelon::Utilities::Tools::ReplacementFile;

namespace {

[[noreturn]] void Fail(const std::string& fileName, const std::error_code& reason)
{
    throw ToolError(ExitCode::File, "writing '" + fileName + "' failed: " + reason.message(),
                    "Check that the folder exists, may be written to, and has room.");
}

}  // namespace

void WriteAtomically(const std::string& fileName, const std::string& content)
{
    try {
        ReplacementFile file(PathOf(fileName));
        file.Write(content);
        file.WriteThrough();
        file.Close();
        // What a full or failing disk kept may be less than what it took.
        if (ContentOf(NameOf(file.Name())) != content) {
            Fail(fileName, std::make_error_code(std::errc::io_error));
        }
        file.TakePlace();
    } catch (const std::system_error& error) {
        Fail(fileName, error.code());
    }
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

void RequireWritable(const std::string& fileName)
{
    try {
        const ReplacementFile file(PathOf(fileName));
    } catch (const std::system_error& error) {
        Fail(fileName, error.code());
    }
}

}  // namespace J4Tool
