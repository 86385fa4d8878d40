#include "tools/make/ColourRule.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <set>
#include <utility>
#include <vector>

#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool::ColourRule {

namespace {

using Values = std::vector<double>;

constexpr int MostRgbLevels = 10;
constexpr int MostCmykLevels = 6;

/// Colours in the order in which they come, each only once.
class Colours {
public:
    explicit Colours(bool isRgb) : isRgb(isRgb)
    {
        table.kind = "CGATS.17";
        table.fields = {"SAMPLE_NAME"};
        for (const char* field : isRgb ? std::vector<const char*>{"RGB_R", "RGB_G", "RGB_B"}
                                       : std::vector<const char*>{"CMYK_C", "CMYK_M", "CMYK_Y", "CMYK_K"}) {
            table.fields.emplace_back(field);
        }
    }

    void Add(const Values& values)
    {
        if (!seen.insert(values).second) {
            return;
        }
        CgatsTable::Row row;
        std::string name;
        for (size_t i = 0; i < values.size(); ++i) {
            row.values.push_back(J4Chart::NumberText(values[i]));
            name += (isRgb ? "RGB" : "CMYK")[i] + row.values.back();
        }
        row.values.insert(row.values.begin(), name);
        table.rows.push_back(std::move(row));
    }

    /// Every combination of evenly spaced levels.
    void AddGrid(int levels, double maximum)
    {
        const size_t channels = isRgb ? 3 : 4;
        std::vector<int> digits(channels, 0);
        for (bool more = true; more;) {
            Values values;
            for (const int digit : digits) {
                values.push_back(std::round(maximum * digit / (levels - 1)));
            }
            if (IsTold(values, maximum)) {
                Add(values);
            }
            more = false;
            for (size_t i = channels; i-- > 0 && !more;) {
                more = ++digits[i] < levels;
                digits[i] = more ? digits[i] : 0;
            }
        }
    }

    using CgatsTable = J4Chart::CgatsTable;
    CgatsTable table;

private:
    /// Under solid black other inks hardly show: there only the corners of the grid count.
    bool IsTold(const Values& values, double maximum) const
    {
        return isRgb || values.back() < maximum || std::all_of(values.begin(), values.end(), [=](double value) {
                   return value == 0.0 || value == maximum;
               });
    }

    bool isRgb;
    std::set<Values> seen;
};

void AddRgbRamps(Colours& colours)
{
    constexpr double full = 255.0;
    constexpr int steps = 15;  // of 17
    for (int step = steps; step >= 0; --step) {
        colours.Add(Values(3, full * step / steps));
    }
    constexpr std::array<std::array<int, 3>, 6> lights = {
        {{1, 0, 0}, {1, 1, 0}, {0, 1, 0}, {0, 1, 1}, {0, 0, 1}, {1, 0, 1}}};
    for (const auto& light : lights) {
        for (const double level : {51.0, 102.0, 153.0, 204.0, full}) {
            colours.Add({light[0] * level, light[1] * level, light[2] * level});  // from black
        }
        for (const double level : {51.0, 102.0, 153.0, 204.0}) {  // to white
            const auto toWhite = [level](int on) { return on != 0 ? full : level; };
            colours.Add({toWhite(light[0]), toWhite(light[1]), toWhite(light[2])});
        }
    }
}

void AddCmykRamps(Colours& colours)
{
    colours.Add({0, 0, 0, 0});
    for (size_t ink = 0; ink < 4; ++ink) {
        for (const double tone : {5.0, 10.0, 20.0, 30.0, 40.0, 50.0, 60.0, 70.0, 80.0, 90.0, 95.0, 100.0}) {
            Values values(4, 0.0);
            values[ink] = tone;
            colours.Add(values);
        }
    }
    for (const std::array<int, 3>& inks : {std::array{0, 1, 1}, std::array{1, 0, 1}, std::array{1, 1, 0}}) {
        for (const double tone : {25.0, 50.0, 75.0, 100.0}) {
            colours.Add({inks[0] * tone, inks[1] * tone, inks[2] * tone, 0.0});
        }
    }
    // Greys of three inks as the trade balances them, and what comes near them for the eye to compare; then the darks.
    for (const Values& grey : {Values{25, 19, 19, 0}, Values{50, 40, 40, 0}, Values{75, 66, 66, 0},
                               Values{100, 100, 100, 0}, Values{50, 40, 40, 50}, Values{100, 100, 0, 50},
                               Values{100, 0, 100, 50}, Values{0, 100, 100, 50}, Values{80, 70, 70, 100}}) {
        colours.Add(grey);
    }
}

/// "rgb9" is 9 for "rgb"; 0 for the family alone; -1 for anything else.
int Levels(const std::string& name, const std::string& family, int most)
{
    if (!name.starts_with(family)) {
        return -1;
    }
    const std::string tail = name.substr(family.size());
    double number = 0.0;
    if (tail.empty()) {
        return 0;
    }
    const bool isCount =
        tail.find_first_not_of("0123456789") == std::string::npos && J4Chart::ParseNumber(tail, number);
    return isCount && number >= 2 && number <= most ? static_cast<int>(number) : -1;
}

}  // namespace

const char* const Help =
    "rgb: greys, and ramps of red, yellow, green, cyan, blue and magenta from black and to white; rgb2 to rgb10: these "
    "and a grid of so many levels; cmyk: ramps of the inks, their overprints and greys; cmyk2 to cmyk6: these and a "
    "grid, under solid black only its corners";

J4Chart::CgatsTable Make(const std::string& name)
{
    const int rgb = Levels(name, "rgb", MostRgbLevels);
    const int cmyk = Levels(name, "cmyk", MostCmykLevels);
    if (rgb < 0 && cmyk < 0) {
        throw ToolError(ExitCode::Usage, "there is no list '" + name + "'", std::string("The lists are ") + Help + ".");
    }
    Colours colours(rgb >= 0);
    if (rgb >= 0) {
        AddRgbRamps(colours);
    } else {
        AddCmykRamps(colours);
    }
    if (const int levels = std::max(rgb, cmyk); levels > 0) {
        colours.AddGrid(levels, rgb > 0 ? 255.0 : 100.0);
    }
    colours.table.SetKeyword("DESCRIPTOR", "List " + name);
    return std::move(colours.table);
}

}  // namespace J4Tool::ColourRule
