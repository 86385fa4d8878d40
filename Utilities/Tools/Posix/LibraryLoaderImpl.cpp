#include "Utilities/Tools/LibraryLoaderImpl.h"

#include <dlfcn.h>
#include <link.h>

#include <filesystem>
#include <system_error>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::Platform {

using Utilities::Exceptions::ResourceNotAvailableException;

namespace {

/// The number that Windows gives for a library that is not found or can't be loaded, so that the text begins alike.
constexpr const char* ModuleNotFound = "126";

std::string PlatformFileName(const std::string& name)
{
    const std::string windowsEnding = ".dll";
    if (name.size() > windowsEnding.size() && name.ends_with(windowsEnding)) {
        return "lib" + name.substr(0, name.size() - windowsEnding.size()) + ".so";
    }
    return name;
}

}  // namespace

void LibraryLoaderImpl::LookForLibrary(const std::string& name)
try {
    handle = dlopen(PlatformFileName(name).c_str(), RTLD_NOW | RTLD_LOCAL);
    if (handle == nullptr) {
        const char* reason = dlerror();
        throw ResourceNotAvailableException("Can't load library '" + name + "': " + ModuleNotFound + " (" +
                                            (reason != nullptr ? reason : "unknown reason") + ")");
    }
}
J4T_TRACE_FRAME

std::string LibraryLoaderImpl::GetLibraryPath()
try {
    link_map* map = nullptr;
    if (handle == nullptr || dlinfo(handle, RTLD_DI_LINKMAP, &map) != 0) {
        return std::string();
    }
    // The name is relative where the search path was.
    std::error_code error;
    const std::filesystem::path path = std::filesystem::canonical(map->l_name, error);
    return error ? std::string(map->l_name) : path.string();
}
J4T_TRACE_FRAME

void* LibraryLoaderImpl::doResolve(std::string symbol)
try {
    if (handle == nullptr) {
        throw ResourceNotAvailableException("No module available.");
    }
    void* address = dlsym(handle, symbol.c_str());
    symbol.clear();
    return address;
}
J4T_TRACE_FRAME

void LibraryLoaderImpl::UnloadLibrary()
{
    if (handle != nullptr) {
        dlclose(handle);
        handle = nullptr;
    }
}

}  // namespace Kestrelon::Platform
