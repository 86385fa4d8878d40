#include "chart/csv/CsvFile.h"

#include <iterator>
#include <sstream>
#include <string_view>
#include <utility>
#include <vector>

#include "Utilities/Tools/Utf8.h"
#include "chart/cgats/CgatsError.h"

namespace J4Chart {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

/// Takes a text apart, record by record.
class RecordReader {
public:
    explicit RecordReader(std::string text) : text(std::move(text))
    {
        at = this->text.starts_with(Utf8::ByteOrderMark) ? Utf8::ByteOrderMark.size() : 0;
    }

    /// @return false at the end
    bool Next(CgatsTable::Row& record)
    {
        while (at < text.size() && IsLineEnd()) {
            PassLineEnd();
        }
        record.values.clear();
        record.line = line;
        if (at >= text.size()) {
            return false;
        }
        for (;;) {
            record.values.push_back(text[at] == '"' ? Quoted() : Bare());
            if (at >= text.size()) {
                return true;
            }
            if (IsLineEnd()) {
                PassLineEnd();
                return true;
            }
            if (text[at] != ',') {
                throw CgatsError(line, "there is something behind a quoted value");
            }
            if (++at >= text.size()) {
                record.values.emplace_back();
                return true;
            }
        }
    }

private:
    bool IsLineEnd() const { return text[at] == '\n' || text.compare(at, 2, "\r\n") == 0; }

    void PassLineEnd()
    {
        at += text[at] == '\n' ? 1 : 2;
        ++line;
    }

    std::string Bare()
    {
        const size_t begin = at;
        while (at < text.size() && text[at] != ',' && !IsLineEnd()) {
            if (text[at] == '"') {
                throw CgatsError(line, "there is a quote within a value that does not begin with one");
            }
            ++at;
        }
        return text.substr(begin, at - begin);
    }

    std::string Quoted()
    {
        const int begin = line;
        std::string value;
        for (++at; at < text.size(); ++at) {
            if (text[at] == '"' && text.compare(at, 2, "\"\"") != 0) {
                ++at;
                return value;
            }
            at += text[at] == '"' ? 1 : 0;
            line += text[at] == '\n' ? 1 : 0;
            value += text[at];
        }
        throw CgatsError(begin, "a quoted value has no end");
    }

    std::string text;
    size_t at = 0;
    int line = 1;
};

std::string RecordText(const std::vector<std::string>& values)
{
    std::string record;
    for (const std::string& value : values) {
        record += record.empty() ? "" : ",";
        if (value.find_first_of(",\"\r\n") == std::string::npos && !value.empty()) {
            record += value;
            continue;
        }
        record += '"';
        for (const char character : value) {
            record += character == '"' ? "\"\"" : std::string(1, character);
        }
        record += '"';
    }
    return record + "\r\n";
}

}  // namespace

CgatsTable CsvFile::Read(std::istream& input)
{
    RecordReader reader({std::istreambuf_iterator<char>(input), {}});
    if (input.bad()) {
        throw CgatsError(0, "the file can't be read to its end");
    }
    CgatsTable::Row record;
    if (!reader.Next(record)) {
        throw CgatsError(0, "the file is empty");
    }
    CgatsTable table;
    table.fields = record.values;
    table.fieldsLine = record.line;
    while (reader.Next(record)) {
        if (record.values.size() != table.fields.size()) {
            throw CgatsError(record.line, std::to_string(record.values.size()) + " values instead of " +
                                              std::to_string(table.fields.size()));
        }
        table.rows.push_back(record);
    }
    return table;
}

std::string CsvFile::Text(const CgatsTable& table)
{
    std::string text = RecordText(table.fields);
    for (const CgatsTable::Row& row : table.rows) {
        text += RecordText(row.values);
    }
    std::istringstream written(text);
    table.RequireSameRows(Read(written));
    return text;
}

}  // namespace J4Chart
