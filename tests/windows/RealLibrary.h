// The shipped library for the real table, loaded by its full path. While one of these exists, the functions
// of j4tavla.h in this program are those of the loaded library.
#pragma once

#include <windows.h>

#include <string>

namespace J4Test {

class RealLibrary {
public:
    /// @throws std::runtime_error when the library can't be loaded
    RealLibrary();
    ~RealLibrary();
    RealLibrary(const RealLibrary&) = delete;
    RealLibrary& operator=(const RealLibrary&) = delete;

    static std::string File();
    HMODULE Module() const { return module; }

private:
    HMODULE module;
};

}  // namespace J4Test
