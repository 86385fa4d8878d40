#include "chart/cgats/CgatsFile.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <fstream>
#include <optional>
#include <sstream>
#include <string_view>
#include <utility>

#include "Utilities/Tools/FilePath.h"
#include "Utilities/Tools/Utf8.h"
#include "chart/cgats/CgatsFields.h"

namespace J4Chart {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

/// The keywords of the standard; all others have to be announced.
constexpr std::array<std::string_view, 27> StandardKeywords = {"NUMBER_OF_FIELDS",
                                                               "NUMBER_OF_SETS",
                                                               "ORIGINATOR",
                                                               "FILE_DESCRIPTOR",
                                                               "CREATED",
                                                               "DESCRIPTOR",
                                                               "DIFFUSE_GEOMETRY",
                                                               "MANUFACTURER",
                                                               "MANUFACTURE",
                                                               "PROD_DATE",
                                                               "SERIAL",
                                                               "MATERIAL",
                                                               "INSTRUMENTATION",
                                                               "MEASUREMENT_SOURCE",
                                                               "PRINT_CONDITIONS",
                                                               "SAMPLE_BACKING",
                                                               "CHISQ_DOF",
                                                               "MEASUREMENT_GEOMETRY",
                                                               "FILTER",
                                                               "POLARIZATION",
                                                               "WEIGHTING_FUNCTION",
                                                               "COMPUTATIONAL_PARAMETER",
                                                               "TARGET_TYPE",
                                                               "COLORANT",
                                                               "TABLE_DESCRIPTOR",
                                                               "TABLE_NAME",
                                                               "KEYWORD"};

bool IsStandard(const std::string& keyword)
{
    return std::find(StandardKeywords.begin(), StandardKeywords.end(), keyword) != StandardKeywords.end();
}

/// Words of the format itself; what is called like one stands in quotes.
constexpr std::array<std::string_view, 8> FormatWords = {"BEGIN_DATA_FORMAT", "END_DATA_FORMAT",        "BEGIN_DATA",
                                                         "END_DATA",          "DATA_FORMAT_IDENTIFIER", "KEYWORD",
                                                         "NUMBER_OF_FIELDS",  "NUMBER_OF_SETS"};

bool IsOfFormat(const std::string& word)
{
    return std::find(FormatWords.begin(), FormatWords.end(), word) != FormatWords.end();
}

bool IsCount(const std::string& keyword) { return keyword == "NUMBER_OF_FIELDS" || keyword == "NUMBER_OF_SETS"; }

/// Splits a line into words.
/// @param bare  how many stand there before the first one in quotes
/// @return false when a quoted text has no end
bool SplitLine(const std::string& line, std::vector<std::string>& words, size_t& bare)
{
    words.clear();
    bare = 0;
    bool quoted = false;
    size_t at = 0;
    while (at < line.size()) {
        const char character = line[at];
        if (character == '#') {
            break;
        }
        if (character == ' ' || character == '\t' || character == '\r') {
            ++at;
        } else if (character == '"' || character == '\'') {
            const size_t end = line.find(character, at + 1);
            if (end == std::string::npos) {
                return false;
            }
            words.push_back(line.substr(at + 1, end - at - 1));
            at = end + 1;
            quoted = true;
        } else {
            const size_t end = std::min(line.find_first_of(" \t\r\"#", at), line.size());
            words.push_back(line.substr(at, end - at));
            at = end;
            bare += quoted ? 0 : 1;
        }
    }
    return true;
}

/// The words of a text with single blanks between them.
std::string Joined(const std::vector<std::string>& words, size_t first)
{
    std::string text;
    for (size_t i = first; i < words.size(); ++i) {
        text += (i > first ? " " : "") + words[i];
    }
    return text;
}

/// Reads one file line by line; each line goes to the section that it stands in.
class LineReader {
public:
    explicit LineReader(std::vector<CgatsTable>& tables) : tables(tables) {}

    void Read(std::istream& input)
    {
        std::string line;
        while (std::getline(input, line)) {
            ++number;
            if (number == 1 && line.starts_with(Utf8::ByteOrderMark)) {
                line.erase(0, Utf8::ByteOrderMark.size());
            }
            if (!SplitLine(line, words, bare)) {
                throw CgatsError(number, "a quoted text has no end");
            }
            if (!words.empty()) {
                TakeLine();
            }
        }
        if (input.bad()) {
            throw CgatsError(0, "the file can't be read to its end");
        }
        CheckEnd();
    }

private:
    enum class Section { Head, Format, BetweenFormatAndData, Data };

    /// Counts that the head promises are held against what is really there.
    void CheckPromise(const char* keyword, size_t found) const
    {
        const CgatsTable::Keyword* entry = table.FindKeyword(keyword);
        double promised = 0.0;
        if (entry != nullptr && !(ParseNumber(entry->value, promised) && promised == static_cast<double>(found))) {
            throw CgatsError(entry->line,
                             std::string(keyword) + " is " + entry->value + ", but there are " + std::to_string(found));
        }
    }

    void TakeLine()
    {
        switch (section) {
        case Section::Format:
            return TakeFormat();
        case Section::Data:
            return TakeData();
        default:
            return TakeHead();
        }
    }

    void TakeHead()
    {
        const std::string& first = words.front();
        const auto isMark = [&](const char* mark) { return bare > 0 && first == mark; };
        if (isMark("BEGIN_DATA_FORMAT")) {
            if (section != Section::Head) {
                throw CgatsError(number, "a second BEGIN_DATA_FORMAT");
            }
            section = Section::Format;
            table.fieldsLine = number + 1;
        } else if (isMark("BEGIN_DATA")) {
            if (section == Section::Head) {
                throw CgatsError(number, "BEGIN_DATA before the data format");
            }
            section = Section::Data;
        } else if (isMark("KEYWORD")) {
            // Announces a keyword of the file's own; all keywords are taken, announced or not.
        } else if (!begun && words.size() == 1) {
            table.kind = first;
        } else {
            table.keywords.push_back({first, Joined(words, 1), number});
        }
        begun = true;
    }

    void TakeFormat()
    {
        for (std::string& word : words) {
            if (word == "END_DATA_FORMAT") {
                section = Section::BetweenFormatAndData;
                CheckPromise("NUMBER_OF_FIELDS", table.fields.size());
                return;
            }
            table.fields.push_back(std::move(word));
        }
    }

    void TakeData()
    {
        if (bare > 0 && words.front() == "END_DATA") {
            CheckPromise("NUMBER_OF_SETS", table.rows.size());
            std::erase_if(table.keywords, [](const CgatsTable::Keyword& keyword) { return IsCount(keyword.name); });
            tables.push_back(std::exchange(table, {}));
            section = Section::Head;
            begun = false;
            return;
        }
        if (words.size() != table.fields.size()) {
            throw CgatsError(
                number, std::to_string(words.size()) + " values instead of " + std::to_string(table.fields.size()));
        }
        table.rows.push_back({std::exchange(words, {}), number});
    }

    void CheckEnd()
    {
        switch (section) {
        case Section::Format:
            throw CgatsError(number, "END_DATA_FORMAT is missing");
        case Section::BetweenFormatAndData:
            throw CgatsError(number, "BEGIN_DATA is missing");
        case Section::Data:
            throw CgatsError(number, "END_DATA is missing");
        case Section::Head:
            break;
        }
        if (tables.empty() || begun) {
            throw CgatsError(number, "BEGIN_DATA_FORMAT is missing");
        }
    }

    std::vector<CgatsTable>& tables;
    CgatsTable table;
    Section section = Section::Head;
    bool begun = false;  ///< something of the present table has been read
    int number = 0;
    std::vector<std::string> words;
    size_t bare = 0;
};

/// A text for people to read, with a character that can't be shown as "?".
std::string Shown(std::string text)
{
    std::replace_if(
        text.begin(), text.end(), [](unsigned char character) { return std::iscntrl(character) != 0; }, '?');
    return text;
}

/// @param line  where it came from
std::string Quoted(const std::string& text, int line)
{
    const bool hasDouble = text.find('"') != std::string::npos;
    if (text.find_first_of(std::string_view("\r\n\0", 3)) != std::string::npos) {
        throw CgatsError(line, "no file can hold the text '" + Shown(text) + "': it has more than one line");
    }
    if (hasDouble && text.find('\'') != std::string::npos) {
        throw CgatsError(line, "no file can hold the text '" + Shown(text) + "': it has quotes of both kinds");
    }
    const char quote = hasDouble ? '\'' : '"';
    return quote + text + quote;
}

/// A value as it stands in a row: numbers and plain names bare, everything else in quotes.
std::string ValueText(const std::string& text, int line)
{
    double number = 0.0;
    const auto plain = [](unsigned char character) {
        return character < 0x80 && (std::isalnum(character) != 0 || character == '_');
    };
    const bool isName = !text.empty() && std::all_of(text.begin(), text.end(), plain) &&
                        std::isdigit(static_cast<unsigned char>(text.front())) == 0;
    return (isName && !IsOfFormat(text)) || ParseNumber(text, number) ? text : Quoted(text, line);
}

/// The name of a field or a keyword, which stands without quotes.
std::string NameText(const std::string& name, const char* what, int line)
{
    constexpr size_t longest = 127;  // Little CMS takes no more
    const auto fits = [](unsigned char character) {
        return character > 0x20 && character < 0x7f &&
               std::string_view("\"'#").find(static_cast<char>(character)) == std::string_view::npos;
    };
    if (name.empty() || name.size() > longest || IsOfFormat(name) || !std::all_of(name.begin(), name.end(), fits)) {
        throw CgatsError(line, std::string("no ") + what + " can be called '" + Shown(name) + "'");
    }
    return name;
}

/// @param sets  how many rows will follow; nothing where that is not known yet
void WriteHead(const CgatsTable& table, std::optional<size_t> sets, char separator, std::ostream& output)
{
    output << (table.kind.empty() ? "CGATS.17" : NameText(table.kind, "kind of table", 0)) << "\n";
    for (const CgatsTable::Keyword& keyword : table.keywords) {
        if (IsCount(keyword.name)) {
            continue;
        }
        const std::string name = NameText(keyword.name, "keyword", keyword.line);
        if (!IsStandard(name)) {
            output << "KEYWORD \"" << name << "\"\n";
        }
        output << name << " " << Quoted(keyword.value, keyword.line) << "\n";
    }
    output << "NUMBER_OF_FIELDS " << table.fields.size() << "\nBEGIN_DATA_FORMAT\n";
    for (size_t i = 0; i < table.fields.size(); ++i) {
        output << (i > 0 ? std::string(1, separator) : "") << NameText(table.fields[i], "field", table.fieldsLine);
    }
    output << "\nEND_DATA_FORMAT\n";
    if (sets) {
        output << "NUMBER_OF_SETS " << *sets << "\n";
    }
    output << "BEGIN_DATA\n";
}

/// @param back  what was read of what had been written
void RequireSame(const CgatsTable& table, const CgatsTable& back)
{
    table.RequireSameRows(back);
    for (const CgatsTable::Keyword& keyword : table.keywords) {
        if (!IsCount(keyword.name) && back.ValueOf(keyword.name) != table.ValueOf(keyword.name)) {
            throw CgatsError(keyword.line, "the keyword " + keyword.name + " reads back as another one");
        }
    }
}

}  // namespace

CgatsFile CgatsFile::Read(std::istream& input)
{
    CgatsFile file;
    LineReader(file.tables).Read(input);
    return file;
}

CgatsFile CgatsFile::Read(const std::string& fileName)
{
    std::ifstream input(Kestrelon::Utilities::Tools::PathOf(fileName), std::ios::binary);
    if (!input) {
        throw CgatsError(0, "the file can't be opened");
    }
    return Read(input);
}

std::string CgatsFile::HeadText(const CgatsTable& table)
{
    std::ostringstream text;
    WriteHead(table, std::nullopt, '\t', text);
    return text.str();
}

std::string CgatsFile::RowText(const CgatsTable::Row& row, char separator)
{
    std::string text;
    for (const std::string& value : row.values) {
        text += (text.empty() ? "" : std::string(1, separator)) + ValueText(value, row.line);
    }
    return text + "\n";
}

std::string CgatsFile::Text(char separator) const
{
    std::ostringstream output;
    for (size_t i = 0; i < tables.size(); ++i) {
        output << (i > 0 ? "\n" : "");
        WriteHead(tables[i], tables[i].rows.size(), separator, output);
        for (const CgatsTable::Row& row : tables[i].rows) {
            output << RowText(row, separator);
        }
        output << "END_DATA\n";
    }
    std::istringstream written(output.str());
    const CgatsFile back = Read(written);
    for (size_t i = 0; i < tables.size(); ++i) {
        RequireSame(tables[i], back.tables.at(i));
    }
    return output.str();
}

}  // namespace J4Chart
