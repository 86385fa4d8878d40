// The process's environment, in UTF-8 on every platform. Each platform folder defines the function.
#pragma once

#include <string>

namespace Kestrelon::Utilities::Tools {

/// @param name  ASCII
/// @return the variable's text as it is now; empty when it is not set
std::string EnvironmentText(const char* name);

}  // namespace Kestrelon::Utilities::Tools
