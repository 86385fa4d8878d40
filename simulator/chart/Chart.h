// The printed chart that lies on the bed of every table: paper with rectangular patches of known
// reflectance. It tells what an aperture anywhere above it sees.
#pragma once

#include <istream>
#include <string>
#include <vector>

#include "chart/cgats/CgatsFile.h"
#include "simulator/ground/Point.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

using J4Chart::CgatsFile;

struct Patch {
    std::string name;
    Point centre;         ///< on the bed, tenths of a millimetre
    double width = 0.0;   ///< along x, tenths of a millimetre
    double height = 0.0;  ///< along y, tenths of a millimetre
    Spectrum reflectance{};
};

class Chart {
public:
    /// Bare paper of reflectance 0.85.
    Chart();

    /// Replaces the chart by the one in a file; a file that is broken leaves the chart as it was.
    /// @return true when done; false with error set
    bool Load(const std::string& fileName, CgatsFile::Error& error);
    bool Load(std::istream& input, CgatsFile::Error& error);

    const std::vector<Patch>& Patches() const { return patches; }
    const Spectrum& Paper() const { return paper; }

    /// Mean reflectance under a round aperture, over the sub-points of UnitDisc(). Where patches overlap the
    /// later one of the file lies on top.
    Spectrum ReflectanceAt(Point centre, double apertureDiameter) const;

private:
    std::vector<Patch> patches;
    Spectrum paper{};
};

}  // namespace J4Bench
