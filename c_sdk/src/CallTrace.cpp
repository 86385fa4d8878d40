#include "c_sdk/src/CallTrace.h"

namespace Kestrelon::DeviceDriver::J4T::CallTrace {

// Nobody listens. Archived, so that a variant with a listener links its own functions instead.
void Begin(const char*, const ExportParameters&) noexcept {}

void EndWithStatus(const char*, int32_t) noexcept {}

void End(const char*, int64_t) noexcept {}

void End(const char*, const char*) noexcept {}

}  // namespace Kestrelon::DeviceDriver::J4T::CallTrace
