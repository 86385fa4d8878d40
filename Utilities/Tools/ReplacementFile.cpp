#include "Utilities/Tools/ReplacementFile.h"

#include <cerrno>
#include <system_error>
#include <utility>

#include "Utilities/Tools/FileSystem.h"

namespace Kestrelon::Utilities::Tools {

namespace {

void Require(bool isDone)
{
    if (!isDone) {
        throw std::system_error(errno, std::generic_category());
    }
}

}  // namespace

ReplacementFile::ReplacementFile(const std::filesystem::path& target) : target(target)
{
    for (int number = 1; file == nullptr; ++number) {
        name = target;
        name += "." + std::to_string(number) + ".tmp";
        file = CreateNew(name);
        Require(file != nullptr || errno == EEXIST);
    }
}

ReplacementFile::~ReplacementFile()
{
    if (file != nullptr) {
        std::fclose(file);
    }
    if (!name.empty()) {
        std::error_code ignored;
        std::filesystem::remove(name, ignored);
    }
}

void ReplacementFile::Write(const std::string& content)
{
    Require(std::fwrite(content.data(), 1, content.size(), file) == content.size());
}

void ReplacementFile::WriteThrough()
{
    Require(Tools::WriteThrough(file));
    isWrittenThrough = true;
}

void ReplacementFile::Close()
{
    std::FILE* const open = std::exchange(file, nullptr);
    Require(open == nullptr || std::fclose(open) == 0);
}

void ReplacementFile::TakePlace()
{
    Close();
    if (const std::error_code error = MoveOver(name, target, isWrittenThrough)) {
        throw std::system_error(error);
    }
    name.clear();
}

}  // namespace Kestrelon::Utilities::Tools
