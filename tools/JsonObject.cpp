#include "tools/JsonObject.h"

#include <cmath>
#include <cstdio>

#include "chart/cgats/CgatsFields.h"

namespace J4Tool {

namespace {

std::string Quoted(std::string_view text)
{
    std::string quoted = "\"";
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            quoted += '\\';
            quoted += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            char escaped[8];
            std::snprintf(escaped, sizeof escaped, "\\u%04x", static_cast<unsigned>(character));
            quoted += escaped;
        } else {
            quoted += character;
        }
    }
    return quoted + '"';
}

}  // namespace

std::string JsonObject::NumberText(float number)
{
    return std::isfinite(number) ? J4Chart::NumberText(number) : "null";
}

std::string JsonObject::NumberText(double number)
{
    return std::isfinite(number) ? J4Chart::NumberText(number) : "null";
}

JsonObject& JsonObject::AddRaw(const std::string& name, const std::string& value)
{
    members += (members.empty() ? "" : ",") + Quoted(name) + ":" + value;
    return *this;
}

JsonObject& JsonObject::Add(const std::string& name, std::string_view text) { return AddRaw(name, Quoted(text)); }

JsonObject& JsonObject::Add(const std::string& name, double number) { return AddRaw(name, NumberText(number)); }

JsonObject& JsonObject::Add(const std::string& name, const JsonObject& object) { return AddRaw(name, object.Text()); }

JsonObject& JsonObject::Add(const std::string& name, const std::vector<std::string>& texts)
{
    std::string list;
    for (const std::string& text : texts) {
        list += (list.empty() ? "" : ",") + Quoted(text);
    }
    return AddRaw(name, "[" + list + "]");
}

JsonObject& JsonObject::Add(const std::string& name, const std::vector<JsonObject>& objects)
{
    std::string list;
    for (const JsonObject& object : objects) {
        list += (list.empty() ? "" : ",") + object.Text();
    }
    return AddRaw(name, "[" + list + "]");
}

JsonObject& JsonObject::AddValue(const std::string& name, const std::string& text)
{
    double number = 0.0;
    if (text.empty()) {
        return AddRaw(name, "null");
    }
    return J4Chart::ParseNumber(text, number) ? Add(name, number) : Add(name, text);
}

}  // namespace J4Tool
