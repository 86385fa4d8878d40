#include "tools/report/HtmlPage.h"

#include <algorithm>
#include <initializer_list>
#include <numeric>
#include <utility>

#include "Version.h"
#include "tools/report/ReportFiles.h"

namespace J4Tool {

namespace {

/// A text with some of its characters replaced.
std::string Replaced(std::string_view text, std::initializer_list<std::pair<char, const char*>> replacements)
{
    std::string replaced;
    replaced.reserve(text.size());
    for (const char character : text) {
        const auto found = std::find_if(replacements.begin(), replacements.end(),
                                        [&](const auto& replacement) { return replacement.first == character; });
        if (found == replacements.end()) {
            replaced += character;
        } else {
            replaced += found->second;
        }
    }
    return replaced;
}

}  // namespace

const char* HtmlPage::Program()
{
    return "j4tavla " J4T_VERSION_TEXT(J4T_VERSION_MAJOR) "." J4T_VERSION_TEXT(J4T_VERSION_MINOR) "." J4T_VERSION_TEXT(
        J4T_VERSION_REVISION);
}

std::string HtmlPage::Text() const
{
    const std::pair<std::string_view, std::string> parts[] = {
        {"{{title}}", Replaced(title, {{'&', "&amp;"}, {'<', "&lt;"}})},
        {"{{plot-style}}", std::string(plotStyle)},
        {"{{style}}", std::string(pageStyle) + std::string(style)},
        {"{{body}}", std::string(body)},
        // It stands in a script element: no "<" is left in it, which JSON has in texts only.
        {"{{data}}", Replaced(data, {{'<', "\\u003c"}})},
        {"{{plot-licence}}", std::string(plotLicence)},
        {"{{plot-script}}", std::string(plotScript)},
        {"{{page-script}}", std::string(pageScript)},
        {"{{script}}", std::string(script)},
    };
    // The parts stand in the template in this order, so what was put in is never searched.
    std::string page;
    page.reserve(std::accumulate(std::begin(parts), std::end(parts), pageTemplate.size(),
                                 [](size_t size, const auto& part) { return size + part.second.size(); }));
    std::string_view rest = pageTemplate;
    for (const auto& [mark, text] : parts) {
        const size_t at = rest.find(mark);
        page += rest.substr(0, at);
        page += text;
        rest.remove_prefix(at + mark.size());
    }
    page += rest;
    return page;
}

}  // namespace J4Tool
