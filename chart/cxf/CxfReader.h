// Reads the objects of a CxF3 file (ISO 17972-1) as a chart's table: names, spectra, colours, device values, densities,
// and what CxfFile keeps in tags.
#pragma once

#include <istream>

#include "chart/cgats/CgatsTable.h"

namespace J4Chart {

class CxfReader {
public:
    /// Larger or deeper files are nobody's chart.
    static constexpr size_t LargestSize = 256u << 20;
    static constexpr int LargestDepth = 64;
    static constexpr size_t LargestTable = 5'000'000;  ///< rows times fields

    /// Each object with a colour or device values becomes a row; lines are those of the file. RGB becomes 0 to 255.
    /// @throws CgatsError for what is no CxF3 in UTF-8, and for objects that do not have the same kinds of values
    static CgatsTable Read(std::istream& input);
};

}  // namespace J4Chart
