// Chart files as texts.
#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace J4Test {

inline std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// A file with one table; head and rows are whole lines.
inline std::string CgatsText(const std::string& fields, const std::string& rows, const std::string& head = {})
{
    return "CGATS.17\n" + head + "BEGIN_DATA_FORMAT\n" + fields + "\nEND_DATA_FORMAT\nBEGIN_DATA\n" + rows +
           "END_DATA\n";
}

/// "\tSPECTRAL_NM380 ... \tSPECTRAL_NM730".
inline std::string SpectralFields()
{
    std::string fields;
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        fields += "\tSPECTRAL_NM" + std::to_string(wavelength);
    }
    return fields;
}

struct FlatPatch {
    std::string name;
    double x, y, width, height;   ///< mm
    double reflectance;           ///< at all wavelengths
    std::vector<double> bands{};  ///< instead of it, 36
};

/// A whole chart file with places and spectra; head holds further keyword lines.
inline std::string ChartText(const std::vector<FlatPatch>& patches, const std::string& head = {})
{
    std::ostringstream rows;
    for (const FlatPatch& patch : patches) {
        rows << patch.name << "\t" << patch.x << "\t" << patch.y << "\t" << patch.width << "\t" << patch.height;
        for (const double band : patch.bands.empty() ? std::vector<double>(36, patch.reflectance) : patch.bands) {
            rows << "\t" << band;
        }
        rows << "\n";
    }
    return CgatsText("SAMPLE_NAME\tX\tY\tWIDTH\tHEIGHT" + SpectralFields(), rows.str(),
                     head + "NUMBER_OF_FIELDS 41\nNUMBER_OF_SETS " + std::to_string(patches.size()) + "\n");
}

}  // namespace J4Test
