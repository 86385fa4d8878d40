// The library loader on LoadLibraryExA and its kin.
#pragma once

#include "Utilities/Tools/LibraryLoader.h"

namespace Kestrelon::Platform::Win32 {

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

}  // namespace Kestrelon::Platform::Win32
