#include "tools/Json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

std::string JsonText(const Json& json) { return json.dump(-1, ' ', false, Json::error_handler_t::replace); }

using J4Chart::NumberText;

Json JsonNumbers(std::span<const float> numbers)
{
    Json list = Json::array();
    for (const float number : numbers) {
        list.push_back(std::isfinite(number) ? JsonValue(NumberText(number)) : nullptr);
    }
    return list;
}

Json JsonValue(const std::string& text)
{
    if (text.empty()) {
        return nullptr;
    }
    Json number = Json::parse(text, nullptr, false);
    return number.is_number() ? number : Json(text);
}

}  // namespace J4Tool
