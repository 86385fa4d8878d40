// A chart's table as a CxF3 file (ISO 17972-1): each patch an object with its spectrum, its colour values and its device
// values; conditions, places and everything else of the table as tags, so that nothing is lost.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "chart/cgats/CgatsTable.h"

namespace J4Chart {

class CxfFile {
public:
    static constexpr const char* Namespace = "http://colorexchangeformat.com/CxF3-core";

    /// The collection of tags for fields that have no element of their own.
    static constexpr const char* FieldTags = "Fields";

    /// In the order of DensityFields.
    static constexpr std::array<const char*, 4> DensityFilters = {"Red", "Green", "Blue", "Visual"};

    /// What the format can't hold of measured noise: X, Y, Z and L* below 0. Down to these they are written as 0.
    static constexpr double LowestTristimulus = -0.05;
    static constexpr double LowestLightness = -0.5;

    /// What the table does not tell.
    struct Origin {
        std::string creator;
        std::string date;  ///< of now, "2026-03-01T12:00:00Z"; stands for CREATED where the table has none
        std::optional<int> screenMaximum;  ///< of RGB values; as DEVICE_MAXIMUM tells, or 255, where it is not given
    };

    /// The whole file. It has been read back, and is the same.
    /// @param table  with SAMPLE_NAME or SAMPLE_ID; spectra in an even step, 1.0 is the perfect diffuser
    /// @throws CgatsError for what the format does not take, with the line it came from
    static std::string Text(const CgatsTable& table, const Origin& origin);
};

}  // namespace J4Chart
