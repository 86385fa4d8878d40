#include "simulator/chart/WhiteTile.h"

#include <cstddef>

#include "simulator/chart/Aperture.h"

namespace J4Bench {

namespace {

constexpr Point SpotMiddle{0.0, -24.0};
constexpr double SpotRadius = 5.0;
constexpr double SpotShare = 0.3;  // of the clean tile's reflectance

}  // namespace

Spectrum WhiteTile::Seen(const Spectrum& clean, Point offset, double apertureDiameter, bool dirty)
{
    Spectrum seen = clean;
    if (!dirty) {
        return seen;
    }
    size_t covered = 0;
    for (const Point& point : UnitDisc()) {
        const double x = offset.x + point.x * apertureDiameter - SpotMiddle.x;
        const double y = offset.y + point.y * apertureDiameter - SpotMiddle.y;
        covered += x * x + y * y <= SpotRadius * SpotRadius ? 1 : 0;
    }
    const double share = static_cast<double>(covered) / static_cast<double>(UnitDisc().size());
    for (float& value : seen) {
        value = static_cast<float>(value * (1.0 - share * (1.0 - SpotShare)));
    }
    return seen;
}

}  // namespace J4Bench
