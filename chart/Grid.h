// How patches lie that have no places of their own: row by row, in the order of the file.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

#include "chart/Place.h"
#include "chart/Point.h"

namespace J4Chart {

struct Grid {
    std::optional<size_t> rows;     ///< 1 or more
    std::optional<size_t> columns;  ///< 1 or more; from the rows where it is not given
    std::optional<Point> size;      ///< of a patch, mm
    std::optional<Point> gap;       ///< between neighbours, mm; none where it is not given
    std::optional<Point> start;     ///< middle of the first patch, mm on the bed

    /// What can't be said, or does not fit together, for so many patches; empty for a grid that gives places.
    std::string Fault(size_t patches) const;

    /// Places of so many patches, for which there is no fault.
    std::vector<Place> Places(size_t patches) const;

private:
    size_t Columns(size_t patches) const;
};

}  // namespace J4Chart
