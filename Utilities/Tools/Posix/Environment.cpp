#include "Utilities/Tools/Environment.h"

#include <cstdlib>

namespace Kestrelon::Utilities::Tools {

std::string EnvironmentText(const char* name)
{
    const char* const text = std::getenv(name);
    return text == nullptr ? std::string() : std::string(text);
}

}  // namespace Kestrelon::Utilities::Tools
