#include "Utilities/Tools/Clock.h"

#include <chrono>
#include <thread>

namespace Kestrelon::Utilities::Tools::Clock {

uint32_t GetTickCount()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return static_cast<uint32_t>(std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
}

void Sleep(uint32_t milliseconds) { std::this_thread::sleep_for(std::chrono::milliseconds(milliseconds)); }

}  // namespace Kestrelon::Utilities::Tools::Clock
