// Writes one JSON object, member by member, in one line.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace J4Tool {

class JsonObject {
public:
    JsonObject& Add(const std::string& name, std::string_view text);
    JsonObject& Add(const std::string& name, const char* text) { return Add(name, std::string_view(text)); }
    JsonObject& Add(const std::string& name, double number);
    JsonObject& Add(const std::string& name, int number) { return Add(name, static_cast<double>(number)); }
    JsonObject& Add(const std::string& name, size_t number) { return Add(name, static_cast<double>(number)); }
    JsonObject& Add(const std::string& name, const JsonObject& object);
    JsonObject& Add(const std::string& name, const std::vector<std::string>& texts);
    JsonObject& Add(const std::string& name, const std::vector<JsonObject>& objects);

    template <class Numbers>
    JsonObject& AddNumbers(const std::string& name, const Numbers& numbers)
    {
        std::string list;
        for (const auto number : numbers) {
            list += (list.empty() ? "" : ",") + NumberText(number);
        }
        return AddRaw(name, "[" + list + "]");
    }

    /// A text that is a number becomes one, an empty text null.
    JsonObject& AddValue(const std::string& name, const std::string& text);

    std::string Text() const { return "{" + members + "}"; }

private:
    static std::string NumberText(float number);
    static std::string NumberText(double number);
    JsonObject& AddRaw(const std::string& name, const std::string& value);

    std::string members;
};

}  // namespace J4Tool
