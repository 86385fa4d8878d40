// Chart files as texts, for tests.
#pragma once

#include <sstream>
#include <string>
#include <vector>

namespace J4Bench {

struct FlatPatch {
    const char* name;
    double x, y, width, height;  ///< mm
    double reflectance;          ///< at all wavelengths
};

inline std::string Replaced(std::string text, const std::string& from, const std::string& to)
{
    for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
    return text;
}

/// A whole chart file; head holds further keyword lines.
inline std::string ChartText(const std::vector<FlatPatch>& patches, const std::string& head = {})
{
    std::ostringstream text;
    text << "CGATS.17\n" << head << "NUMBER_OF_FIELDS 41\nBEGIN_DATA_FORMAT\nSAMPLE_NAME\tX\tY\tWIDTH\tHEIGHT";
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        text << "\tSPECTRAL_NM" << wavelength;
    }
    text << "\nEND_DATA_FORMAT\nNUMBER_OF_SETS " << patches.size() << "\nBEGIN_DATA\n";
    for (const FlatPatch& patch : patches) {
        text << patch.name << "\t" << patch.x << "\t" << patch.y << "\t" << patch.width << "\t" << patch.height;
        for (int band = 0; band < 36; ++band) {
            text << "\t" << patch.reflectance;
        }
        text << "\n";
    }
    text << "END_DATA\n";
    return text.str();
}

}  // namespace J4Bench
