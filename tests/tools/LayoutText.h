// Layouts for the tests of the tool.
#pragma once

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "chart/cgats/CgatsFields.h"
#include "chart/cgats/CgatsFile.h"
#include "tools/ChartLayout.h"

namespace J4Tool {

inline J4Chart::CgatsTable TableOf(const std::string& text)
{
    J4Chart::CgatsFile file;
    J4Chart::CgatsFile::Error error;
    std::istringstream input(text);
    EXPECT_TRUE(file.Read(input, error)) << error.Text();
    return file.Tables().front();
}

/// A flat spectrum of its own for each patch of a chart.
inline float ReflectanceOf(size_t row, size_t column)
{
    return 0.03f + 0.05f * static_cast<float>((row * 7 + column * 3) % 17);
}

/// Rows of patches of 10 by 8 mm with gaps of 2 mm, the middle of the first at 200/200, named "A1", "A2", ... "B1",
/// with flat reference spectra.
inline std::string GridText(size_t rows, size_t columns)
{
    using namespace J4Chart;
    std::ostringstream text;
    text << "CGATS.17\nBEGIN_DATA_FORMAT\nSAMPLE_NAME X Y WIDTH HEIGHT";
    for (size_t band = 0; band < SpectrumLength; ++band) {
        text << " " << J4Chart::SpectralField(band);
    }
    text << "\nEND_DATA_FORMAT\nBEGIN_DATA\n";
    for (size_t row = 0; row < rows; ++row) {
        for (size_t column = 0; column < columns; ++column) {
            text << static_cast<char>('A' + row) << column + 1 << " " << 200 + 12 * column << " " << 200 + 10 * row
                 << " 10 8";
            for (int band = 0; band < SpectrumLength; ++band) {
                text << " " << J4Chart::NumberText(ReflectanceOf(row, column));
            }
            text << "\n";
        }
    }
    text << "END_DATA\n";
    return text.str();
}

inline ChartLayout GridLayout(size_t rows, size_t columns)
{
    return ChartLayout::FromTable(TableOf(GridText(rows, columns)), {}, false);
}

}  // namespace J4Tool
