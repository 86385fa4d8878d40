#include "simulator/chart/Aperture.h"

namespace J4Bench {

const std::vector<Point>& UnitDisc()
{
    // Never destroyed: an application may still measure while the process ends.
    static const std::vector<Point>& points = *[] {
        constexpr int cells = 21;
        auto* const inside = new std::vector<Point>;
        for (int row = 0; row < cells; ++row) {
            for (int column = 0; column < cells; ++column) {
                const Point point{(column + 0.5) / cells - 0.5, (row + 0.5) / cells - 0.5};
                if (point.x * point.x + point.y * point.y <= 0.25) {
                    inside->push_back(point);
                }
            }
        }
        return inside;
    }();
    return points;
}

}  // namespace J4Bench
