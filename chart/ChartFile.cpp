#include "chart/ChartFile.h"

#include <algorithm>
#include <cctype>
#include <fstream>

#include "Utilities/Tools/FilePath.h"
#include "chart/csv/CsvFile.h"

namespace J4Chart::ChartFile {

CgatsFile Read(const std::string& fileName)
{
    std::ifstream input(Kestrelon::Utilities::Tools::PathOf(fileName), std::ios::binary);
    if (!input) {
        throw CgatsError(0, "the file can't be opened");
    }
    if (!HasEnding(fileName, ".csv")) {
        return CgatsFile::Read(input);
    }
    CgatsFile file;
    file.Add(CsvFile::Read(input));
    return file;
}

bool HasEnding(const std::string& fileName, const std::string& ending)
{
    return fileName.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), fileName.rbegin(),
                      [](unsigned char wanted, unsigned char found) { return wanted == std::tolower(found); });
}

}  // namespace J4Chart::ChartFile
