#include "Utilities/Tools/FileSystem.h"

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

namespace Kestrelon::Utilities::Tools {

std::FILE* CreateNew(const std::filesystem::path& file)
{
    const int handle = open(file.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    return handle < 0 ? nullptr : fdopen(handle, "wb");
}

bool WriteThrough(std::FILE* stream) { return std::fflush(stream) == 0 && fsync(fileno(stream)) == 0; }

std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to, bool isLasting)
{
    if (rename(from.c_str(), to.c_str()) != 0) {
        return {errno, std::generic_category()};
    }
    if (!isLasting) {
        return {};
    }
    // The new name lasts only when the folder is on the disk too; some file systems can't do that, and lose
    // nothing but time by it.
    const std::filesystem::path folder = to.has_parent_path() ? to.parent_path() : std::filesystem::path(".");
    const int handle = open(folder.c_str(), O_RDONLY | O_DIRECTORY);
    if (handle >= 0) {
        fsync(handle);
        close(handle);
    }
    return {};
}

}  // namespace Kestrelon::Utilities::Tools
