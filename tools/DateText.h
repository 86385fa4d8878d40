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

/// Reads "2026-03-01" or "2026-03-01T12:00:00Z"; nothing of any other text.
std::optional<std::time_t> ParseDate(const std::string& text);

}  // namespace J4Tool
