#include "tools/FileLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <system_error>
#include <utility>

#include "tools/ToolError.h"

namespace J4Tool {

struct FileLock::Hold {
    explicit Hold(std::string file) : name(std::move(file)) {}
    ~Hold()
    {
        if (handle >= 0) {
            close(handle);
        }
    }

    /// Whether the name still is that of the file that is open.
    bool IsCurrent() const
    {
        struct stat open = {};
        struct stat named = {};
        return fstat(handle, &open) == 0 && lstat(name.c_str(), &named) == 0 && open.st_dev == named.st_dev &&
               open.st_ino == named.st_ino;
    }

    std::string name;
    int handle = -1;
};

FileLock::FileLock(const std::string& fileName)
{
    // Who held the lock before may have taken its file away between opening and locking it here.
    do {
        hold = std::make_unique<Hold>(fileName + ".lock");
        hold->handle = open(hold->name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0666);
        if (hold->handle < 0) {
            throw ToolError(ExitCode::File,
                            "locking '" + fileName + "' failed: " + std::generic_category().message(errno),
                            "Look at '" + hold->name + "'.");
        }
        if (flock(hold->handle, LOCK_EX | LOCK_NB) != 0) {
            if (errno == EWOULDBLOCK) {
                throw ToolError(ExitCode::File, "'" + fileName + "' is being written by another program",
                                "Wait until that has ended, or name another file.");
            }
            return;  // a file system without locks
        }
    } while (!hold->IsCurrent());
}

FileLock::~FileLock() { unlink(hold->name.c_str()); }

}  // namespace J4Tool
