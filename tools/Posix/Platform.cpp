#include "tools/Platform.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <cstring>

#include "Utilities/Tools/Environment.h"
#include "Utilities/Tools/FilePath.h"

namespace J4Tool::Platform {

using Kestrelon::Utilities::Tools::EnvironmentText;
using Kestrelon::Utilities::Tools::PathOf;

std::filesystem::path ProgramFolder()
{
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
}

std::filesystem::path StateFolder()
{
    const auto folder = [](const char* name) {
        const std::filesystem::path path = PathOf(EnvironmentText(name));
        return path.is_absolute() ? path : std::filesystem::path();
    };
    const std::filesystem::path state = folder("XDG_STATE_HOME");
    const std::filesystem::path home = folder("HOME");
    return !state.empty() || home.empty() ? state : home / ".local" / "state";
}

std::string LibraryFileName(const std::string& name) { return "lib" + name + ".so"; }

void AddLibraryFolder(const std::filesystem::path&)
{
    // The libraries find one another by the search path that they carry themselves; the current folder is in none.
}

void PrepareConsole()
{
    // Terminals show UTF-8 anyway.
}

bool IsTerminal(std::FILE* stream) { return isatty(fileno(stream)) == 1; }

void KeepBytes(std::FILE*) {}

bool WaitForInput(int milliseconds)
{
    pollfd input{STDIN_FILENO, POLLIN, 0};
    return poll(&input, 1, milliseconds) > 0;
}

int TerminalWidth()
{
    winsize size{};
    return ioctl(STDOUT_FILENO, TIOCGWINSZ, &size) == 0 && size.ws_col > 0 ? size.ws_col : 80;
}

namespace {

constexpr int EndSignals[] = {SIGINT, SIGTERM, SIGHUP, SIGPIPE};

void (*endHandler)() = nullptr;

void OnSignal(int)
{
    const int error = errno;
    endHandler();
    errno = error;
}

}  // namespace

void OnEndRequest(void (*handler)())
{
    endHandler = handler;
    for (const int signal : EndSignals) {
        struct sigaction before = {};
        sigaction(signal, nullptr, &before);
        // Who started the program under nohup, or in the background, wants it to go on.
        if (before.sa_handler == SIG_IGN && signal != SIGPIPE) {
            continue;
        }
        struct sigaction action = {};
        action.sa_handler = OnSignal;
        action.sa_flags = SA_RESTART;
        sigaction(signal, &action, nullptr);
    }
}

struct SignalShield::Mask {
    sigset_t signals;
};

SignalShield::SignalShield() : before(std::make_unique<Mask>())
{
    sigset_t waiting;
    sigfillset(&waiting);
    for (const int fault : {SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGABRT, SIGTRAP, SIGSYS}) {
        sigdelset(&waiting, fault);
    }
    for (const int signal : EndSignals) {
        sigdelset(&waiting, signal);
    }
    pthread_sigmask(SIG_BLOCK, &waiting, &before->signals);
}

SignalShield::~SignalShield() { pthread_sigmask(SIG_SETMASK, &before->signals, nullptr); }

void WriteNow(const char* text)
{
    // Nothing could be done about a failure.
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, text, std::strlen(text));
}

std::FILE* OpenToAppend(const std::filesystem::path& file)
{
    const int handle = open(file.c_str(), O_WRONLY | O_APPEND | O_CLOEXEC | O_NOFOLLOW);
    return handle < 0 ? nullptr : fdopen(handle, "ab");
}

bool CutTo(std::FILE* stream, long long length) { return ftruncate(fileno(stream), length) == 0; }

}  // namespace J4Tool::Platform
