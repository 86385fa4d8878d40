// The colours that a chart is made of: device values with names, from a CGATS file or made by a rule, with whatever else
// their file tells of them.
#pragma once

#include <array>
#include <optional>
#include <string>
#include <vector>

#include "chart/cgats/CgatsFile.h"
#include "chart/colour/Colorimetry.h"

namespace J4Tool {

/// An ink beside the four of the process.
struct SpotInk {
    std::string name;            ///< as the print system knows it
    std::array<double, 4> cmyk;  ///< what stands for its solid where there is no such ink, 0 to 1
};

class ColourList {
public:
    struct Colour {
        std::string name;
        std::string id;                                   ///< SAMPLE_ID; empty where the file has none
        int line = 0;                                     ///< in its file; 0 for one that was made by a rule
        std::vector<double> values;                       ///< R, G, B, or C, M, Y, K and the spot inks; 0 to 1
        std::optional<J4Chart::Colorimetry::Triple> lab;  ///< where the file has spectra, Lab or XYZ; D50
    };

    /// What the file writes for full light or ink, where a person tells it; else its DEVICE_MAXIMUM, else these.
    struct Scales {
        std::optional<double> rgb;   ///< 255
        std::optional<double> cmyk;  ///< of spot inks too, 100
    };

    /// Reads RGB_R, RGB_G, RGB_B, or CMYK_C, CMYK_M, CMYK_Y, CMYK_K (0 to 100) and with them SPOT_1, SPOT_2 and so on
    /// (0 to 100), whose inks the keywords SPOT_1_NAME and SPOT_1_CMYK ("0 60 100 0") tell.
    /// @throws ToolError with file, line and reason, also for values that look as if they were on another scale
    static ColourList Load(const std::string& fileName, const Scales& scales);

    /// @throws J4Chart::CgatsError
    static ColourList Read(const J4Chart::CgatsFile& file, const Scales& scales);

    bool IsRgb() const { return isRgb; }

    /// What the list writes for an ink or light in full.
    double Maximum() const { return maximum; }

    const std::vector<SpotInk>& Spots() const { return spots; }

    /// What stands for the solids of these.
    std::vector<std::array<double, 4>> SpotSolids() const;

    const std::vector<Colour>& Colours() const { return colours; }

    /// As it was read, one row for each colour.
    const J4Chart::CgatsTable& Table() const { return table; }

private:
    void FindInks();
    void ReadSpots();
    std::optional<double> ToldMaximum(const Scales& scales) const;
    void RequireAllPrinted() const;
    void RequireScale() const;

    bool isRgb = false;
    double maximum = 100.0;
    std::vector<size_t> fields;  ///< of the device values, as Colour::values has them
    std::vector<SpotInk> spots;
    std::vector<Colour> colours;
    J4Chart::CgatsTable table;
};

}  // namespace J4Tool
