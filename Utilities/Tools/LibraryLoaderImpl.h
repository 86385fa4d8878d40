// The library loader on the platform's own: what differs from platform to platform is in a source in the folder of
// each, beside this file.
#pragma once

#include <cstdint>
#include <string>

#include "Utilities/Tools/LibraryLoader.h"

namespace Kestrelon::Platform {

class LibraryLoaderImpl : public Utilities::Tools::LibraryLoader::Impl {
public:
    LibraryLoaderImpl(const std::string& name, int32_t location);
    ~LibraryLoaderImpl() override;

    std::string GetLibraryPath() override;
    void* doResolve(std::string symbol) override;

private:
    void LoadLibraryA(const std::string& name, int32_t location);
    /// Sets the handle by the system's own search order. @throws ResourceNotAvailableException
    void LookForLibrary(const std::string& name);
    void UnloadLibrary();

    void* handle = nullptr;  ///< null when nothing is loaded
};

}  // namespace Kestrelon::Platform
