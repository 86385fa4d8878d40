// Programs of their own that use the shipped library over the driver, and what they leave behind.
#include <fstream>
#include <sstream>

#include "simulator/world/Bench.h"
#include "tests/simulator/ChartText.h"
#include "tests/support/CallJournal.h"
#include "tests/windows/DriverTest.h"

namespace J4Test {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

/// A program beside the shipped library.
class Program {
public:
    static std::string Folder()
    {
        const std::string folder = ProgramFolder();
        return folder.substr(0, folder.rfind('\\', folder.size() - 2) + 1) + "foreign\\";
    }

    /// The program doesn't run yet.
    explicit Program(const std::string& arguments) : outputFile(Folder() + "output.txt")
    {
        SECURITY_ATTRIBUTES inherited{sizeof(inherited), nullptr, TRUE};
        const HANDLE output = CreateFileA(outputFile.c_str(), GENERIC_WRITE, FILE_SHARE_READ, &inherited, CREATE_ALWAYS,
                                          FILE_ATTRIBUTE_NORMAL, nullptr);
        STARTUPINFOA start{};
        start.cb = sizeof(start);
        start.dwFlags = STARTF_USESTDHANDLES;
        start.hStdOutput = output;
        start.hStdError = output;
        std::string line = Folder() + arguments;
        const BOOL good = CreateProcessA(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_SUSPENDED, nullptr,
                                         Folder().c_str(), &start, &process);
        CloseHandle(output);
        EXPECT_TRUE(good) << line << ": error " << GetLastError();
    }

    ~Program()
    {
        if (WaitForSingleObject(process.hProcess, 0) != WAIT_OBJECT_0) {
            Kill();
        }
        CloseHandle(process.hThread);
        CloseHandle(process.hProcess);
    }

    Program(const Program&) = delete;
    Program& operator=(const Program&) = delete;

    void Run() { ResumeThread(process.hThread); }
    void Kill() { TerminateProcess(process.hProcess, 99); }

    /// Loads a library into the program before it runs.
    void Inject(const std::string& file)
    {
        void* name = VirtualAllocEx(process.hProcess, nullptr, file.size() + 1, MEM_COMMIT, PAGE_READWRITE);
        WriteProcessMemory(process.hProcess, name, file.c_str(), file.size() + 1, nullptr);
        const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
            reinterpret_cast<void*>(GetProcAddress(GetModuleHandleA("kernel32.dll"), "LoadLibraryA")));
        const HANDLE thread = CreateRemoteThread(process.hProcess, nullptr, 0, load, name, 0, nullptr);
        ASSERT_NE(thread, nullptr);
        DWORD result = 0;
        EXPECT_EQ(WaitForSingleObject(thread, Patience), WAIT_OBJECT_0);
        EXPECT_TRUE(GetExitCodeThread(thread, &result));
        EXPECT_NE(result, 0u) << file << " was not loaded";
        CloseHandle(thread);
    }

    static constexpr DWORD NotEnded = 9999;

    /// The exit code; NotEnded when the program does not end.
    DWORD ExitCode()
    {
        DWORD code = NotEnded;
        if (WaitForSingleObject(process.hProcess, Patience) == WAIT_OBJECT_0) {
            GetExitCodeProcess(process.hProcess, &code);
        }
        return code;
    }

    std::string Output() const
    {
        std::ostringstream text;
        text << std::ifstream(outputFile).rdbuf();
        return text.str();
    }

private:
    static constexpr DWORD Patience = 30000;  ///< ms

    std::string outputFile;
    PROCESS_INFORMATION process{};
};

struct ProcessTest : OverDriver<testing::Test> {};

TEST_F(ProcessTest, AProgramThatJustEndsLeavesTheTableFree)
{
    J4Bench::Bench::Instance().GetJournal().Enable(true);
    Program program("foreign.exe");
    program.Run();
    EXPECT_EQ(program.ExitCode(), 0u) << program.Output();
    EXPECT_TRUE(World().WaitUntilClosed());
    const Lines lines =
        LinesThatBegin(ShortLines(J4Bench::Bench::Instance().GetJournal().Take()), {"table s", "table f"});
    EXPECT_THAT(lines, ElementsAre("table s1", "table f1", "table f2", "table s0", "table f0", "table f3"))
        << "hold, foil and the foil's button, as they were set and then left";
}

TEST_F(ProcessTest, AProgramThatIsKilledLeavesTheDriverUsable)
{
    Relay::Answer silent;
    silent.isSilent = true;
    World().Inject(DriverRead, silent, 3);
    const uint64_t before = Relay::Faults();
    Program program("foreign.exe");
    program.Run();
    for (int i = 0; i < 1000 && Relay::Faults() == before; ++i) {
        Sleep(10);
    }
    ASSERT_GT(Relay::Faults(), before) << "it never read";
    program.Kill();
    EXPECT_EQ(program.ExitCode(), 99u);
    EXPECT_TRUE(World().WaitUntilClosed());

    Program next("foreign.exe");
    next.Run();
    EXPECT_EQ(next.ExitCode(), 0u) << next.Output();
}

TEST_F(ProcessTest, TheExampleScansItsChart)
{
    const std::string chart = Program::Folder() + "example.cgats";
    std::vector<J4Bench::FlatPatch> patches;
    for (const double y : {200.0, 230.0}) {
        for (int i = 0; i < 4; ++i) {
            patches.push_back({"patch", 210.0 + 20.0 * i, y, 20.0, 20.0, i % 2 == 0 ? 0.2 + 0.05 * i : 0.6});
        }
    }
    std::ofstream(chart) << J4Bench::ChartText(patches);
    const WithoutWorld alone;
    const HANDLE ready = CreateEventA(nullptr, TRUE, FALSE, Relay::readyEvent);
    Program program("scan_chart.exe -o Simulator.ChartFile=example.cgats example.cgats measured.cgats");
    program.Inject(Program::Folder() + "relay_inside.dll");
    EXPECT_EQ(WaitForSingleObject(ready, 10000), WAIT_OBJECT_0);
    CloseHandle(ready);
    program.Run();
    // The relay is a thread of the program itself here. Where the system ends that thread before the library has
    // released the table, nobody answers the release any more and the program has to be killed; all that it measured
    // is told by then. How a program ends with the table in use, others of these tests prove.
    EXPECT_THAT(program.ExitCode(), testing::AnyOf(0u, DWORD{Program::NotEnded})) << program.Output();
    EXPECT_THAT(program.Output(), HasSubstr("8 patches, colour difference (CIE 1976): mean 0.0000, maximum 0.0000"));
}

}  // namespace
}  // namespace J4Test
