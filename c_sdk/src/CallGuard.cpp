#include "c_sdk/src/CallGuard.h"

#include <cstdio>
#include <cstdlib>
#include <string>

namespace Kestrelon::DeviceDriver::J4T {

std::atomic<std::thread::id> CallGuard::owner;
std::atomic<const char*> CallGuard::running;

CallGuard::CallGuard(const char* function)
{
    const std::thread::id self = std::this_thread::get_id();
    std::thread::id present;
    if (!owner.compare_exchange_strong(present, self) && present != self) {
        const char* other = running;
        const std::string text = std::string("assertion failed: ") + function + " is called while " +
                                 (other != nullptr ? other : "a function") + " runs in another thread\n";
        std::fputs(text.c_str(), stderr);
        std::abort();
    }
    outer = running.exchange(function);
}

CallGuard::~CallGuard()
{
    running = outer;
    if (outer == nullptr) {
        owner = std::thread::id();
    }
}

}  // namespace Kestrelon::DeviceDriver::J4T
