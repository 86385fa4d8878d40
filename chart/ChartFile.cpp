#include "chart/ChartFile.h"

#include <algorithm>
#include <cctype>
#include <fstream>

#include "Utilities/Tools/FilePath.h"
#include "chart/csv/CsvFile.h"
#include "chart/cxf/CxfReader.h"

namespace J4Chart::ChartFile {

namespace {

/// Looks at the first character, behind a byte order mark of whatever encoding; the file is at its beginning then.
bool BeginsAsXml(std::istream& input)
{
    int character = input.get();
    while (character != std::istream::traits_type::eof() &&
           (character >= 0x80 || character == 0 || std::isspace(character) != 0)) {
        character = input.get();
    }
    input.clear();
    input.seekg(0);
    return character == '<';
}

}  // namespace

CgatsFile Read(const std::string& fileName)
{
    std::ifstream input(Kestrelon::Utilities::Tools::PathOf(fileName), std::ios::binary);
    if (!input) {
        throw CgatsError(0, "the file can't be opened");
    }
    const bool isCsv = HasEnding(fileName, ".csv");
    if (!isCsv && !BeginsAsXml(input)) {
        return CgatsFile::Read(input);
    }
    CgatsFile file;
    file.Add(isCsv ? CsvFile::Read(input) : CxfReader::Read(input));
    return file;
}

bool HasEnding(const std::string& fileName, const std::string& ending)
{
    return fileName.size() >= ending.size() &&
           std::equal(ending.rbegin(), ending.rend(), fileName.rbegin(),
                      [](unsigned char wanted, unsigned char found) { return wanted == std::tolower(found); });
}

}  // namespace J4Chart::ChartFile
