// A chart: its patches with what is known of their colours, and apart from that where they lie.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "chart/Place.h"
#include "chart/colour/Colorimetry.h"
#include "chart/colour/Densities.h"
#include "chart/colour/Spectrum.h"

namespace J4Chart {

/// How a patch was read, where its file tells.
struct Reading {
    std::string way;        ///< SCAN_WAY
    size_t samples = 0;     ///< that were averaged; 0 where the instrument does not tell
    double spread = 0.0;    ///< of these samples, CIE 1976, root mean square
    double residual = 0.0;  ///< of the edges of its row, mm; 0 unless raw samples were fitted
};

struct Patch {
    std::string name;                 ///< SAMPLE_NAME, or SAMPLE_ID where there is no name
    std::string id;                   ///< SAMPLE_ID; empty where there is none
    int line = 0;                     ///< in the file that it was read from
    std::vector<std::string> device;  ///< ink or screen values, one for each of the chart's device fields
    std::optional<Spectrum> spectrum;
    std::optional<Colorimetry::Triple> xyz;  ///< D50 and 2 degrees, white has Y = 100
    std::optional<Colorimetry::Triple> lab;  ///< D50 and 2 degrees; nothing where the file's are for others
    std::optional<Reading> reading;
    std::optional<Densities> densities;  ///< as the instrument told them
    std::optional<double> repeatSpread;  ///< of several measurements from their mean, CIEDE2000

    /// Its SAMPLE_ID in a file where it stands at this place, counted from 0: its own, else the place counted from 1.
    std::string IdAt(size_t place) const { return id.empty() ? std::to_string(place + 1) : id; }

    /// CIELab: of the spectrum, or else the patch's own, or else of XYZ; nothing where there is none of them.
    std::optional<Colorimetry::Triple> Colour() const;
};

/// What does not belong on a chart and lies over its patches: a line with round ends, or where both are the same, a
/// speck.
struct Blemish {
    Point start;         ///< mm, in the coordinates of the places
    Point end;           ///< mm
    double width = 0.0;  ///< mm
    float reflectance = 0.0f;
};

struct Chart {
    /// Where a patch was scanned, both counted from 1.
    struct RowPlace {
        size_t row = 0;
        size_t column = 0;
    };

    /// Keyword and value, for instance "INSTRUMENT_SERIAL" and "240118".
    using Conditions = std::vector<std::pair<std::string, std::string>>;

    size_t table = 0;  ///< which one of its file
    Conditions conditions;
    std::vector<std::string> deviceFields;  ///< for instance "CMYK_C"
    BandRange bands;                        ///< that the file's spectra have; the others repeat the nearest of them
    std::vector<Patch> patches;
    std::vector<Place> places;        ///< one for each patch, or none at all
    std::vector<RowPlace> rowPlaces;  ///< one for each patch, or none at all
    std::optional<Spectrum> paper;    ///< beside the patches
    std::vector<Blemish> blemishes;   ///< the later ones on top; for the virtual table, all others see a clean chart

    /// Value of a condition, the last one where it stands there several times; empty where there is none.
    std::string Condition(const std::string& keyword) const;
};

}  // namespace J4Chart
