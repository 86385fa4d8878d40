// The link-time seam of the application's calls: who is told of each. The virtual variant has them in its bench's trace; in
// the others nobody listens.
#pragma once

#include <cstdint>

#include "c_sdk/src/ExportParameters.h"

namespace Kestrelon::DeviceDriver::J4T::CallTrace {

/// An exported function was called; parameters has what it was given, as far as the frame knows it.
void Begin(const char* function, const ExportParameters& parameters) noexcept;

/// It ends, with a status.
void EndWithStatus(const char* function, int32_t status) noexcept;

/// It ends, and gives what is no status.
void End(const char* function, int64_t result) noexcept;
void End(const char* function, const char* result) noexcept;

}  // namespace Kestrelon::DeviceDriver::J4T::CallTrace
