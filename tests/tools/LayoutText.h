// Layouts for the tests of the tool.
#pragma once

#include <sstream>
#include <string>
#include <vector>

#include "tests/support/ChartText.h"
#include "tools/ChartLayout.h"

namespace J4Tool {

using J4Test::CgatsText;

inline J4Chart::CgatsFile FileOf(const std::string& text)
{
    std::istringstream input(text);
    return J4Chart::CgatsFile::Read(input);
}

inline ChartLayout LayoutOf(const std::string& text, const J4Chart::Grid& grid = {}, bool measuredByHand = false)
{
    return ChartLayout::Read(FileOf(text), grid, measuredByHand);
}

/// A flat spectrum of its own for each patch of a chart.
inline float ReflectanceOf(size_t row, size_t column)
{
    return 0.03f + 0.05f * static_cast<float>((row * 7 + column * 3) % 17);
}

/// Rows of patches of 10 by 8 mm with gaps of 2 mm, the middle of the first at 200/200, named "A1", "A2", ... "B1",
/// with flat reference spectra.
inline ChartLayout GridLayout(size_t rows, size_t columns)
{
    std::vector<J4Test::FlatPatch> patches;
    for (size_t i = 0; i < rows * columns; ++i) {
        const size_t row = i / columns;
        const size_t column = i % columns;
        patches.push_back({static_cast<char>('A' + row) + std::to_string(column + 1),
                           200.0 + 12.0 * static_cast<double>(column), 200.0 + 10.0 * static_cast<double>(row), 10, 8,
                           ReflectanceOf(row, column)});
    }
    return LayoutOf(J4Test::ChartText(patches));
}

}  // namespace J4Tool
