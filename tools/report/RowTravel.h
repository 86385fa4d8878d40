// The travel of the instrument along one row: where it was at which time, computed as the trapezoid that the
// table drives.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace J4Tool {

class RowTravel {
public:
    /// A patch on the way, in mm from the start.
    struct Field {
        size_t patch = 0;
        double from = 0.0;
        double to = 0.0;
    };

    /// How a row was scanned.
    struct Scan {
        std::string name;
        double distance = 0.0;                  ///< mm, above 0
        double speed = 0.0;                     ///< mm/s, above 0
        std::optional<double> acceleration;     ///< mm/s²; the virtual table's where it is not known
        std::optional<double> integrationTime;  ///< s, above 0; no samples are marked where it is not known
        std::vector<Field> fields;
        std::vector<std::string> notes;  ///< where the figures come from, for the reader
    };

    explicit RowTravel(Scan scan);

    const std::string& Name() const { return scan.name; }
    double Distance() const { return scan.distance; }
    const std::vector<Field>& Fields() const { return scan.fields; }
    const std::vector<std::string>& Notes() const { return scan.notes; }

    /// Seconds from the start of the motion.
    double RampEnd() const { return rampEnd; }
    double Duration() const { return duration; }

    /// True when the positions are those at which a sample begins; false for a plain curve.
    bool HasSamples() const { return scan.integrationTime.has_value(); }

    /// Seconds from one position to the next.
    double Step() const { return step; }

    /// Way in mm from the start, from the start of the motion until its end.
    const std::vector<double>& Positions() const { return positions; }

private:
    Scan scan;
    double rampEnd = 0.0;
    double duration = 0.0;
    double step = 0.0;
    std::vector<double> positions;
};

}  // namespace J4Tool
