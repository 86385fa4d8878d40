// One table of a CGATS.17 file: its kind, its keywords, and rows of values under named fields, all kept as the
// texts of the file.
#pragma once

#include <string>
#include <vector>

namespace J4Chart {

struct CgatsTable {
    struct Keyword {
        std::string name;
        std::string value;  ///< quotes taken off; several words are joined by single blanks
        int line = 0;       ///< in the file it was read from
    };

    struct Row {
        std::vector<std::string> values;  ///< one for each field
        int line = 0;
    };

    std::string kind;  ///< first line of the table, for instance "CGATS.17"; empty where the file has none
    std::vector<Keyword> keywords;
    std::vector<std::string> fields;
    int fieldsLine = 0;  ///< where the fields begin in the file they were read from
    std::vector<Row> rows;

    /// A keyword of the head, the last one where it stands there several times; nullptr where there is none.
    const Keyword* FindKeyword(const std::string& name) const;

    /// Value of a keyword; empty where there is none.
    std::string ValueOf(const std::string& name) const;

    /// Replaces the value of a keyword, or adds it behind the others.
    void SetKeyword(const std::string& name, const std::string& value);

    /// Index of a field; -1 where there is none.
    int FindField(const std::string& name) const;

    /// @param back  what was read of what had been written
    /// @throws CgatsError where its fields or rows are others, with the line that they came from
    void RequireSameRows(const CgatsTable& back) const;
};

}  // namespace J4Chart
