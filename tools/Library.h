// The table's library, found and loaded at run time: the one for real tables or its virtual variant.
#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "Utilities/Tools/LibraryLoader.h"
#include "tools/TableFunctions.h"

namespace J4Tool {

class Library {
public:
    /// @param isVirtual  the virtual variant, known by the bench that lies beside it
    /// @param path       file or folder to take it from. Empty: for real tables beside the program, in ../lib, and where
    ///                   the system looks; for the virtual variant beside the program, in virtual below it,
    ///                   ../lib/j4tavla64/virtual and ../virtual
    /// @throws ToolError
    Library(bool isVirtual, const std::filesystem::path& path);

    const TableFunctions& Functions() const { return functions; }

    /// Full path of the file.
    std::string Path() { return loader.GetLibraryPath(); }

    /// Whether it is the virtual variant, which --library may name too.
    bool IsVirtual() const { return foundVirtual; }

    /// A function of the bench, which lies beside the virtual variant; null when it lacks it.
    /// @throws std::exception when it can't be loaded
    void* BenchFunction(const char* name);

    /// The files that are tried, in this order.
    static std::vector<std::filesystem::path> Candidates(bool isVirtual, const std::filesystem::path& path,
                                                         const std::filesystem::path& programFolder);

private:
    template <class Function>
    void Resolve(Function& function, const char* name);

    std::optional<Kestrelon::Utilities::Tools::LibraryLoader> virtualInstrument;  // goes after the library
    std::optional<Kestrelon::Utilities::Tools::LibraryLoader> bench;
    Kestrelon::Utilities::Tools::LibraryLoader loader;
    bool foundVirtual = false;
    TableFunctions functions;
};

}  // namespace J4Tool
