#include "simulator/instrument/OptionTable.h"

#include <charconv>

namespace J4Bench {

namespace {

/// Reads the whole text as a number in a range.
template <typename Number>
Outcome ReadNumber(const std::string& text, Number low, Number high, const std::string& range,
                   const std::function<void(Number)>& store)
{
    Number value{};
    const char* end = text.data() + text.size();
    const auto [stop, failure] = std::from_chars(text.data(), end, value);
    if (failure != std::errc() || stop != end || !(value >= low && value <= high)) {
        return {Status::InvalidValue, "'" + text + "' is not a number from " + range + "."};
    }
    store(value);
    return {};
}

}  // namespace

void OptionTable::AddSwitch(const char* key, const char* meaning, bool& value)
{
    Add({key, meaning,
         [&value](const std::string& text) { return ReadSwitch(text, [&value](bool on) { value = on; }); },
         [&value] { return std::string(value ? "yes" : "no"); }});
}

const Option* OptionTable::Find(const std::string& key) const
{
    for (const Option& option : options) {
        if (option.key == key) {
            return &option;
        }
    }
    return nullptr;
}

Outcome OptionTable::Set(const std::string& key, const std::string& value) const
{
    const Option* const option = Find(key);
    if (option == nullptr) {
        return {Status::UnknownOption, "There is no option '" + key + "'."};
    }
    if (!option->set) {
        return {Status::UnknownOption, "The option '" + key + "' can only be read."};
    }
    Outcome outcome = option->set(value);
    if (outcome.Failed()) {
        outcome.text = key + ": " + outcome.text;
    }
    return outcome;
}

std::string OptionTable::Help() const
{
    std::string text;
    for (const Option& option : options) {
        text += option.key + ": " + option.meaning + "\n";
    }
    return text;
}

Outcome OptionTable::ReadSwitch(const std::string& text, const std::function<void(bool)>& store)
{
    const bool on = text == "yes" || text == "1" || text == "on";
    if (!on && text != "no" && text != "0" && text != "off") {
        return {Status::InvalidValue, "'" + text + "' is neither yes nor no."};
    }
    store(on);
    return {};
}

Outcome OptionTable::ReadInteger(const std::string& text, int64_t low, int64_t high,
                                 const std::function<void(int64_t)>& store)
{
    return ReadNumber(text, low, high, std::to_string(low) + " to " + std::to_string(high), store);
}

Outcome OptionTable::ReadReal(const std::string& text, double low, double high,
                              const std::function<void(double)>& store)
{
    return ReadNumber(text, low, high, WriteReal(low) + " to " + WriteReal(high), store);
}

std::string OptionTable::WriteReal(double value)
{
    char text[32];
    const auto [end, failure] = std::to_chars(text, text + sizeof text, value, std::chars_format::general, 6);
    return failure == std::errc() ? std::string(text, end) : std::string();
}

}  // namespace J4Bench
