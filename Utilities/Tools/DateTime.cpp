#include "Utilities/Tools/DateTime.h"

#include <ctime>

#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::Utilities::Tools {

DateTime::DateTime()
try {
    SetNow();
}
J4T_TRACE_FRAME

void DateTime::SetNow() { time = std::time(nullptr); }

int32_t DateTime::GetLongTime() const { return static_cast<int32_t>(time); }

}  // namespace Kestrelon::Utilities::Tools
