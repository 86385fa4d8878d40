#include "Utilities/Tools/Clock.h"

#include <windows.h>

#include <cstdint>

namespace Kestrelon::Utilities::Tools::Clock {

uint32_t GetTickCount() { return ::GetTickCount(); }

void Sleep(uint32_t milliseconds) { ::Sleep(milliseconds); }

}  // namespace Kestrelon::Utilities::Tools::Clock
