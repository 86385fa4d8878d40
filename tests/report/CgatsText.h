// Small CGATS files for the tests of the report.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "tools/report/ReportData.h"

namespace J4Tool {

/// A file with the given head, fields and rows, each row a line.
inline ReportData::Source SourceOf(const std::string& fields, const std::string& rows, const std::string& head = "")
{
    std::istringstream input("CGATS.17\n" + head + "BEGIN_DATA_FORMAT\n" + fields + "\nEND_DATA_FORMAT\nBEGIN_DATA\n" +
                             rows + "END_DATA\n");
    J4Chart::CgatsFile file;
    J4Chart::CgatsFile::Error error;
    EXPECT_TRUE(file.Read(input, error)) << error.Text();
    return {"chart.cgats", ColourTable(file, "chart.cgats")};
}

/// "SPECTRAL_NM380 ... SPECTRAL_NM730".
inline std::string SpectralFields()
{
    std::string fields;
    for (int wavelength = 380; wavelength <= 730; wavelength += 10) {
        fields += " SPECTRAL_NM" + std::to_string(wavelength);
    }
    return fields;
}

/// The same reflectance in all 36 bands.
inline std::string FlatSpectrum(const std::string& value)
{
    std::string values;
    for (int band = 0; band < 36; ++band) {
        values += " " + value;
    }
    return values;
}

}  // namespace J4Tool
