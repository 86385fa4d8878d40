#include "Utilities/Tools/LibraryLoaderImpl.h"

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::Platform {

using Utilities::Exceptions::ResourceNotAvailableException;
using Utilities::Exceptions::RuntimeException;

LibraryLoaderImpl::LibraryLoaderImpl(const std::string& name, int32_t location)
try {
    LoadLibraryA(name, location);
}
J4T_TRACE_FRAME

LibraryLoaderImpl::~LibraryLoaderImpl() { UnloadLibrary(); }

void LibraryLoaderImpl::LoadLibraryA(const std::string& name, int32_t location)
try {
    if (handle != nullptr) {
        throw RuntimeException("Library already loaded.");
    }
    if (location < 0 || location > 4) {
        throw ResourceNotAvailableException("Unknown location specified.");
    }
    LookForLibrary(name);
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::Platform
