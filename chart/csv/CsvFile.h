// A table as comma-separated values (RFC 4180): its fields in the first record, its rows in the others. Keywords have no
// place in it.
#pragma once

#include <istream>
#include <string>

#include "chart/cgats/CgatsTable.h"

namespace J4Chart {

class CsvFile {
public:
    /// Records end in CR LF or LF; a byte order mark and empty lines are passed over.
    /// @throws CgatsError for a quoted value without an end or with something behind it, a quote within a bare value, a
    ///         record with more or fewer values than there are fields
    static CgatsTable Read(std::istream& input);

    /// Fields and rows, each record a line that ends in CR LF. It has been read back, and is the same.
    /// @throws CgatsError for a row that no file can hold
    static std::string Text(const CgatsTable& table);
};

}  // namespace J4Chart
