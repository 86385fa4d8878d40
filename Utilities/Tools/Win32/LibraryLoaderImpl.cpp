#include "Utilities/Tools/LibraryLoaderImpl.h"

#include <windows.h>

#include <vector>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/StringTools.h"

namespace Kestrelon::Platform {

using Utilities::Exceptions::ResourceNotAvailableException;

void LibraryLoaderImpl::LookForLibrary(const std::string& name)
try {
    handle = LoadLibraryExA(name.c_str(), nullptr, 0);
    if (handle == nullptr) {
        const DWORD error = GetLastError();
        throw ResourceNotAvailableException(Utilities::Tools::Text("Can't load library '", name, "': ", error));
    }
}
J4T_TRACE_FRAME

std::string LibraryLoaderImpl::GetLibraryPath()
try {
    std::vector<char> buffer(261, '\0');
    if (handle != nullptr) {
        const DWORD length = GetModuleFileNameA(static_cast<HMODULE>(handle), buffer.data(), 260);
        buffer[length] = '\0';
    }
    return buffer.data();
}
J4T_TRACE_FRAME

void* LibraryLoaderImpl::doResolve(std::string symbol)
try {
    if (handle == nullptr) {
        throw ResourceNotAvailableException("No module available.");
    }
    void* address = reinterpret_cast<void*>(GetProcAddress(static_cast<HMODULE>(handle), symbol.c_str()));
    symbol.clear();
    return address;
}
J4T_TRACE_FRAME

void LibraryLoaderImpl::UnloadLibrary()
{
    if (handle != nullptr) {
        FreeLibrary(static_cast<HMODULE>(handle));
        handle = nullptr;
    }
}

}  // namespace Kestrelon::Platform
