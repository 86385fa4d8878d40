#include "tests/support/ScriptedClock.h"

#include "Utilities/Tools/Clock.h"

namespace Kestrelon::Utilities::Tools::Clock {

using J4Test::ScriptedClock;

uint32_t GetTickCount() { return ScriptedClock::now; }

void Sleep(uint32_t milliseconds)
{
    ScriptedClock::sleeps.push_back(milliseconds);
    ScriptedClock::Advance(milliseconds);
}

}  // namespace Kestrelon::Utilities::Tools::Clock
