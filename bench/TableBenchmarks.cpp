// Flash reads against the time that their bytes need on the wire, and the processor's time between the
// start of a scan's motion and the trigger of the instrument.

#include <dlfcn.h>
#include <time.h>

#include <cstring>

#include <benchmark/benchmark.h>
#include "Utilities/Tools/LibraryLoaderImpl.h"
#include "c_sdk/include/j4tavla.h"
#include "simulator/world/Bench.h"
#include "src/Communication/j4TableComManager.h"

namespace {

using Kestrelon::DeviceDriver::J4T::Communication::j4TableComManager;

/// Microseconds that one character needs: 10 bits at 3,000,000 / 52 baud.
constexpr double CharacterTime = 10.0 * 52.0 / 3.0;
constexpr int64_t FlashAddress = 0x2000;

double ProcessorMicroseconds()
{
    timespec time{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e6 + static_cast<double>(time.tv_nsec) / 1e3;
}

/// Moments of the scan in hand, as the instrument's library sees them: the first call after the table
/// accepted the motion, and the trigger.
double motionAccepted = 0.0;
double betweenAcceptanceAndTrigger = 0.0;

using GetOption = const char* (*)(const char*);
using TriggerCountedScan = int32_t (*)(uint32_t);
GetOption libraryGetOption = nullptr;
TriggerCountedScan libraryTriggerCountedScan = nullptr;

const char* ObservedGetOption(const char* key)
{
    if (std::strcmp(key, "IntegrationTime") == 0) {
        motionAccepted = ProcessorMicroseconds();
    }
    return libraryGetOption(key);
}

int32_t ObservedTriggerCountedScan(uint32_t count)
{
    betweenAcceptanceAndTrigger = ProcessorMicroseconds() - motionAccepted;
    return libraryTriggerCountedScan(count);
}

void FlashReadInVirtualTime(benchmark::State& state)
{
    const uint32_t bytes = static_cast<uint32_t>(state.range(0));
    j4TableComManager manager(0);
    J4Bench::BenchClock& clock = J4Bench::Bench::Instance().Clock();
    std::vector<uint8_t> block;
    int64_t elapsed = 0;
    for (auto unused : state) {
        (void)unused;
        const int64_t start = clock.Now();
        manager.GetFlash()->ReadBigMemory(block, FlashAddress, bytes, 2);
        elapsed = clock.Now() - start;
    }
    // Each exchange carries a request of 18 characters, and 7 characters around the data of its reply.
    const uint32_t exchanges = (bytes + 255) / 256;
    const double characters = 2.0 * bytes + exchanges * (18.0 + 8.0);
    state.counters["virtual_ms"] = static_cast<double>(elapsed) / 1000.0;
    state.counters["ratio_to_wire"] = static_cast<double>(elapsed) / (characters * CharacterTime);
}
BENCHMARK(FlashReadInVirtualTime)->Arg(360)->Arg(8192)->Iterations(3);

void AcceptanceToTrigger(benchmark::State& state)
{
    if (J4_GoToHomePosition() != 0 || J4_Calibrate() != 0) {
        state.SkipWithError(J4_GetOption("LastError"));
        return;
    }
    double sum = 0.0;
    for (auto unused : state) {
        (void)unused;
        if (J4_Scan(200.0f, 250.0f, 400.0f, 250.0f) != 0) {
            state.SkipWithError(J4_GetOption("LastError"));
            return;
        }
        sum += betweenAcceptanceAndTrigger;
    }
    state.counters["processor_us_with_simulator"] = sum / static_cast<double>(state.iterations());
    state.counters["us_aim"] = 100.0;
}
BENCHMARK(AcceptanceToTrigger)->Iterations(50);

}  // namespace

/// The loader of the stand-in for the instrument's library, with two of its functions observed.
namespace Kestrelon::Platform {

void LibraryLoaderImpl::LookForLibrary(const std::string&) { handle = dlopen("libsorvane64.so", RTLD_NOW); }

std::string LibraryLoaderImpl::GetLibraryPath() { return "libsorvane64.so"; }

void* LibraryLoaderImpl::doResolve(std::string symbol)
{
    void* address = dlsym(handle, symbol.c_str());
    if (symbol == "J4_GetOption") {
        libraryGetOption = reinterpret_cast<GetOption>(address);
        return reinterpret_cast<void*>(ObservedGetOption);
    }
    if (symbol == "J4_TriggerCountedScan") {
        libraryTriggerCountedScan = reinterpret_cast<TriggerCountedScan>(address);
        return reinterpret_cast<void*>(ObservedTriggerCountedScan);
    }
    return address;
}

void LibraryLoaderImpl::UnloadLibrary() { dlclose(handle); }

}  // namespace Kestrelon::Platform
