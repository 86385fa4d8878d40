// A text file of the CGATS.17 family with one table or several. Reads and writes the form of the file and knows
// nothing of what the values mean.
#pragma once

#include <istream>
#include <string>
#include <utility>
#include <vector>

#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsTable.h"

namespace J4Chart {

class CgatsFile {
public:
    /// Reads a whole file: lines end in LF or CR LF, "#" begins a comment, words are separated by blanks and
    /// tabs, a text with blanks stands in double or single quotes. One data set stands in one line. Further
    /// tables follow behind END_DATA, each with its own head and format.
    /// @throws CgatsError for a file that is not whole, which means at least one table
    static CgatsFile Read(std::istream& input);
    static CgatsFile Read(const std::string& fileName);

    /// All tables in the form that the common readers take: counts first, keywords that are not of the standard
    /// announced by KEYWORD, values in quotes. It has been read back, and is the same.
    /// @param separator  between fields and between the values of a row, a tab or a blank
    /// @throws CgatsError for a text that no file can hold, with the line it came from
    std::string Text(char separator = '\t') const;

    /// A table up to BEGIN_DATA, without the number of sets, for a file that grows row by row.
    /// @throws CgatsError as Text()
    static std::string HeadText(const CgatsTable& table);

    /// One row as it stands in a file, with the end of its line.
    /// @throws CgatsError as Text()
    static std::string RowText(const CgatsTable::Row& row, char separator = '\t');

    const std::vector<CgatsTable>& Tables() const { return tables; }
    void Add(CgatsTable table) { tables.push_back(std::move(table)); }

private:
    std::vector<CgatsTable> tables;
};

}  // namespace J4Chart
