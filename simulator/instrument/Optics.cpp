#include "simulator/instrument/Optics.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "simulator/chart/Aperture.h"
#include "simulator/chart/WhiteTile.h"

namespace J4Bench {

Spectrum Optics::Light(const std::string& serial, const Spectrum& rest, int64_t begin, int64_t end, int samples)
{
    Carriage* const carriage = seats.CarriageOf(serial);
    Spectrum light = carriage == nullptr ? rest : OnTable(*carriage, begin, end);
    noise.AddTo(light, samples);
    return light;
}

double Optics::Drift(int64_t elapsed) const
{
    constexpr double minute = 60e6;
    return std::max(0.0, 1.0 + faults.drift * static_cast<double>(elapsed) / minute);
}

Spectrum Optics::OnTable(Carriage& carriage, int64_t begin, int64_t end) const
{
    carriage.NoteInstrumentCurrent();
    const Point tile = carriage.TilePosition();
    std::array<double, SpectrumLength> sums{};
    constexpr int moments = 3;
    for (int i = 0; i < moments; ++i) {
        const Point spot = carriage.ApertureAt(begin + (end - begin) * (2 * i + 1) / (2 * moments));
        const Point offset{spot.x - tile.x, spot.y - tile.y};
        const Spectrum seen = std::hypot(offset.x, offset.y) <= WhiteTile::Radius
                                  ? WhiteTile::Seen(carriage.TileWhite(), offset, ApertureDiameter, faults.dirtyTile)
                                  : chart.ReflectanceAt(spot, ApertureDiameter);
        for (size_t band = 0; band < sums.size(); ++band) {
            sums[band] += static_cast<double>(seen[band]);
        }
    }
    const double share = faults.instrumentLoose ? LooseShare : 1.0;
    Spectrum light{};
    for (size_t band = 0; band < light.size(); ++band) {
        light[band] = static_cast<float>(sums[band] / moments * share);
    }
    return light;
}

}  // namespace J4Bench
