#include <gtest/gtest.h>

#include "Utilities/Tools/LibraryLoader.h"
#include "tests/support/Thrown.h"

namespace J4Test {
namespace {

using Kestrelon::Utilities::Tools::LibraryLoader;

struct SystemLibrary {
    std::string name;
    std::string symbol;
};

/// A library that every system of the kind has.
SystemLibrary AnyLibrary()
{
    for (const SystemLibrary& candidate : {SystemLibrary{"libm.so.6", "cos"}, SystemLibrary{"kernel32.dll", "Sleep"}}) {
        if (Thrown([&] { LibraryLoader(candidate.name, 0); }).empty()) {
            return candidate;
        }
    }
    return {"none", ""};
}

TEST(LibraryLoader, AllLocationsLoadTheSameFile)
{
    const SystemLibrary system = AnyLibrary();
    const std::string path = LibraryLoader(system.name, 0).GetLibraryPath();
    EXPECT_GT(path.size(), system.name.size());
    for (int32_t location = 0; location <= 4; ++location) {
        LibraryLoader loader(system.name, location);
        EXPECT_EQ(loader.GetLibraryPath(), path);
        EXPECT_NE(loader.doResolve(system.symbol), nullptr);
        EXPECT_EQ(loader.doResolve("NoSuchFunction"), nullptr);
    }
}

TEST(LibraryLoader, RefusesWhatItCanNotLoad)
{
    const std::string unknownLocation = "ResourceNotAvailableException: Unknown location specified.";
    EXPECT_EQ(Thrown([] { LibraryLoader("", 0); }), "InvalidArgumentException: empty library name!");
    EXPECT_EQ(Thrown([] { LibraryLoader("", 5); }), "InvalidArgumentException: empty library name!");
    EXPECT_EQ(Thrown([] { LibraryLoader(AnyLibrary().name, 5); }), unknownLocation);
    EXPECT_EQ(Thrown([] { LibraryLoader(AnyLibrary().name, -1); }), unknownLocation);
    const std::string text = Thrown([] { LibraryLoader("no-such-library.dll", 0); });
    EXPECT_EQ(text.rfind("ResourceNotAvailableException: Can't load library 'no-such-library.dll': 126", 0), 0u)
        << text;
}

}  // namespace
}  // namespace J4Test
