// The file of measured data: spectra, XYZ and Lab of the patches with their names, places and device values, and
// the conditions of the measurement. A partial file has the same form and lacks patches, and its end while the scan
// goes on.
#pragma once

#include <string>

#include "tools/ChartLayout.h"
#include "tools/Measurements.h"

namespace J4Tool {

class MeasurementFile {
public:
    /// Cgats holds everything; Spectra is the plain sheet of spectra ("SPECT") that colour management programs read.
    enum class Form { Cgats, Spectra };

    /// REPEATS announces that rows were scanned several times: the patches have a REPEAT_SPREAD then; DENSITIES
    /// that they have densities.
    using Conditions = J4Chart::Chart::Conditions;

    /// The whole text of the file, with the patches that are measured. It has been read back.
    /// @throws ToolError for names and values of the layout that no file can hold
    static std::string Text(const ChartLayout& layout, const Measurements& measurements, const Conditions& conditions,
                            Form form);

    /// @throws ToolError where Text() would, before anything is measured
    static void RequireHolds(const ChartLayout& layout);

    /// The beginning of a partial file that grows with the scan, and what is added to it for patches that were measured.
    static std::string HeadText(const ChartLayout& layout, const Conditions& conditions);
    static std::string RowsText(const ChartLayout& layout, const std::vector<size_t>& patches,
                                const Measurements& measurements, const Conditions& conditions);

    /// Reads what a partial file holds of this layout; also one that was cut off while it was written.
    /// @param conditions  those of the scan that goes on: serial numbers, REPEATS and DENSITIES must be the same
    /// @throws ToolError when the file is broken or belongs to another layout, table or instrument
    static Measurements Load(const std::string& fileName, const ChartLayout& layout, const Conditions& conditions);
};

}  // namespace J4Tool
