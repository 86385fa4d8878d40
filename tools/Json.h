// How the tool and its report write JSON: members in the order in which they were set, always valid.
#pragma once

#include <cstdio>
#include <nlohmann/json_fwd.hpp>
#include <span>
#include <string>

namespace J4Tool {

using Json = nlohmann::ordered_json;

/// One line. What is not UTF-8 in a text, which file names and charts may hold, is replaced; a number that is not
/// finite is null.
std::string JsonText(const Json& json);

/// The same as a line of a stream, at once.
void PrintJson(const Json& json, std::FILE* stream = stdout);

/// Each number as short as a float is written, not with the digits of its conversion.
Json JsonNumbers(std::span<const float> numbers);

/// A text that is a number becomes one, an empty text null.
Json JsonValue(const std::string& text);

}  // namespace J4Tool
