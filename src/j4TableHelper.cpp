#include "src/j4TableHelper.h"

#include "Utilities/Exceptions/TraceFrame.h"
#include "src/j4Bridge.h"

namespace Kestrelon::DeviceDriver::J4T {

SavedOption::SavedOption(const std::string& key)
try : key(key), value(Library()->J4_GetOption(key)) {
}
J4T_TRACE_FRAME

SavedOption::~SavedOption() noexcept(false)
{
    AtEnd([this] { Library()->J4_SetOption(key, value); });
}

}  // namespace Kestrelon::DeviceDriver::J4T
