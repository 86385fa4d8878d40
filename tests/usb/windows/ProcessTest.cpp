// A program of its own that uses the shipped library over the driver, and what it leaves behind.
#include <process.h>

#include "simulator/world/Bench.h"
#include "tests/usb/windows/DriverStand.h"

namespace J4Test {
namespace {

using ProcessTest = OverDriver<OnStand<testing::Test>>;

TEST_F(ProcessTest, AProgramLeavesTheTableFree)
{
    constexpr DWORD patience = 30000;  // ms
    J4Bench::Bench::Instance().Reset();
    const std::string program = ProgramFolder() + "foreign.exe";
    for (const char* const ending : {"leave", "unload"}) {
        const auto process =
            reinterpret_cast<HANDLE>(_spawnl(_P_NOWAIT, program.c_str(), program.c_str(), ending, nullptr));
        EXPECT_EQ(WaitForSingleObject(process, patience), WAIT_OBJECT_0) << "the program hangs";
        DWORD code = 0;
        EXPECT_TRUE(GetExitCodeProcess(process, &code));
        EXPECT_EQ(code, 0u) << ending;
        TerminateProcess(process, code);
        CloseHandle(process);
        EXPECT_THAT(Stand().Held(), testing::IsEmpty());
        Lines lines = LinesThatBegin(table->TakeRecord(), {"out ;s", "out ;f"});
        lines.resize(6);
        EXPECT_THAT(lines,
                    testing::ElementsAre("out ;s121", "out ;f12e", "out ;f22d", "out ;s022", "out ;f02f", "out ;f32c"))
            << "hold, foil and the foil's button, as they were set and then left";
    }
}

}  // namespace
}  // namespace J4Test
