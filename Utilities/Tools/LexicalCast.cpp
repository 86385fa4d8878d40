#include "Utilities/Tools/LexicalCast.h"

namespace Kestrelon::Utilities::Tools {

void ThrowLexicalCastFailed(const std::string& source, const char* sourceType, const char* targetType)
{
    throw std::invalid_argument("lexical_cast(): fail to convert '" + source + "' from " + sourceType + " to " +
                                targetType);
}

}  // namespace Kestrelon::Utilities::Tools
