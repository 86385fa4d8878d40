#include "chart/ChartPages.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <string>
#include <utility>

#include "chart/cgats/CgatsFields.h"

namespace J4Chart::ChartPages {

namespace {

constexpr const char* Field = "PAGE";

size_t PageOf(const CgatsTable::Row& row, size_t field)
{
    constexpr double most = 99999.0;
    double number = 0.0;
    if (!ParseNumber(row.values[field], number) || number < 1.0 || number > most || number != std::floor(number)) {
        throw CgatsError(row.line, std::string(Field) + " '" + row.values[field] +
                                       "' is not a whole number from 1 to " + NumberText(most));
    }
    return static_cast<size_t>(number);
}

}  // namespace

std::vector<size_t> Of(const CgatsTable& table)
{
    const int field = table.FindField(Field);
    std::set<size_t> pages;
    for (const CgatsTable::Row& row : table.rows) {
        if (field >= 0) {
            pages.insert(PageOf(row, static_cast<size_t>(field)));
        }
    }
    return {pages.begin(), pages.end()};
}

CgatsFile Select(const CgatsFile& file, std::optional<size_t> page)
{
    CgatsFile selected;
    for (CgatsTable table : file.Tables()) {
        const std::vector<size_t> pages = Of(table);
        if (!pages.empty()) {
            const size_t wanted = page.value_or(pages.front());
            if (std::find(pages.begin(), pages.end(), wanted) == pages.end()) {
                throw CgatsError(0, "there is no page " + std::to_string(wanted) + "; the pages are " + Text(pages));
            }
            const auto field = static_cast<size_t>(table.FindField(Field));
            std::erase_if(table.rows, [&](const CgatsTable::Row& row) { return PageOf(row, field) != wanted; });
        }
        selected.Add(std::move(table));
    }
    return selected;
}

std::string Text(const std::vector<size_t>& pages)
{
    std::string text;
    for (const size_t page : pages) {
        text += (text.empty() ? "" : ", ") + std::to_string(page);
    }
    return text;
}

}  // namespace J4Chart::ChartPages
