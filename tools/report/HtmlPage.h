// A page as one file that needs nothing but itself: the template with style, scripts, plotting library and data put in.
#pragma once

#include <cmath>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/Json.h"

namespace J4Tool {

struct HtmlPage {
    std::string title;
    std::string_view body;
    std::string_view style;  ///< what this page has beside that of all
    std::string data;        ///< JSON
    std::string_view script;

    /// @return the page, UTF-8
    std::string Text() const;

    /// Name and version of the program, for the foot of the page.
    static const char* Program();

    // Rounded to so many decimals: what is more would only make the page longer.

    static double Rounded(double value, int decimals)
    {
        const double power = std::pow(10.0, decimals);
        return std::round(value * power) / power;
    }

    template <class Numbers>
    static std::vector<double> Rounded(const Numbers& numbers, int decimals)
    {
        std::vector<double> rounded;
        rounded.reserve(std::size(numbers));
        for (const double number : numbers) {
            rounded.push_back(Rounded(number, decimals));
        }
        return rounded;
    }

    template <class List, class Make>
    static Json Objects(const List& list, Make make)
    {
        Json objects = Json::array();
        for (const auto& item : list) {
            objects.push_back(make(item));
        }
        return objects;
    }
};

}  // namespace J4Tool
