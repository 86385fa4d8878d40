// File names as texts are UTF-8 on every platform; these turn them into paths of the system and back.
#pragma once

#include <filesystem>
#include <string>

namespace Kestrelon::Utilities::Tools {

/// @param name  UTF-8; what is not is taken as the system's own narrow text
inline std::filesystem::path PathOf(const std::string& name)
{
    try {
        return std::filesystem::path(std::u8string(name.begin(), name.end()));
    } catch (const std::exception&) {
        return std::filesystem::path(name);
    }
}

/// The same back, UTF-8.
inline std::string NameOf(const std::filesystem::path& path)
{
    const std::u8string name = path.u8string();
    return std::string(name.begin(), name.end());
}

}  // namespace Kestrelon::Utilities::Tools
