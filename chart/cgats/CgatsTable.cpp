#include "chart/cgats/CgatsTable.h"

#include <algorithm>

#include "chart/cgats/CgatsError.h"

namespace J4Chart {

const CgatsTable::Keyword* CgatsTable::FindKeyword(const std::string& name) const
{
    const auto found = std::find_if(keywords.rbegin(), keywords.rend(),
                                    [&name](const Keyword& keyword) { return keyword.name == name; });
    return found == keywords.rend() ? nullptr : &*found;
}

std::string CgatsTable::ValueOf(const std::string& name) const
{
    const Keyword* keyword = FindKeyword(name);
    return keyword == nullptr ? std::string() : keyword->value;
}

void CgatsTable::SetKeyword(const std::string& name, const std::string& value)
{
    const auto found = std::find_if(keywords.rbegin(), keywords.rend(),
                                    [&name](const Keyword& keyword) { return keyword.name == name; });
    if (found == keywords.rend()) {
        keywords.push_back({name, value, 0});
    } else {
        found->value = value;
    }
}

int CgatsTable::FindField(const std::string& name) const
{
    const auto found = std::find(fields.begin(), fields.end(), name);
    return found == fields.end() ? -1 : static_cast<int>(found - fields.begin());
}

void CgatsTable::RequireSameRows(const CgatsTable& back) const
{
    if (back.fields != fields || back.rows.size() != rows.size()) {
        throw CgatsError(fieldsLine, "the table reads back as another one");
    }
    for (size_t i = 0; i < rows.size(); ++i) {
        if (back.rows[i].values != rows[i].values) {
            throw CgatsError(rows[i].line, "the data set reads back as another one");
        }
    }
}

}  // namespace J4Chart
