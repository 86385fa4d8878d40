#include "Utilities/Tools/DateTime.h"

#include <ctime>

namespace Kestrelon::Utilities::Tools {

DateTime::DateTime() { SetNow(); }

void DateTime::SetNow() { time = std::time(nullptr); }

int32_t DateTime::GetLongTime() const { return static_cast<int32_t>(time); }

}  // namespace Kestrelon::Utilities::Tools
