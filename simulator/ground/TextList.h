// Lists as texts: words with a separator between them.
#pragma once

#include <string>
#include <string_view>

namespace J4Bench {

/// Adds a word to a list; the first word of all stands without a separator before it.
inline void AppendToList(std::string& list, std::string_view word, char separator)
{
    if (!list.empty()) {
        list += separator;
    }
    list += word;
}

}  // namespace J4Bench
