#include "simulator/chart/CgatsFile.h"

#include <algorithm>
#include <utility>

#include "simulator/bench/TextList.h"

namespace J4Bench {

namespace {

/// Splits a line into words. False when a quoted text has no end.
bool SplitLine(const std::string& line, std::vector<std::string>& words)
{
    words.clear();
    size_t at = 0;
    while (at < line.size()) {
        const char character = line[at];
        if (character == '#') {
            break;
        }
        if (character == ' ' || character == '\t' || character == '\r') {
            ++at;
        } else if (character == '"') {
            const size_t end = line.find('"', at + 1);
            if (end == std::string::npos) {
                return false;
            }
            words.push_back(line.substr(at + 1, end - at - 1));
            at = end + 1;
        } else {
            const size_t end = std::min(line.find_first_of(" \t\r\"#", at), line.size());
            words.push_back(line.substr(at, end - at));
            at = end;
        }
    }
    return true;
}

}  // namespace

std::string CgatsFile::Error::Text() const
{
    return line > 0 ? "line " + std::to_string(line) + ": " + reason : reason;
}

const CgatsFile::Keyword* CgatsFile::FindKeyword(const std::string& name) const
{
    const auto found = keywords.find(name);
    return found == keywords.end() ? nullptr : &found->second;
}

bool CgatsFile::Read(std::istream& input, Error& error)
{
    keywords.clear();
    fields.clear();
    rows.clear();
    enum class Section { Head, Format, BetweenFormatAndData, Data, End } section = Section::Head;
    int number = 0;
    const auto fail = [&](int line, std::string reason) {
        error = {line, std::move(reason)};
        return false;
    };
    // Counts that the head promises are held against what is really there.
    const auto promised = [&](const char* keyword, size_t found) {
        const Keyword* entry = FindKeyword(keyword);
        if (entry == nullptr || entry->value == std::to_string(found)) {
            return true;
        }
        return fail(entry->line,
                    std::string(keyword) + " is " + entry->value + ", but there are " + std::to_string(found));
    };

    std::string line;
    std::vector<std::string> words;
    while (section != Section::End && std::getline(input, line)) {
        ++number;
        if (!SplitLine(line, words)) {
            return fail(number, "a quoted text has no end");
        }
        if (words.empty()) {
            continue;
        }
        const std::string& first = words.front();
        if (section == Section::Format) {
            for (const std::string& word : words) {
                if (word == "END_DATA_FORMAT") {
                    section = Section::BetweenFormatAndData;
                    break;
                }
                fields.push_back(word);
            }
            if (section == Section::BetweenFormatAndData && !promised("NUMBER_OF_FIELDS", fields.size())) {
                return false;
            }
        } else if (section == Section::Data) {
            if (first == "END_DATA") {
                section = Section::End;
            } else if (words.size() != fields.size()) {
                return fail(number,
                            std::to_string(words.size()) + " values instead of " + std::to_string(fields.size()));
            } else {
                rows.push_back({words, number});
            }
        } else if (first == "BEGIN_DATA_FORMAT") {
            if (section != Section::Head) {
                return fail(number, "a second BEGIN_DATA_FORMAT");
            }
            section = Section::Format;
        } else if (first == "BEGIN_DATA") {
            if (section == Section::Head) {
                return fail(number, "BEGIN_DATA before the data format");
            }
            section = Section::Data;
        } else if (first == "KEYWORD") {
            // Announces a keyword of the file's own; all keywords are taken, announced or not.
        } else {
            std::string value;
            for (size_t i = 1; i < words.size(); ++i) {
                AppendToList(value, words[i], ' ');
            }
            keywords[first] = {std::move(value), number};
        }
    }
    if (input.bad()) {
        return fail(0, "the file can't be read to its end");
    }
    switch (section) {
        case Section::Head:
            return fail(number, "BEGIN_DATA_FORMAT is missing");
        case Section::Format:
            return fail(number, "END_DATA_FORMAT is missing");
        case Section::BetweenFormatAndData:
            return fail(number, "BEGIN_DATA is missing");
        case Section::Data:
            return fail(number, "END_DATA is missing");
        case Section::End:
            break;
    }
    return promised("NUMBER_OF_SETS", rows.size());
}

}  // namespace J4Bench
