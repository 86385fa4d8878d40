#include "Utilities/Tools/Environment.h"

#include <windows.h>

namespace Kestrelon::Utilities::Tools {

// The system's environment and not the copy in the run-time, of which each module with a static one has its own.
std::string EnvironmentText(const char* name)
{
    const std::wstring wideName(name, name + std::char_traits<char>::length(name));
    std::wstring wide(GetEnvironmentVariableW(wideName.c_str(), nullptr, 0), L'\0');
    wide.resize(GetEnvironmentVariableW(wideName.c_str(), wide.data(), static_cast<DWORD>(wide.size())));
    const int size = static_cast<int>(wide.size());
    std::string text(
        static_cast<size_t>(WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, nullptr, 0, nullptr, nullptr)), '\0');
    WideCharToMultiByte(CP_UTF8, 0, wide.data(), size, text.data(), static_cast<int>(text.size()), nullptr, nullptr);
    return text;
}

}  // namespace Kestrelon::Utilities::Tools
