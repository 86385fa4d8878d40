#include "Utilities/Tools/LibraryLoader.h"

#include <stdexcept>

#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/LibraryLoaderImpl.h"

namespace Kestrelon::Utilities::Tools {

SmartPointer<LibraryLoader::Impl> LibraryLoader::Impl::NewInstance(const std::string& name, int32_t location)
try {
    if (name.empty()) {
        throw std::invalid_argument("empty library name!");
    }
    return SmartPointer<Impl>(new Platform::LibraryLoaderImpl(name, location));
}
J4T_TRACE_FRAME

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
