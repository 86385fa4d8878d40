// Keeps a file for one program: whoever writes it holds the lock, and a second one is told so at once. The lock is a file
// beside it, "NAME.lock"; what a program that was killed leaves of it does not count. Each platform's folder defines it.
#pragma once

#include <memory>
#include <string>

namespace J4Tool {

class FileLock {
public:
    /// @throws ToolError when another program holds it, or the lock can't be made
    explicit FileLock(const std::string& fileName);
    ~FileLock();
    FileLock(const FileLock&) = delete;
    FileLock& operator=(const FileLock&) = delete;

private:
    struct Hold;
    std::unique_ptr<Hold> hold;
};

}  // namespace J4Tool
