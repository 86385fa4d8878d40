#include "tools/judge/ToleranceFile.h"

#include <toml++/toml.h>

#include <algorithm>
#include <cmath>
#include <initializer_list>
#include <iterator>
#include <map>
#include <optional>
#include <string_view>

#include "chart/cgats/CgatsFields.h"
#include "tools/AtomicFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace ColourDifference = J4Chart::ColourDifference;

namespace {

constexpr double largestLimit = 1000.0;
constexpr double largestDeviceValue = 255.0;

std::string Listed(const auto& names)
{
    std::string list;
    for (const auto& name : names) {
        list += (list.empty() ? "" : ", ") + std::string(name);
    }
    return list;
}

class Reader {
public:
    explicit Reader(const std::string& fileName) : fileName(fileName) {}

    Tolerances Read(const std::string& text)
    {
        toml::table root;
        try {
            root = toml::parse(text);
        } catch (const toml::parse_error& error) {
            Refuse(static_cast<int>(error.source().begin.line), std::string(error.description()));
        }
        RequireKnown(root, {"title", "source", "formula", "subset", "group", "rule"});
        Tolerances tolerances;
        tolerances.title = Text(root, "title").value_or("");
        tolerances.source = Text(root, "source").value_or("");
        tolerances.subset = Flag(root, "subset");
        const ColourDifference::Formula* const usual = Formula(root, ColourDifference::Formulas.data());
        ReadGroups(root);
        const toml::array* const rules = List(root, "rule");
        for (size_t i = 0; rules != nullptr && i < rules->size(); ++i) {
            tolerances.rules.push_back(ReadRule(Table((*rules)[i], "rule"), usual));
            RequireNewName(tolerances.rules, (*rules)[i]);
        }
        if (tolerances.rules.empty()) {
            Refuse(0, "there is no rule: each one begins with [[rule]]");
        }
        return tolerances;
    }

private:
    [[noreturn]] void Refuse(int line, const std::string& reason) const
    {
        throw ToolError(ExitCode::File,
                        fileName + ": " + (line > 0 ? "line " + std::to_string(line) + ": " : "") + reason,
                        "docs/tolerances.md tells what a file of tolerances may hold.");
    }

    [[noreturn]] void Refuse(const toml::node& node, const std::string& reason) const
    {
        Refuse(static_cast<int>(node.source().begin.line), reason);
    }

    void RequireKnown(const toml::table& table, std::initializer_list<std::string_view> known) const
    {
        for (const auto& [key, node] : table) {
            if (std::find(known.begin(), known.end(), key.str()) == known.end()) {
                Refuse(static_cast<int>(key.source().begin.line),
                       "'" + std::string(key.str()) + "' is not known here; there may be " + Listed(known));
            }
        }
    }

    const toml::table& Table(const toml::node& node, const std::string& key) const
    {
        if (!node.is_table()) {
            Refuse(node, "'" + key + "' is not a table");
        }
        return *node.as_table();
    }

    const toml::array* List(const toml::table& table, const char* key) const
    {
        const toml::node* const node = table.get(key);
        if (node != nullptr && !node->is_array()) {
            Refuse(*node, std::string("'") + key + "' is not a list; a rule begins with [[rule]]");
        }
        return node == nullptr ? nullptr : node->as_array();
    }

    std::string TextOf(const toml::node& node, const char* key) const
    {
        const std::string text = node.is_string() ? node.as_string()->get() : "";
        if (text.empty()) {
            Refuse(node, std::string("'") + key + "' is not a text in quotes");
        }
        return text;
    }

    std::optional<std::string> Text(const toml::table& table, const char* key) const
    {
        const toml::node* const node = table.get(key);
        return node == nullptr ? std::nullopt : std::optional(TextOf(*node, key));
    }

    bool Flag(const toml::table& table, const char* key) const
    {
        const toml::node* const node = table.get(key);
        if (node != nullptr && !node->is_boolean()) {
            Refuse(*node, std::string("'") + key + "' is neither true nor false");
        }
        return node != nullptr && node->as_boolean()->get();
    }

    double Number(const toml::node& node, const std::string& key, double largest) const
    {
        const std::optional<double> number = node.is_number() ? node.value<double>() : std::nullopt;
        if (!number || !(*number >= 0.0 && *number <= largest)) {
            Refuse(node, "'" + key + "' is not a number from 0 to " + J4Chart::NumberText(largest));
        }
        return *number;
    }

    const ColourDifference::Formula* Formula(const toml::table& table, const ColourDifference::Formula* usual) const
    {
        const std::optional<std::string> name = Text(table, "formula");
        const ColourDifference::Formula* const formula = name ? ColourDifference::FindFormula(*name) : usual;
        if (formula == nullptr) {
            std::vector<std::string> names;
            std::transform(ColourDifference::Formulas.begin(), ColourDifference::Formulas.end(),
                           std::back_inserter(names), [](const auto& one) { return one.name; });
            Refuse(*table.get("formula"), "'" + *name + "' is no formula; there are " + Listed(names));
        }
        return formula;
    }

    /// A number, or a list of the lowest and the highest.
    PatchGroup::Range RangeOf(const toml::node& node, const std::string& channel) const
    {
        if (!node.is_array()) {
            const double value = Number(node, channel, largestDeviceValue);
            return {channel, value, value};
        }
        const toml::array& ends = *node.as_array();
        if (ends.size() != 2) {
            Refuse(node, "'" + channel + "' has " + std::to_string(ends.size()) +
                             " values instead of one, or of the lowest and the highest");
        }
        const PatchGroup::Range range = {channel, Number(ends[0], channel, largestDeviceValue),
                                         Number(ends[1], channel, largestDeviceValue)};
        if (range.low > range.high) {
            Refuse(node, "the lowest value of '" + channel + "' is above the highest");
        }
        return range;
    }

    PatchGroup::Device DeviceOf(const toml::node& node) const
    {
        PatchGroup::Device device;
        for (const auto& [key, value] : Table(node, "device")) {
            const PatchGroup::Range range = RangeOf(value, std::string(key.str()));
            if (range.channel == "others") {
                device.others = range;
            } else {
                device.ranges.push_back(range);
            }
        }
        if (device.ranges.empty() && !device.others) {
            Refuse(node, "'device' names no ink");
        }
        return device;
    }

    /// Calls for the node, or for each one where it is a list.
    template <class Take>
    void ForEach(const toml::node& node, Take take) const
    {
        if (!node.is_array()) {
            take(node);
            return;
        }
        if (node.as_array()->empty()) {
            Refuse(node, "the list is empty");
        }
        for (const toml::node& item : *node.as_array()) {
            take(item);
        }
    }

    PatchGroup GroupOf(const toml::table& table) const
    {
        RequireKnown(table, {"names", "device"});
        std::vector<std::string> patterns;
        std::vector<PatchGroup::Device> devices;
        if (const toml::node* const names = table.get("names")) {
            ForEach(*names, [&](const toml::node& name) { patterns.push_back(TextOf(name, "names")); });
        }
        if (const toml::node* const device = table.get("device")) {
            ForEach(*device, [&](const toml::node& one) { devices.push_back(DeviceOf(one)); });
        }
        if (patterns.empty() && devices.empty()) {
            Refuse(table, "a group needs 'names' or 'device'");
        }
        return {patterns, devices};
    }

    void ReadGroups(const toml::table& root)
    {
        const toml::node* const node = root.get("group");
        if (node == nullptr) {
            return;
        }
        for (const auto& [key, group] : Table(*node, "group")) {
            const std::string name(key.str());
            if (PatchGroup::OfPart(name)) {
                Refuse(static_cast<int>(key.source().begin.line),
                       "the group '" + name + "' is there without being told");
            }
            groups.emplace(name, GroupOf(Table(group, name)));
        }
    }

    PatchGroup PatchesOf(const toml::table& rule) const
    {
        const toml::node* const node = rule.get("patches");
        if (node == nullptr) {
            return PatchGroup();
        }
        if (node->is_table()) {
            return GroupOf(*node->as_table());
        }
        const std::string name = TextOf(*node, "patches");
        if (const auto part = PatchGroup::OfPart(name)) {
            return *part;
        }
        const auto found = groups.find(name);
        if (found == groups.end()) {
            Refuse(*node, "there is no group '" + name + "'");
        }
        return found->second;
    }

    Tolerances::Rule ReadRule(const toml::table& table, const ColourDifference::Formula* usual) const
    {
        RequireKnown(table,
                     {"name", "source", "patches", "of", "formula", "mean", "percentile95", "maximum", "optional"});
        Tolerances::Rule rule;
        const std::optional<std::string> name = Text(table, "name");
        if (!name) {
            Refuse(table, "the rule has no name");
        }
        if (std::any_of(name->begin(), name->end(), [](char byte) { return static_cast<unsigned char>(byte) < ' '; })) {
            Refuse(*table.get("name"), "'name' has a line break or another control character in it");
        }
        rule.name = *name;
        rule.source = Text(table, "source").value_or("");
        rule.patches = PatchesOf(table);
        if (const auto of = Text(table, "of")) {
            const auto& names = Tolerances::QuantityNames;
            const auto found = std::find(names.begin(), names.end(), *of);
            if (found == names.end()) {
                Refuse(*table.get("of"), "'" + *of + "' is not known here; there may be " + Listed(names));
            }
            rule.quantity = static_cast<Tolerances::Quantity>(found - names.begin());
        }
        rule.formula = Formula(table, usual);
        if (table.contains("formula") && rule.quantity != Tolerances::Quantity::Difference) {
            Refuse(*table.get("formula"), "a formula is for differences, not for '" + *Text(table, "of") + "'");
        }
        for (size_t i = 0; i < rule.limits.size(); ++i) {
            const char* const key = Tolerances::StatisticNames[i];
            if (const toml::node* const limit = table.get(key)) {
                rule.limits[i] = Number(*limit, key, largestLimit);
            }
        }
        if (std::none_of(rule.limits.begin(), rule.limits.end(), [](const auto& limit) { return limit.has_value(); })) {
            Refuse(table, "the rule '" + rule.name + "' has no limit: " + Listed(Tolerances::StatisticNames));
        }
        rule.optional = Flag(table, "optional");
        return rule;
    }

    /// Of the last rule.
    void RequireNewName(const std::vector<Tolerances::Rule>& rules, const toml::node& node) const
    {
        if (std::any_of(rules.begin(), rules.end() - 1,
                        [&](const Tolerances::Rule& rule) { return rule.name == rules.back().name; })) {
            Refuse(node, "there is a rule '" + rules.back().name + "' already");
        }
    }

    const std::string& fileName;
    std::map<std::string, PatchGroup> groups;
};

}  // namespace

Tolerances ToleranceFile::Read(const std::string& text, const std::string& fileName)
{
    return Reader(fileName).Read(text);
}

Tolerances ToleranceFile::Load(const std::string& fileName)
{
    const std::optional<std::string> text = ContentOf(fileName);
    if (!text) {
        throw ToolError(ExitCode::File, fileName + ": the file can't be read", "Check its name and who may read it.");
    }
    return Read(*text, fileName);
}

}  // namespace J4Tool
