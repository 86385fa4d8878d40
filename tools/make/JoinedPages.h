// The measured pages of one chart as one file, which is what profiling software takes.
#pragma once

#include <string>
#include <vector>

#include "chart/cgats/CgatsTable.h"

namespace J4Tool {

class JoinedPages {
public:
    /// @param files  measured pages in their order
    /// @throws ToolError with file, line and reason: a file that can't be read, other fields than the first file has, a
    ///         patch that stands in two files
    explicit JoinedPages(const std::vector<std::string>& files);

    /// All patches, with the field PAGE, numbered anew where ids are missing or not unique; without places, since pages lie in the same place. What the files
    /// agree in stays in the head, CREATED is the latest.
    const J4Chart::CgatsTable& Table() const { return joined; }

private:
    void Add(const std::string& file);
    void NumberRows();
    void AddRows(const J4Chart::CgatsTable& table, const std::string& file, const std::string& page);
    void AgreeOn(const J4Chart::CgatsTable& table);

    struct Seen {
        std::string name;
        std::string file;
    };

    J4Chart::CgatsTable joined;
    std::vector<Seen> seen;
    size_t pages = 0;
};

}  // namespace J4Tool
