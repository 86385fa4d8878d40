#include "tools/DateText.h"

#include <chrono>
#include <cstdio>

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

std::string DateForPdf(std::time_t seconds) { return Formatted(seconds, "%Y%m%d%H%M%SZ"); }

std::optional<std::time_t> ParseDate(const std::string& text)
{
    int year = 0;
    unsigned month = 0, day = 0, hours = 0, minutes = 0, seconds = 0;
    int end = 0;
    const auto isWhole = [&] { return end > 0 && static_cast<size_t>(end) == text.size(); };
    const bool hasTime = std::sscanf(text.c_str(), "%4d-%2u-%2uT%2u:%2u:%2uZ%n", &year, &month, &day, &hours, &minutes,
                                     &seconds, &end) == 6 &&
                         isWhole();
    if (!hasTime) {
        hours = minutes = seconds = 0;
        end = 0;
        if (std::sscanf(text.c_str(), "%4d-%2u-%2u%n", &year, &month, &day, &end) != 3 || !isWhole()) {
            return std::nullopt;
        }
    }
    const std::chrono::year_month_day date{std::chrono::year(year), std::chrono::month(month), std::chrono::day(day)};
    if (!date.ok() || hours > 23 || minutes > 59 || seconds > 59) {
        return std::nullopt;
    }
    const std::chrono::sys_seconds time = std::chrono::sys_days(date) + std::chrono::hours(hours) +
                                          std::chrono::minutes(minutes) + std::chrono::seconds(seconds);
    return static_cast<std::time_t>(time.time_since_epoch().count());
}

}  // namespace J4Tool
