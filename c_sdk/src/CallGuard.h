// Watches over an exported call: ends the process with the names of both functions when another thread is in the
// library, which would damage its data. A call from a handler, on the same thread, is allowed. Of debug builds only.
#pragma once

#include <atomic>
#include <thread>
#include <type_traits>

namespace Kestrelon::DeviceDriver::J4T {

class CallGuard {
public:
    /// @param function  name of the exported function; has to live as long as the guard
    explicit CallGuard(const char* function);
    ~CallGuard();
    CallGuard(const CallGuard&) = delete;
    CallGuard& operator=(const CallGuard&) = delete;

private:
    static std::atomic<std::thread::id> owner;
    static std::atomic<const char*> running;

    const char* outer;  ///< the function around this one, null for none
};

/// Stands for the guard where nothing is watched.
struct NoCallGuard {
    explicit NoCallGuard(const char*) {}
};

using ExportGuard = std::conditional_t<J4T_CHECK_THREADS, CallGuard, NoCallGuard>;

}  // namespace Kestrelon::DeviceDriver::J4T
