#include "tools/FileLock.h"

#include <windows.h>

#include <system_error>

#include "Utilities/Tools/FilePath.h"
#include "tools/ToolError.h"

namespace J4Tool {

struct FileLock::Hold {
    ~Hold() { CloseHandle(handle); }

    HANDLE handle;
};

FileLock::FileLock(const std::string& fileName)
{
    const std::string name = fileName + ".lock";
    // It goes with its handle, however the program ends.
    const HANDLE handle = CreateFileW(Kestrelon::Utilities::Tools::PathOf(name).c_str(), GENERIC_WRITE | DELETE, 0,
                                      nullptr, OPEN_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
    if (handle == INVALID_HANDLE_VALUE) {
        const DWORD reason = GetLastError();
        if (reason == ERROR_SHARING_VIOLATION) {
            throw ToolError(ExitCode::File, "'" + fileName + "' is being written by another program",
                            "Wait until that has ended, or name another file.");
        }
        throw ToolError(
            ExitCode::File,
            "locking '" + fileName + "' failed: " + std::system_category().message(static_cast<int>(reason)),
            "Look at '" + name + "'.");
    }
    hold = std::make_unique<Hold>(handle);
}

FileLock::~FileLock() = default;

}  // namespace J4Tool
