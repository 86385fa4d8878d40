// Numbers to and from decimal text through a string stream, in the classic locale whatever locale the host
// process has set.
#pragma once

#include <cstdint>
#include <sstream>
#include <stdexcept>
#include <string>
#include <typeinfo>

#include "Utilities/Tools/ClassicStream.h"

namespace Kestrelon::Utilities::Tools {

/// Throws std::invalid_argument with the text of a failed conversion.
[[noreturn]] void ThrowLexicalCastFailed(const std::string& source, const char* sourceType, const char* targetType);

namespace Internal {

template <class Target, class Source>
Target LexicalCast(const Source& source, bool wholeText)
{
    ClassicStream<std::stringstream> stream;
    stream << source;
    Target target{};
    stream >> target;
    if (stream.fail() || (wholeText && stream.peek() != std::stringstream::traits_type::eof())) {
        ThrowLexicalCastFailed(stream.str(), typeid(Source).name(), typeid(Target).name());
    }
    return target;
}

}  // namespace Internal

/// Converts what a person typed: text left over behind a number is no error ("12abc" gives 12).
/// @throws std::invalid_argument when the text is not a number of the target's range
template <class Target, class Source>
Target lexical_cast(const Source& source)
{
    return Internal::LexicalCast<Target>(source, false);
}

/// Converts what the instrument's library answered: the whole text must be the number.
/// @throws std::invalid_argument as lexical_cast, and for text left over
template <class Target, class Source>
Target strict_lexical_cast(const Source& source)
{
    return Internal::LexicalCast<Target>(source, true);
}

}  // namespace Kestrelon::Utilities::Tools
