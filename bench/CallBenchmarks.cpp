// What a call through the library costs above the same call to the instrument's library, and what a
// connected table keeps in memory.

#include <dlfcn.h>
#include <malloc.h>

#include <array>

#include "bench/CountedNew.h"
#include "bench/SideBySide.h"
#include "c_sdk/include/j4tavla.h"
#include "simulator/world/Bench.h"

namespace {

using SpectrumFunction = int32_t (*)(float*, uint32_t);

/// The function of the instrument's library that is loaded already.
SpectrumFunction DirectGetSpectrum()
{
    void* library = dlopen(J4_GetOption("J4TJ4SDKPath"), RTLD_NOW | RTLD_NOLOAD);
    return library != nullptr ? reinterpret_cast<SpectrumFunction>(dlsym(library, "J4_GetSpectrum")) : nullptr;
}

/// Bytes that the process has from malloc.
size_t HeapInUse()
{
    const struct mallinfo2 info = mallinfo2();
    return info.uordblks + info.hblkhd;
}

// Runs first: it wants a process in which nothing is connected.
void MemoryAfterConnect(benchmark::State& state)
{
    J4Bench::Bench::Instance();
    const size_t before = HeapInUse();
    if (J4_IsTableConnected() != 0) {
        state.SkipWithError("no table");
        return;
    }
    const size_t after = HeapInUse();
    for (auto unused : state) {
        (void)unused;
    }
    state.counters["KiB_after_connect"] = static_cast<double>(after - before) / 1024.0;
    state.counters["KiB_aim"] = 1024.0;
}
BENCHMARK(MemoryAfterConnect)->Iterations(1);

void ForwardedGetSpectrum(benchmark::State& state)
{
    std::array<float, J4_SPECTRUM_LENGTH> spectrum{};
    if (J4_GoToHomePosition() != 0 || J4_Calibrate() != 0 || J4_TriggerMeasurement() != 0) {
        state.SkipWithError(J4_GetOption("LastError"));
        return;
    }
    const SpectrumFunction direct = DirectGetSpectrum();
    if (direct == nullptr || direct(spectrum.data(), 0) != 0 || J4_GetSpectrum(spectrum.data(), 0) != 0) {
        state.SkipWithError("no spectrum");
        return;
    }
    const long before = allocations;
    J4_GetSpectrum(spectrum.data(), 0);
    state.counters["allocations"] = static_cast<double>(allocations - before);
    SideBySide(
        state, 1000, "direct", [&] { benchmark::DoNotOptimize(direct(spectrum.data(), 0)); }, "forwarded",
        [&] { benchmark::DoNotOptimize(J4_GetSpectrum(spectrum.data(), 0)); });
}
BENCHMARK(ForwardedGetSpectrum)->UseManualTime();

}  // namespace
