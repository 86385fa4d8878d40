// The library's clock over the bench's virtual time: a pause lets the bench's time pass and returns at once,
// unless the bench's time scale asks for a real pace.
#include "Utilities/Tools/Clock.h"

#include "simulator/world/Bench.h"

namespace Kestrelon::Utilities::Tools::Clock {

uint32_t GetTickCount() { return static_cast<uint32_t>(J4Bench::Bench::Instance().Clock().Now() / 1000); }

void Sleep(uint32_t milliseconds) { J4Bench::Bench::Instance().Clock().Advance(int64_t{1000} * milliseconds); }

}  // namespace Kestrelon::Utilities::Tools::Clock
