// Programs of their own that use the shipped library over the driver, and what they leave behind.
#include <process.h>

#include <fstream>

#include "simulator/world/Bench.h"
#include "tests/support/ChartText.h"
#include "tests/usb/windows/DriverStand.h"

namespace J4Test {
namespace {

constexpr DWORD Patience = 30000;  ///< ms
constexpr DWORD Killed = 99;

/// A program of the test program's folder.
class Program {
public:
    template <class... Arguments>
    explicit Program(const std::string& name, Arguments... arguments)
        : process(reinterpret_cast<HANDLE>(
              _spawnl(_P_NOWAIT, (ProgramFolder() + name).c_str(), name.c_str(), arguments..., nullptr)))
    {}
    ~Program() { CloseHandle(process); }
    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Kill() { TerminateProcess(process, Killed); }

    /// Waits for the end; a program that does not end is killed.
    DWORD ExitCode()
    {
        DWORD code = 0;
        if (WaitForSingleObject(process, Patience) != WAIT_OBJECT_0) {
            ADD_FAILURE() << "the program hangs";
            Kill();
        }
        GetExitCodeProcess(process, &code);
        return code;
    }

private:
    HANDLE process;
};

struct ProcessTest : OverDriver<OnStand<testing::Test>> {
    void SetUp() override
    {
        OverDriver::SetUp();
        J4Bench::Bench::Instance().Reset();
    }
};

TEST_F(ProcessTest, AProgramLeavesTheTableFree)
{
    for (const char* const ending : {"leave", "unload"}) {
        EXPECT_EQ(Program("foreign.exe", ending).ExitCode(), 0u) << ending;
        EXPECT_THAT(Stand().Held(), testing::IsEmpty());
        Lines lines = LinesThatBegin(table->TakeRecord(), {"out ;s", "out ;f"});
        lines.resize(6);
        EXPECT_THAT(lines,
                    testing::ElementsAre("out ;s121", "out ;f12e", "out ;f22d", "out ;s022", "out ;f02f", "out ;f32c"))
            << "hold, foil and the foil's button, as they were set and then left";
    }
}

TEST_F(ProcessTest, AProgramThatIsKilledLeavesTheDriverUsable)
{
    TheRelay().Inject(DriverRead, {.isSilent = true}, 3);
    Program program("foreign.exe", "leave");
    for (DWORD waited = 0; waited < Patience && TheRelay().Left() > 0; waited += 10) {
        Sleep(10);
    }
    ASSERT_EQ(TheRelay().Left(), 0u) << "it never read";
    program.Kill();
    EXPECT_EQ(program.ExitCode(), Killed);
    EXPECT_THAT(Stand().Held(), testing::IsEmpty());
    EXPECT_EQ(Program("foreign.exe", "leave").ExitCode(), 0u);
}

TEST_F(ProcessTest, TheExampleScansItsChartAndEnds)
{
    std::vector<J4Test::FlatPatch> patches;
    for (const double y : {200.0, 230.0}) {
        for (int i = 0; i < 4; ++i) {
            patches.push_back({"patch", 210.0 + 20.0 * i, y, 20.0, 20.0, i % 2 == 0 ? 0.2 + 0.05 * i : 0.6});
        }
    }
    std::ofstream("example.cgats") << J4Test::ChartText(patches);
    const HANDLE ready = CreateEventA(nullptr, TRUE, FALSE, relayReady);
    auto& relay = DriverStand::Instance().relay;
    relay.reset();
    Program program("example_with_relay.exe", "-o", "Simulator.ChartFile=example.cgats", "example.cgats",
                    "measured.cgats");
    EXPECT_EQ(WaitForSingleObject(ready, Patience), WAIT_OBJECT_0);
    CloseHandle(ready);
    relay.emplace();  // takes over when the program's own has ended
    EXPECT_EQ(program.ExitCode(), 0u) << "the spectra are the chart's, and the program ended by itself";
}

}  // namespace
}  // namespace J4Test
