// A list of options: key, meaning, how to write and how to read it. Each part of the simulated library that
// has options fills one.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "simulator/instrument/Status.h"

namespace J4Bench {

struct Option {
    std::string key;
    std::string meaning;
    std::function<Outcome(const std::string& value)> set;  ///< empty: read only
    std::function<std::string()> get;                      ///< empty: reads as an empty text
};

class OptionTable {
public:
    void Add(Option option) { options.push_back(std::move(option)); }

    /// An option that reads and writes a switch; value must live as long as the table.
    void AddSwitch(const char* key, const char* meaning, bool& value);

    /// The option of this key, nullptr when there is none. Keys are case sensitive.
    const Option* Find(const std::string& key) const;

    /// Sets the option of this key. The text of a failure names it.
    Outcome Set(const std::string& key, const std::string& value) const;

    /// One line "key: meaning" for each option.
    std::string Help() const;

    /// Helpers for setters: a text in the form that the option wants, or a refusal that quotes it.
    /// Each calls store with the value when the text is right.
    static Outcome ReadSwitch(const std::string& text, const std::function<void(bool)>& store);
    static Outcome ReadInteger(const std::string& text, int64_t low, int64_t high,
                               const std::function<void(int64_t)>& store);
    static Outcome ReadReal(const std::string& text, double low, double high, const std::function<void(double)>& store);
    /// At most six significant digits, with a decimal point everywhere.
    static std::string WriteReal(double value);

private:
    std::vector<Option> options;
};

}  // namespace J4Bench
