#include "tools/WhiteBaseFile.h"

#include <utility>
#include <vector>

#include "chart/ChartReader.h"
#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "tools/AtomicFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

using J4Chart::Spectrum;

namespace {

[[noreturn]] void RefuseWhiteBase(const std::string& fileName, const std::string& reason)
{
    throw ToolError(ExitCode::File, "white base file '" + fileName + "': " + reason,
                    "It needs one data set with SPECTRAL_NM380 to SPECTRAL_NM730, reflectance factors above 0.");
}

}  // namespace

void SaveWhiteBase(const std::string& fileName, const Spectrum& whiteBase, const std::string& date,
                   const std::string& tableSerial)
{
    J4Chart::CgatsTable table;
    table.kind = "CGATS.17";
    table.SetKeyword("ORIGINATOR", "j4tavla");
    table.SetKeyword("DESCRIPTOR", "White base");
    table.SetKeyword("TABLE_SERIAL", tableSerial);
    table.SetKeyword("WHITE_BASE_DATE", date);
    table.fields = {"SAMPLE_ID"};
    table.rows.push_back({{"1"}, 0});
    for (size_t band = 0; band < whiteBase.size(); ++band) {
        table.fields.push_back(J4Chart::SpectralField(band));
        table.rows.front().values.push_back(J4Chart::NumberText(whiteBase[band]));
    }
    J4Chart::CgatsFile file;
    file.Add(std::move(table));
    WriteAtomically(fileName, file.Text());
}

Spectrum LoadWhiteBase(const std::string& fileName)
{
    std::vector<J4Chart::Patch> whites;
    try {
        J4Chart::ChartReader::Wanted wanted;
        wanted.names = false;
        wanted.spectra = true;
        whites = J4Chart::ChartReader::Read(J4Chart::CgatsFile::Read(fileName), wanted).patches;
    } catch (const J4Chart::CgatsError& error) {
        RefuseWhiteBase(fileName, error.what());
    }
    if (whites.size() != 1) {
        RefuseWhiteBase(fileName, "there are " + std::to_string(whites.size()) + " data sets instead of 1");
    }
    const Spectrum& whiteBase = *whites.front().spectrum;
    for (size_t band = 0; band < whiteBase.size(); ++band) {
        if (whiteBase[band] <= 0.0f) {
            const std::string reason =
                J4Chart::SpectralField(band) + " '" + J4Chart::NumberText(whiteBase[band]) + "' is not above 0";
            RefuseWhiteBase(fileName, J4Chart::CgatsError(whites.front().line, reason).what());
        }
    }
    return whiteBase;
}

}  // namespace J4Tool
