#include "simulator/instrument/Optics.h"

#include <array>
#include <cmath>

#include "simulator/chart/Aperture.h"
#include "simulator/chart/WhiteTile.h"
#include "simulator/table/ConfigurationBlock.h"
#include "simulator/world/Bench.h"

namespace J4Bench {

Spectrum Optics::Light(const std::string& serial, const Spectrum& rest, int64_t begin, int64_t end)
{
    // The tile is what the factory measured it to be, whatever white base has been written to the flash since.
    const Spectrum& tileWhite = ConfigurationBlock::FactoryWhiteBase();
    Carriage* const carriage = bench.CarriageOf(serial);
    Spectrum light = rest;
    if (carriage != nullptr) {
        carriage->NoteInstrumentCurrent();
        const Faults& faults = bench.GetFaults();
        const Point tile = carriage->TilePosition();
        std::array<double, SpectrumLength> sums{};
        constexpr int moments = 3;
        for (int i = 0; i < moments; ++i) {
            const Point spot = carriage->ApertureAt(begin + (end - begin) * (2 * i + 1) / (2 * moments));
            const Point offset{spot.x - tile.x, spot.y - tile.y};
            const Spectrum seen = std::hypot(offset.x, offset.y) <= WhiteTile::Radius
                                      ? WhiteTile::Seen(tileWhite, offset, ApertureDiameter, faults.dirtyTile)
                                      : chart.ReflectanceAt(spot, ApertureDiameter);
            for (size_t band = 0; band < sums.size(); ++band) {
                sums[band] += static_cast<double>(seen[band]);
            }
        }
        const double share = faults.instrumentLoose ? LooseShare : 1.0;
        for (size_t band = 0; band < light.size(); ++band) {
            light[band] = static_cast<float>(sums[band] / moments * share);
        }
    }
    if (noise > 0.0) {
        for (float& value : light) {
            value = static_cast<float>(value + noise * NormalDeviate());
        }
    }
    return light;
}

void Optics::SetNoiseSeed(uint32_t value)
{
    seed = value;
    generator.seed(seed);
}

double Optics::NormalDeviate()
{
    constexpr double steps = 4294967296.0;  // of the generator
    const double radius = (static_cast<double>(generator()) + 1.0) / steps;
    const double angle = static_cast<double>(generator()) / steps;
    return std::sqrt(-2.0 * std::log(radius)) * std::cos(6.283185307179586 * angle);
}

}  // namespace J4Bench
