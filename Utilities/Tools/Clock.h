// The link-time seam of time: a millisecond tick and a pause. Each platform folder defines both functions.
#pragma once

#include <cstdint>

namespace Kestrelon::Utilities::Tools::Clock {

/// Milliseconds since some start; wraps at 32 bits.
uint32_t GetTickCount();

/// Blocks the calling thread.
void Sleep(uint32_t milliseconds);

}  // namespace Kestrelon::Utilities::Tools::Clock
