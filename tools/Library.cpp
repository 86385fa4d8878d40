#include "tools/Library.h"

#include <algorithm>

#include "Utilities/Tools/FilePath.h"
#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::LibraryLoader;
using Kestrelon::Utilities::Tools::NameOf;
using Kestrelon::Utilities::Tools::PathOf;
using std::filesystem::path;

namespace {

constexpr const char* LibraryName = "j4tavla64";
constexpr const char* BenchName = "j4bench";  // lies beside the virtual variant only
constexpr const char* InstrumentName = "sorvane64";
constexpr int32_t AnyLocation = 0;

bool Exists(const path& file)
{
    std::error_code error;
    return std::filesystem::exists(file, error);
}

bool IsVirtualVariant(const path& file) { return Exists(file.parent_path() / Platform::LibraryFileName(BenchName)); }

LibraryLoader Load(bool isVirtual, const path& wanted)
{
    const std::vector<path> candidates = Library::Candidates(isVirtual, wanted, Platform::ProgramFolder());
    const auto usable = [&](const path& file) {
        return !file.has_parent_path() || (Exists(file) && (!wanted.empty() || isVirtual == IsVirtualVariant(file)));
    };
    const auto found = std::find_if(candidates.begin(), candidates.end(), usable);
    if (found == candidates.end()) {
        throw ToolError(ExitCode::Library,
                        std::string(isVirtual ? "the virtual variant of the library" : "the library") +
                            " was not found beside the program or in its library folders",
                        "Install it, or name the file with --library PATH.");
    }
    try {
        if (found->has_parent_path()) {
            Platform::AddLibraryFolder(std::filesystem::absolute(*found).parent_path());
        }
        return LibraryLoader(NameOf(*found), AnyLocation);
    } catch (const std::exception& error) {
        throw ToolError(ExitCode::Library, error.what(),
                        "Install the library, name the file with --library PATH, or work on the virtual table with "
                        "--virtual.");
    }
}

}  // namespace

std::vector<path> Library::Candidates(bool isVirtual, const path& wanted, const path& programFolder)
{
    const std::string file = Platform::LibraryFileName(LibraryName);
    if (!wanted.empty()) {
        std::error_code error;
        const path absolute = std::filesystem::absolute(wanted);
        return {std::filesystem::is_directory(wanted, error) ? absolute / file : absolute};
    }
    const path above = programFolder.parent_path();
    if (isVirtual) {
        return {programFolder / file, programFolder / "virtual" / file, above / "lib" / LibraryName / "virtual" / file,
                above / "virtual" / file};
    }
    return {programFolder / file, above / "lib" / file, file};
}

void* Library::BenchFunction(const char* name)
{
    bench.emplace(NameOf(PathOf(Path()).replace_filename(Platform::LibraryFileName(BenchName))), AnyLocation);
    return bench->doResolve(name);
}

template <class Function>
void Library::Resolve(Function& function, const char* name)
{
    function = reinterpret_cast<Function>(loader.doResolve(name));
    if (function == nullptr) {
        throw ToolError(ExitCode::Library, Path() + " has no function " + name,
                        "Install tool and library of the same version.");
    }
}

Library::Library(bool isVirtual, const path& wanted) : loader(Load(isVirtual, wanted))
{
    foundVirtual = IsVirtualVariant(PathOf(Path()));
    // Who asks for a table must not get a simulation because the system found that first.
    if (!isVirtual && wanted.empty() && foundVirtual) {
        throw ToolError(ExitCode::Library, "only the virtual variant of the library was found: " + Path(),
                        "Install the library for real tables, or say --virtual.");
    }
    // The virtual table needs the instrument of its own bench, not one that the system finds first.
    const path instrument = PathOf(Path()).replace_filename(Platform::LibraryFileName(InstrumentName));
    if (foundVirtual && Exists(instrument)) {
        virtualInstrument.emplace(NameOf(instrument), AnyLocation);
    }
    Resolve(functions.Calibrate, "J4_Calibrate");
    Resolve(functions.TriggerMeasurement, "J4_TriggerMeasurement");
    Resolve(functions.GetNumberOfAvailableSamples, "J4_GetNumberOfAvailableSamples");
    Resolve(functions.GetSpectrum, "J4_GetSpectrum");
    Resolve(functions.GetDensities, "J4_GetDensities");
    Resolve(functions.SetOption, "J4_SetOption");
    Resolve(functions.GetOption, "J4_GetOption");
    Resolve(functions.RegisterErrorHandler, "J4_RegisterErrorHandler");
    Resolve(functions.GetPosition, "J4_GetPosition");
    Resolve(functions.SetPosition, "J4_SetPosition");
    Resolve(functions.GoToHomePosition, "J4_GoToHomePosition");
    Resolve(functions.Scan, "J4_Scan");
    Resolve(functions.IsTableConnected, "J4_IsTableConnected");
    Resolve(functions.SynchronizeWhitebases, "J4_SynchronizeWhitebases");
    Resolve(functions.Private, "J4_Private");
}

}  // namespace J4Tool
