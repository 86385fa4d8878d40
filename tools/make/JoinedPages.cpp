#include "tools/make/JoinedPages.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "chart/ChartFile.h"
#include "chart/ChartReader.h"
#include "chart/cgats/CgatsFields.h"
#include "tools/ToolError.h"

namespace J4Tool {

using J4Chart::CgatsError;
using J4Chart::CgatsTable;

namespace {

/// What holds for a page alone, and SAMPLE_ID, which stands before all others.
constexpr std::array<const char*, 8> FieldsOfPage = {"SAMPLE_ID", "PAGE",   "X",        "Y",
                                                     "WIDTH",     "HEIGHT", "SCAN_ROW", "SCAN_COLUMN"};
constexpr std::array<const char*, 2> KeywordsOfPage = {"LAYOUT_PAGE", "LAYOUT_ROTATION"};

std::vector<std::string> CommonFields(const CgatsTable& table)
{
    std::vector<std::string> fields;
    std::copy_if(table.fields.begin(), table.fields.end(), std::back_inserter(fields),
                 [](const std::string& field) { return !J4Chart::IsOneOf(field, FieldsOfPage); });
    return fields;
}

CgatsTable MeasuredTable(const std::string& file)
{
    const J4Chart::CgatsFile read = J4Chart::ChartFile::Read(file);
    J4Chart::ChartReader::Wanted wanted;
    wanted.colours = true;
    const J4Chart::Chart chart = J4Chart::ChartReader::Read(read, wanted);
    CgatsTable table = read.Tables()[chart.table];
    if (table.FindField("SAMPLE_NAME") < 0) {
        *std::find(table.fields.begin(), table.fields.end(), "SAMPLE_ID") = "SAMPLE_NAME";
    }
    return table;
}

}  // namespace

JoinedPages::JoinedPages(const std::vector<std::string>& files)
{
    for (const std::string& file : files) {
        try {
            Add(file);
        } catch (const CgatsError& error) {
            throw ToolError(ExitCode::File, file + ": " + error.what(),
                            "Give the measured pages of one chart, each once.");
        }
    }
    NumberRows();
}

void JoinedPages::NumberRows()
{
    std::set<std::string> ids;
    for (const CgatsTable::Row& row : joined.rows) {
        ids.insert(row.values.front());
    }
    if (ids.size() == joined.rows.size() && !ids.contains("")) {
        return;
    }
    for (size_t i = 0; i < joined.rows.size(); ++i) {
        joined.rows[i].values.front() = std::to_string(i + 1);
    }
}

void JoinedPages::Add(const std::string& file)
{
    const CgatsTable table = MeasuredTable(file);
    std::vector<std::string> fields = {"SAMPLE_ID", "PAGE"};
    const std::vector<std::string> common = CommonFields(table);
    fields.insert(fields.end(), common.begin(), common.end());
    if (pages == 0) {
        joined.kind = "CGATS.17";
        joined.fields = fields;
        joined.keywords = table.keywords;
        std::erase_if(joined.keywords, [](const CgatsTable::Keyword& keyword) {
            return J4Chart::IsOneOf(keyword.name, KeywordsOfPage);
        });
    } else if (fields != joined.fields) {
        throw CgatsError(table.fieldsLine, "the fields are not those of '" + seen.front().file + "'");
    } else {
        AgreeOn(table);
    }
    ++pages;
    const std::string page = table.ValueOf("LAYOUT_PAGE");
    AddRows(table, file, page.empty() ? std::to_string(pages) : page);
}

void JoinedPages::AgreeOn(const CgatsTable& table)
{
    for (const CgatsTable::Keyword& keyword : joined.keywords) {
        if (keyword.name.starts_with("SPECTRAL_") && table.ValueOf(keyword.name) != keyword.value) {
            throw CgatsError(0, keyword.name + " is not " + keyword.value + ", as in '" + seen.front().file + "'");
        }
    }
    const std::string latest = std::max(joined.ValueOf("CREATED"), table.ValueOf("CREATED"));
    std::erase_if(joined.keywords, [&table](const CgatsTable::Keyword& keyword) {
        return table.ValueOf(keyword.name) != keyword.value;
    });
    if (!latest.empty()) {
        joined.SetKeyword("CREATED", latest);
    }
}

void JoinedPages::AddRows(const CgatsTable& table, const std::string& file, const std::string& page)
{
    std::map<std::string, std::string> files;
    for (const Seen& patch : seen) {
        files.emplace(patch.name, patch.file);
    }
    const auto name = static_cast<size_t>(table.FindField("SAMPLE_NAME"));
    const int id = table.FindField("SAMPLE_ID");
    for (const CgatsTable::Row& row : table.rows) {
        if (const auto [other, isNew] = files.emplace(row.values[name], file); !isNew) {
            throw CgatsError(row.line, "patch " + row.values[name] + " stands in '" + other->second + "' too");
        }
        seen.push_back({row.values[name], file});
        CgatsTable::Row& added = joined.rows.emplace_back();
        added.line = row.line;
        added.values = {id < 0 ? std::string() : row.values[static_cast<size_t>(id)], page};
        for (size_t field = 0; field < table.fields.size(); ++field) {
            if (!J4Chart::IsOneOf(table.fields[field], FieldsOfPage)) {
                added.values.push_back(row.values[field]);
            }
        }
    }
}

}  // namespace J4Tool
