// A file of patches that all have a colour: what was measured, or what should be.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "chart/Chart.h"
#include "chart/cgats/CgatsFile.h"

namespace J4Tool {

struct ColourFile {
    std::string name;      ///< without folders
    J4Chart::Chart chart;  ///< has a patch

    /// @throws J4Chart::CgatsError, also for a file without colours
    static ColourFile Read(const std::string& name, const J4Chart::CgatsFile& file);

    /// @throws ToolError with file, line and reason
    static ColourFile Load(const std::string& fileName);
};

/// Of each measured patch the reference's patch, where it has one.
using PatchMatch = std::vector<std::optional<size_t>>;

/// A value that says that two patches do not belong together.
struct DeviceContradiction {
    size_t patch = 0;
    size_t otherPatch = 0;
    std::string field;  ///< for instance "CMYK_C"
    std::string value;
    std::string otherValue;
};

/// The first patch that has other inks or lights than the one it is matched with, by the scales of both files and but
/// for rounding. Names and numbers of patches are the same in many charts, their inks are not.
std::optional<DeviceContradiction> FindContradiction(const J4Chart::Chart& chart, const J4Chart::Chart& other,
                                                     const PatchMatch& match);

/// By SAMPLE_NAME, or by SAMPLE_ID where names are missing, not unique, or none is in both files.
/// @throws ToolError when no measured patch has a reference, or the two have other inks or lights
PatchMatch MatchPatches(const J4Chart::Chart& measured, const J4Chart::Chart& reference);

}  // namespace J4Tool
