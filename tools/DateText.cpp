#include "tools/DateText.h"

#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

namespace {

std::string Formatted(std::time_t seconds, const char* format)
{
    char text[64];
    const std::tm* parts = std::gmtime(&seconds);
    return parts == nullptr ? std::string() : std::string(text, std::strftime(text, sizeof text, format, parts));
}

}  // namespace

std::string DateText(std::time_t seconds) { return Formatted(seconds, "%Y-%m-%dT%H:%M:%SZ"); }

std::string DateText(const std::string& seconds)
{
    double number = 0.0;
    if (!J4Chart::ParseNumber(seconds, number)) {
        return seconds;
    }
    return number > 0.0 ? DateText(static_cast<std::time_t>(number)) : "never";
}

std::string DateForFileName(std::time_t seconds) { return Formatted(seconds, "%Y%m%d-%H%M%S"); }

}  // namespace J4Tool
