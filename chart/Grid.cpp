#include "chart/Grid.h"

namespace J4Chart {

namespace {

size_t PartsOf(size_t whole, size_t part) { return whole / part + (whole % part == 0 ? 0 : 1); }

}  // namespace

size_t Grid::Columns(size_t patches) const
{
    return columns ? *columns : rows && *rows > 0 ? PartsOf(patches, *rows) : 0;
}

std::string Grid::Fault(size_t patches) const
{
    const size_t across = Columns(patches);
    if (across == 0) {
        return "there are neither places (X, Y, WIDTH, HEIGHT) nor a number of columns (LAYOUT_COLUMNS)";
    }
    if (rows && PartsOf(patches, across) != *rows) {
        return std::to_string(patches) + " patches do not fill " + std::to_string(*rows) + " rows of " +
               std::to_string(across);
    }
    if (!size || !start || size->x <= 0.0 || size->y <= 0.0) {
        return "the size of the patches (PATCH_SIZE) and the place of the first one (LAYOUT_START) are missing";
    }
    return {};
}

std::vector<Place> Grid::Places(size_t patches) const
{
    const size_t across = Columns(patches);
    const Point step = {size->x + (gap ? gap->x : 0.0), size->y + (gap ? gap->y : 0.0)};
    std::vector<Place> places;
    places.reserve(patches);
    for (size_t i = 0; i < patches; ++i) {
        const Point centre = {start->x + static_cast<double>(i % across) * step.x,
                              start->y + static_cast<double>(i / across) * step.y};
        places.push_back(Place::Upright(centre, size->x, size->y));
    }
    return places;
}

}  // namespace J4Chart
