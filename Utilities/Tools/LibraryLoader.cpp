#include "Utilities/Tools/LibraryLoader.h"

#include <stdexcept>

namespace Kestrelon::Utilities::Tools {

SmartPointer<LibraryLoader::Impl> LibraryLoader::Impl::NewInstance(const std::string& name, int32_t location)
try {
    if (name.empty()) {
        throw std::invalid_argument("empty library name!");
    }
    return CreateLibraryLoaderImpl(name, location);
}
J4T_TRACE_FRAME

void LibraryLoader::Impl::ThrowIfNotLoadable(bool loaded, int32_t location)
{
    if (loaded) {
        throw Exceptions::RuntimeException("Library already loaded.");
    }
    if (location < 0 || location > 4) {
        throw Exceptions::ResourceNotAvailableException("Unknown location specified.");
    }
}

LibraryLoader::LibraryLoader(const std::string& name, int32_t location)
try : impl(Impl::NewInstance(name, location)) {
}
J4T_TRACE_FRAME

std::string LibraryLoader::GetLibraryPath()
try {
    return impl->GetLibraryPath();
}
J4T_TRACE_FRAME

void* LibraryLoader::doResolve(const std::string& symbol)
try {
    return impl->doResolve(symbol);
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::Utilities::Tools
