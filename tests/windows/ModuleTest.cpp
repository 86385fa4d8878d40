// The shipped file itself: what it exports and imports, how it may be loaded, and what it says about itself.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tests/windows/RealLibrary.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::IsSupersetOf;

const std::map<unsigned, std::string> functions = {
    {4, "J4_Calibrate"},
    {5, "J4_TriggerMeasurement"},
    {6, "J4_GetNumberOfAvailableSamples"},
    {7, "J4_GetSpectrum"},
    {8, "J4_GetTriStimulus"},
    {9, "J4_GetDensity"},
    {10, "J4_SetSubstrate"},
    {11, "J4_SetOption"},
    {12, "J4_GetOption"},
    {13, "J4_KeyPressed"},
    {14, "J4_IsConnected"},
    {15, "J4_GetDensities"},
    {16, "J4_TriggerCountedScan"},
    {17, "J4_RegisterErrorHandler"},
    {18, "J4_RegisterDeviceMessageHandler"},
    {19, "J4_GetPosition"},
    {20, "J4_SetPosition"},
    {21, "J4_GoToHomePosition"},
    {22, "J4_Scan"},
    {23, "J4_IsTableConnected"},
    {24, "J4_SynchronizeWhitebases"},
    {25, "J4_Private"},
};

struct ModuleTest : testing::Test {
    template <class Type>
    const Type* At(DWORD offset) const
    {
        return reinterpret_cast<const Type*>(reinterpret_cast<const uint8_t*>(library.Module()) + offset);
    }

    const IMAGE_OPTIONAL_HEADER64& Header() const
    {
        return At<IMAGE_NT_HEADERS64>(static_cast<DWORD>(At<IMAGE_DOS_HEADER>(0)->e_lfanew))->OptionalHeader;
    }

    const IMAGE_DATA_DIRECTORY& Directory(unsigned number) const { return Header().DataDirectory[number]; }

    /// Functions that the module imports, by lower-case library name.
    std::map<std::string, std::set<std::string>> Imports() const
    {
        std::map<std::string, std::set<std::string>> found;
        const auto* library = At<IMAGE_IMPORT_DESCRIPTOR>(Directory(IMAGE_DIRECTORY_ENTRY_IMPORT).VirtualAddress);
        for (; library->Name != 0; ++library) {
            std::string name = At<char>(library->Name);
            std::transform(name.begin(), name.end(), name.begin(), [](unsigned char c) { return std::tolower(c); });
            for (const auto* thunk = At<IMAGE_THUNK_DATA64>(library->OriginalFirstThunk); thunk->u1.AddressOfData != 0;
                 ++thunk) {
                found[name].insert(At<IMAGE_IMPORT_BY_NAME>(static_cast<DWORD>(thunk->u1.AddressOfData))->Name);
            }
        }
        return found;
    }

    RealLibrary library;
};

TEST_F(ModuleTest, ExportsItsFunctionsByNameAndOrdinalAndNothingElse)
{
    const auto* exports = At<IMAGE_EXPORT_DIRECTORY>(Directory(IMAGE_DIRECTORY_ENTRY_EXPORT).VirtualAddress);
    EXPECT_EQ(exports->NumberOfFunctions, functions.size()) << "none without a name";
    std::map<unsigned, std::string> found;
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        const unsigned ordinal = exports->Base + At<WORD>(exports->AddressOfNameOrdinals)[i];
        found[ordinal] = At<char>(At<DWORD>(exports->AddressOfNames)[i]);
    }
    EXPECT_EQ(found, functions);
    for (const auto& [ordinal, name] : functions) {
        const FARPROC byName = GetProcAddress(library.Module(), name.c_str());
        EXPECT_NE(byName, nullptr) << name;
        EXPECT_EQ(GetProcAddress(library.Module(), MAKEINTRESOURCEA(ordinal)), byName) << name;
    }
    EXPECT_EQ(GetProcAddress(library.Module(), MAKEINTRESOURCEA(3)), nullptr);
    EXPECT_EQ(GetProcAddress(library.Module(), MAKEINTRESOURCEA(26)), nullptr);
}

TEST_F(ModuleTest, ImportsTheSystemAndItsRunTimeAlone)
{
    std::vector<std::string> names;
    for (const auto& [name, imported] : Imports()) {
        names.push_back(name);
    }
    EXPECT_THAT(names, ElementsAre("kernel32.dll", "msvcrt.dll"));
    EXPECT_EQ(Directory(IMAGE_DIRECTORY_ENTRY_DELAY_IMPORT).Size, 0u);
    // What tools that watch the import table can see of the traffic with the driver.
    EXPECT_THAT(
        Imports()["kernel32.dll"],
        IsSupersetOf({"CreateFileA", "CloseHandle", "DeviceIoControl", "ReadFile", "WriteFile", "GetOverlappedResult",
                      "CancelIo", "CreateEventA", "WaitForMultipleObjects", "GetTickCount", "Sleep", "LoadLibraryA",
                      "LoadLibraryExA", "GetProcAddress", "FreeLibrary", "GetModuleFileNameA"}));
}

TEST_F(ModuleTest, CanBeLoadedAnywhereAndExecutesNoData)
{
    const WORD wanted = IMAGE_DLLCHARACTERISTICS_HIGH_ENTROPY_VA | IMAGE_DLLCHARACTERISTICS_DYNAMIC_BASE |
                        IMAGE_DLLCHARACTERISTICS_NX_COMPAT;
    EXPECT_EQ(Header().DllCharacteristics & wanted, wanted);
    EXPECT_GT(Directory(IMAGE_DIRECTORY_ENTRY_BASERELOC).Size, 0u);
}

TEST_F(ModuleTest, TellsItsVersion)
{
    const std::string file = RealLibrary::File();
    std::vector<char> info(GetFileVersionInfoSizeA(file.c_str(), nullptr));
    ASSERT_FALSE(info.empty());
    ASSERT_TRUE(GetFileVersionInfoA(file.c_str(), 0, static_cast<DWORD>(info.size()), info.data()));
    VS_FIXEDFILEINFO* fixed = nullptr;
    UINT size = 0;
    ASSERT_TRUE(VerQueryValueA(info.data(), "\\", reinterpret_cast<void**>(&fixed), &size));
    for (const auto& [high, low] : {std::pair(fixed->dwFileVersionMS, fixed->dwFileVersionLS),
                                    std::pair(fixed->dwProductVersionMS, fixed->dwProductVersionLS)}) {
        EXPECT_EQ(high, 0x00010001u);
        EXPECT_EQ(low, 0x00040068u);
    }
    for (const auto& [name, text] :
         std::map<std::string, std::string>{{"CompanyName", "Kestrelon"},
                                            {"FileDescription", "J4 Tavla scanning table SDK"},
                                            {"FileVersion", "1.1.4.104"},
                                            {"InternalName", "j4tavla64"},
                                            {"OriginalFilename", "j4tavla64.dll"},
                                            {"ProductName", "J4 Tavla SDK"},
                                            {"ProductVersion", "1.1.4.104"}}) {
        char* value = nullptr;
        ASSERT_TRUE(VerQueryValueA(info.data(), ("\\StringFileInfo\\040904B0\\" + name).c_str(),
                                   reinterpret_cast<void**>(&value), &size))
            << name;
        EXPECT_EQ(value, text) << name;
    }
}

}  // namespace
}  // namespace J4Test
