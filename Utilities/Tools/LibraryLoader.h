// Loads one shared library by file name and keeps it loaded for its own lifetime; its users see no type of
// the platform's loader.
#pragma once

#include <cstdint>
#include <string>

#include "Utilities/Tools/SmartPointer.h"

namespace Kestrelon::Utilities::Tools {

class LibraryLoader {
public:
    /// What loads and resolves, without a type of the platform's loader.
    class Impl {
    public:
        virtual ~Impl() = default;
        virtual std::string GetLibraryPath() = 0;
        /// Address of a symbol, null when the library lacks it.
        virtual void* doResolve(std::string symbol) = 0;

        /// @throws std::invalid_argument for an empty name, ResourceNotAvailableException when it can't be loaded
        static SmartPointer<Impl> NewInstance(const std::string& name, int32_t location);

        Impl() = default;
        Impl(const Impl&) = delete;
        Impl& operator=(const Impl&) = delete;
    };

    /// @param name      file name, found by the system's own search order
    /// @param location  0 to 4; all of them search alike
    LibraryLoader(const std::string& name, int32_t location);
    virtual ~LibraryLoader() = default;

    /// Full path of the loaded library.
    virtual std::string GetLibraryPath();

    /// Address of a symbol, null when the library lacks it.
    void* doResolve(const std::string& symbol);

private:
    SmartPointer<Impl> impl;
};

}  // namespace Kestrelon::Utilities::Tools
