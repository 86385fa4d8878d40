#include "Utilities/Tools/FileSystem.h"

#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

namespace Kestrelon::Utilities::Tools {

std::FILE* CreateNew(const std::filesystem::path& file)
{
    const int handle = _wopen(file.c_str(), _O_WRONLY | _O_CREAT | _O_EXCL | _O_BINARY, _S_IREAD | _S_IWRITE);
    return handle < 0 ? nullptr : _fdopen(handle, "wb");
}

bool WriteThrough(std::FILE* stream) { return std::fflush(stream) == 0 && _commit(_fileno(stream)) == 0; }

std::error_code MoveOver(const std::filesystem::path& from, const std::filesystem::path& to, bool isLasting)
{
    // Who reads the file, if only to look for viruses, keeps its place for a moment.
    constexpr int tries = 200;
    constexpr DWORD pause = 10;  // milliseconds
    const DWORD flags = MOVEFILE_REPLACE_EXISTING | (isLasting ? MOVEFILE_WRITE_THROUGH : 0);
    for (int left = tries; MoveFileExW(from.c_str(), to.c_str(), flags) == 0;) {
        const DWORD error = GetLastError();
        if ((error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED) || --left == 0) {
            return {static_cast<int>(error), std::system_category()};
        }
        Sleep(pause);
    }
    return {};
}

}  // namespace Kestrelon::Utilities::Tools
