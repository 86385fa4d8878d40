// A text file of the CGATS.17 family, taken apart into keywords and rows of fields. It knows the form of the
// file and nothing of what the values mean.
#pragma once

#include <istream>
#include <map>
#include <string>
#include <vector>

namespace J4Bench {

class CgatsFile {
public:
    struct Keyword {
        std::string value;  ///< quotes taken off; several words are joined by single blanks
        int line = 0;
    };

    struct Row {
        std::vector<std::string> values;  ///< one for each field
        int line = 0;
    };

    /// What is wrong with a file, and where; line 0 means the file as a whole.
    struct Error {
        int line = 0;
        std::string reason;

        /// For instance "line 12: 40 values instead of 41".
        std::string Text() const;
    };

    /// Reads a whole file: lines end in LF or CR LF, "#" begins a comment, words are separated by blanks and
    /// tabs, a text with blanks stands in double quotes. One data set stands in one line.
    /// @return true when the file is whole; false with error set, and the object is of no use then
    bool Read(std::istream& input, Error& error);

    /// A keyword of the head; nullptr where the file has none.
    const Keyword* FindKeyword(const std::string& name) const;

    const std::vector<std::string>& Fields() const { return fields; }
    const std::vector<Row>& Rows() const { return rows; }

private:
    std::map<std::string, Keyword> keywords;
    std::vector<std::string> fields;
    std::vector<Row> rows;
};

}  // namespace J4Bench
