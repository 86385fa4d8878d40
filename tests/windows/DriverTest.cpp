#include "tests/windows/DriverTest.h"

#include <cstdio>
#include <optional>

#include "simulator/world/Bench.h"

namespace J4Test {

namespace {

std::optional<KernelDriver> driver;
std::optional<Relay> world;

struct DriverEnvironment : testing::Environment {
    void SetUp() override
    {
        driver.emplace(ProgramFolder() + "j4benchusb.sys");
        world.emplace();
    }

    void TearDown() override
    {
        std::printf("%llu driver requests tried, %llu faults injected\n",
                    static_cast<unsigned long long>(Relay::Requests()),
                    static_cast<unsigned long long>(Relay::Faults()));
        world.reset();
        driver.reset();
    }
};

const auto* const environment = testing::AddGlobalTestEnvironment(new DriverEnvironment);

}  // namespace

std::string ProgramFolder()
{
    char path[MAX_PATH] = {};
    GetModuleFileNameA(nullptr, path, sizeof(path));
    const std::string name = path;
    return name.substr(0, name.rfind('\\') + 1);
}

KernelDriver& Driver() { return *driver; }

Relay& World() { return *world; }

WithoutWorld::WithoutWorld() { world.reset(); }

WithoutWorld::~WithoutWorld() { world.emplace(); }

void StartWorld()
{
    J4Bench::Bench::Instance().Reset();
    Driver().UnplugAll();
    Driver().Plug(0);
    World().Reset();
}

}  // namespace J4Test
