#include "tools/WhiteBaseFile.h"

#include <sstream>

#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "tools/AtomicFile.h"
#include "tools/ToolError.h"

namespace J4Tool {

using J4Chart::Spectrum;

namespace {

constexpr double HighestReflectance = 2.0;

[[noreturn]] void Refuse(const std::string& fileName, const std::string& reason)
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
    std::ostringstream text;
    file.Write(text);
    WriteAtomically(fileName, text.str());
}

Spectrum LoadWhiteBase(const std::string& fileName)
{
    J4Chart::CgatsFile file;
    J4Chart::CgatsFile::Error error;
    if (!file.Read(fileName, error)) {
        Refuse(fileName, error.Text());
    }
    const J4Chart::CgatsTable& table = file.Tables().front();
    if (table.rows.size() != 1) {
        Refuse(fileName, "there are " + std::to_string(table.rows.size()) + " data sets instead of 1");
    }
    const auto columns = J4Chart::FindSpectralFields(table);
    Spectrum whiteBase{};
    for (size_t band = 0; band < whiteBase.size(); ++band) {
        if (columns[band] < 0) {
            Refuse(fileName, "the field " + J4Chart::SpectralField(band) + " is missing");
        }
        const std::string& text = table.rows.front().values[static_cast<size_t>(columns[band])];
        double value = 0.0;
        if (!J4Chart::ParseNumber(text, value) || value <= 0.0 || value > HighestReflectance) {
            Refuse(fileName, "line " + std::to_string(table.rows.front().line) + ": " + J4Chart::SpectralField(band) +
                                 " '" + text + "' is not a reflectance factor above 0 and up to 2");
        }
        whiteBase[band] = static_cast<float>(value);
    }
    return whiteBase;
}

}  // namespace J4Tool
