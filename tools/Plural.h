// Counted things for people.
#pragma once

#include <cstddef>
#include <string>

namespace J4Tool {

/// For instance "1 row", "29 rows", "0 patches".
inline std::string Plural(size_t count, const std::string& one)
{
    const bool takesE = one.ends_with("h") || one.ends_with("s");
    return std::to_string(count) + " " + one + (count == 1 ? "" : takesE ? "es" : "s");
}

}  // namespace J4Tool
