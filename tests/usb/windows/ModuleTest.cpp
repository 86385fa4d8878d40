// What the shipped file says about itself.
#include <map>
#include <vector>

#include "tests/usb/windows/DriverStand.h"

namespace J4Test {
namespace {

TEST(ModuleTest, TellsItsVersion)
{
    const std::string file = ProgramFolder() + "j4tavla64.dll";
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
