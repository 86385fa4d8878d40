// The patches of a CGATS table as colours: what a file with measured or with reference values tells of each.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "chart/cgats/CgatsFile.h"
#include "chart/colour/Colorimetry.h"

namespace J4Tool {

class ColourTable {
public:
    struct Place {
        double x = 0.0;       ///< middle of the patch, mm
        double y = 0.0;       ///< middle of the patch, mm
        double width = 0.0;   ///< along its row, mm
        double height = 0.0;  ///< across its row, mm
    };

    struct Patch {
        std::string name;  ///< SAMPLE_NAME, or SAMPLE_ID where there is no name
        std::string id;    ///< SAMPLE_ID; empty where the table has none
        std::optional<Place> place;
        std::optional<std::array<double, 2>> scan;  ///< number of the row that it was scanned in, and its place there
        std::optional<J4Chart::Spectrum> spectrum;

        /// From the spectrum; from the table's LAB fields, or else its XYZ fields, where there is none.
        std::optional<J4Chart::Colorimetry::Triple> lab;
    };

    /// Takes the first table of a file that has patches with colour values.
    /// @param fileName  for the texts of failures
    /// @throws ToolError with line and reason; when no table has colour values
    ColourTable(const J4Chart::CgatsFile& file, const std::string& fileName);

    const std::vector<Patch>& Patches() const { return patches; }

    /// The table itself, for its keywords.
    const J4Chart::CgatsTable& Source() const { return source; }

private:
    J4Chart::CgatsTable source;
    std::vector<Patch> patches;
};

}  // namespace J4Tool
