// The rows of a scan on the disk as soon as they are measured: each is appended to the partial file and flushed through,
// so that whatever ends the program or the machine costs no more than the row in hand.
#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "tools/MeasurementFile.h"
#include "tools/Measurements.h"

namespace J4Tool {

class PartialFile {
public:
    PartialFile(std::string name, const ChartLayout& layout, MeasurementFile::Conditions conditions);
    ~PartialFile();
    PartialFile(const PartialFile&) = delete;
    PartialFile& operator=(const PartialFile&) = delete;

    /// Adds patches; the file begins with the first of them. What can't be written now is tried again with the next.
    /// @return why it could not be written, for people; empty when all is on the disk
    std::string Add(const std::vector<size_t>& patches, const Measurements& measurements);

    /// Gives the file the form of a measured file that lacks patches, which other programs read too.
    /// @return as above; the rows stay on the disk as they were then
    std::string End(const Measurements& measurements);

    void Remove();

    const std::string& Name() const { return name; }

private:
    std::string Begin(const Measurements& measurements);
    void Close();

    std::string name;
    const ChartLayout& layout;
    MeasurementFile::Conditions conditions;
    std::FILE* file = nullptr;
    long long size = 0;     ///< of what is whole in the file, bytes
    std::string unwritten;  ///< rows that wait
};

}  // namespace J4Tool
