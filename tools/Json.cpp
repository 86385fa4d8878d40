#include "tools/Json.h"

#include <cmath>
#include <nlohmann/json.hpp>

#include "Utilities/Tools/HexStringHelper.h"
#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

std::string JsonText(const Json& json)
{
    const std::string dump = json.dump(-1, ' ', false, Json::error_handler_t::replace);
    // What JSON lets stand as it is and a terminal obeys: DEL, and the controls above it.
    std::string text;
    for (size_t at = 0; at < dump.size(); ++at) {
        const auto byte = static_cast<unsigned char>(dump[at]);
        const auto next = static_cast<unsigned char>(at + 1 < dump.size() ? dump[at + 1] : 0);
        if (byte == 0x7F) {
            text += "\\u007f";
        } else if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {
            text += "\\u00" + Kestrelon::Utilities::Tools::HexStringHelper::ToHexString(next, 2);
            ++at;
        } else {
            text += dump[at];
        }
    }
    return text;
}

void PrintJson(const Json& json, std::FILE* stream)
{
    std::fputs((JsonText(json) + "\n").c_str(), stream);
    std::fflush(stream);
}

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
