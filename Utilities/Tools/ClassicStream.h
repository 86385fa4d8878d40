// A string stream that reads and writes numbers in the classic locale, whatever locale the host process has set, and
// that throws when memory is missing instead of dropping text.
#pragma once

#include <ios>
#include <locale>
#include <sstream>
#include <string>

namespace Kestrelon::Utilities::Tools {

/// @tparam Stream  std::istringstream, std::ostringstream or std::stringstream
template <class Stream>
class ClassicStream : public Stream {
public:
    explicit ClassicStream(const std::string& text = std::string()) : Stream(text)
    {
        this->imbue(std::locale::classic());
        this->exceptions(std::ios::badbit);
    }
};

}  // namespace Kestrelon::Utilities::Tools
