#include "tools/Interrupt.h"

#include <atomic>

#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace {

std::atomic<bool> requested = false;
std::atomic<const char*> words = nullptr;

// A signal handler may touch nothing that takes a lock.
static_assert(std::atomic<bool>::is_always_lock_free && std::atomic<const char*>::is_always_lock_free);

void OnRequest()
{
    const char* const notice = words;
    if (!requested.exchange(true) && notice != nullptr) {
        Platform::WriteNow(notice);
    }
}

}  // namespace

void Interrupt::Install(const char* notice)
{
    words = notice;
    Platform::OnEndRequest(OnRequest);
}

void Interrupt::SetNotice(const char* notice) { words = notice; }

bool Interrupt::Requested() { return requested; }

void Interrupt::Check(const char* what)
{
    if (requested) {
        throw ToolError(ExitCode::Interrupted, what, "The table was let go.");
    }
}

}  // namespace J4Tool
