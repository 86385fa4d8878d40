#include "tools/DateText.h"

#include <chrono>
#include <iomanip>
#include <locale>
#include <sstream>
#include <string_view>

#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

namespace {

std::string Formatted(std::time_t seconds, const char* format)
{
    char text[64];
    const std::tm* parts = std::gmtime(&seconds);
    return parts == nullptr ? std::string() : std::string(text, std::strftime(text, sizeof text, format, parts));
}

/// Of a zone such as "Z" or "+01:00"; 0 for none.
std::optional<int> MinutesEast(const std::string& zone)
{
    if (zone.empty() || zone == "Z") {
        return 0;
    }
    constexpr std::string_view form = "+00:00";
    bool fits = zone.size() == form.size() && (zone[0] == '+' || zone[0] == '-') && zone[3] == ':';
    for (const size_t digit : {1, 2, 4, 5}) {
        fits = fits && zone[digit] >= '0' && zone[digit] <= '9';
    }
    if (!fits) {
        return std::nullopt;
    }
    const int minutes = 60 * std::stoi(zone.substr(1, 2)) + std::stoi(zone.substr(4, 2));
    return zone[0] == '-' ? -minutes : minutes;
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

std::optional<std::time_t> ParseDate(const std::string& date)
{
    for (const char* format : {"%Y-%m-%dT%H:%M:%S", "%Y-%m-%d %H:%M:%S", "%Y-%m-%d", "%a %b %d %H:%M:%S %Y"}) {
        std::istringstream text(date);
        text.imbue(std::locale::classic());
        std::tm parts{};
        if (!(text >> std::get_time(&parts, format))) {
            continue;
        }
        const std::chrono::year_month_day day{std::chrono::year(parts.tm_year + 1900),
                                              std::chrono::month(static_cast<unsigned>(parts.tm_mon + 1)),
                                              std::chrono::day(static_cast<unsigned>(parts.tm_mday))};
        std::string zone;
        std::getline(text, zone);
        const std::optional<int> east = MinutesEast(zone);
        if (day.ok() && east) {
            const std::chrono::seconds time =
                std::chrono::sys_days(day).time_since_epoch() + std::chrono::hours(parts.tm_hour) +
                std::chrono::minutes(parts.tm_min - *east) + std::chrono::seconds(parts.tm_sec);
            return static_cast<std::time_t>(time.count());
        }
    }
    return std::nullopt;
}

}  // namespace J4Tool
