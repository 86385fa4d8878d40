#include "tests/libusb/LibusbTest.h"

#include <algorithm>
#include <filesystem>
#include <fstream>

namespace J4Test {

std::vector<std::string> HeldByLibusb()
{
    namespace fs = std::filesystem;
    std::vector<std::string> held;
    for (const fs::directory_entry& file : fs::directory_iterator("/proc/self/fd")) {
        std::error_code error;
        const std::string target = fs::read_symlink(file.path(), error).string();
        if (target.find("/bus/usb/") != std::string::npos) {
            held.push_back("device");
        } else if (target.find("[timerfd]") != std::string::npos) {
            held.push_back("timer");
        }
    }
    for (const fs::directory_entry& thread : fs::directory_iterator("/proc/self/task")) {
        std::string name;
        std::ifstream(thread.path() / "comm") >> name;
        if (name == "libusb_event") {
            held.push_back("thread");
        }
    }
    std::ranges::sort(held);
    return held;
}

}  // namespace J4Test
