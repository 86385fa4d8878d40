// Several measurements of one chart: patches go by their names, and files that are of different charts are refused.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "chart/Chart.h"

namespace J4Tool {

class MeasurementSeries {
public:
    struct Measurement {
        std::string file;
        std::string name;      ///< of the file, without folders
        J4Chart::Chart chart;  ///< every patch has a colour; the patches are in the order of the first file
    };

    /// @param spectra  every file has to have them; colours alone won't do
    /// @throws ToolError with the file, and the line where there is one: a file that can't be read, a name that stands
    ///         there twice, another number of patches, a patch that the first file does not have, other device values; with spectra,
    ///         another measuring condition
    MeasurementSeries(const std::vector<std::string>& files, bool spectra);

    const std::vector<Measurement>& Measurements() const { return measurements; }

    /// Names the files that have the values of an earlier one, of which one may have been given twice; empty where none
    /// has.
    std::string Notice() const;

    /// The patches as the first file has them.
    const std::vector<J4Chart::Patch>& Patches() const { return measurements.front().chart.patches; }

    /// The colours of a patch in all measurements, CIELab.
    std::vector<J4Chart::Colorimetry::Triple> Colours(size_t patch) const;

    /// The spectra of a patch in all measurements.
    /// @pre all have them
    std::vector<J4Chart::Spectrum> Spectra(size_t patch) const;

private:
    void Add(Measurement measurement);

    std::vector<Measurement> measurements;
};

}  // namespace J4Tool
