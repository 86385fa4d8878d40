// The library loader on dlopen. A Windows file name is looked for under the platform's own: "name.dll" as
// "libname.so".
#pragma once

#include "Utilities/Tools/LibraryLoader.h"

namespace Kestrelon::Platform::Posix {

class LibraryLoaderImpl : public Utilities::Tools::LibraryLoader::Impl {
public:
    LibraryLoaderImpl(const std::string& name, int32_t location);
    ~LibraryLoaderImpl() override;

    std::string GetLibraryPath() override;
    void* doResolve(std::string symbol) override;

private:
    void LoadLibraryA(const std::string& name, int32_t location);
    void LookForLibrary(const std::string& name);
    void UnloadLibrary();

    void* handle = nullptr;
};

}  // namespace Kestrelon::Platform::Posix
