// Dates as texts, in UTC: for people and files, and for file names.
#pragma once

#include <ctime>
#include <optional>
#include <string>

namespace J4Tool {

/// For instance "2026-03-01T12:00:00Z".
std::string DateText(std::time_t seconds);

/// The same of a text that holds seconds since 1970; "never" for 0 and less, the text itself for no number.
std::string DateText(const std::string& seconds);

/// For instance "20260301-120000".
std::string DateForFileName(std::time_t seconds);

/// For instance "20260301120000Z".
std::string DateForPdf(std::time_t seconds);

/// The time of a text such as "2026-03-01T12:00:00Z", "2026-03-01 12:00:00+01:00", "2026-03-01" or "Sun Mar  1 12:00:00
/// 2026"; without a zone it is taken as UTC.
/// @return nothing for any other text
std::optional<std::time_t> ParseDate(const std::string& date);

}  // namespace J4Tool
