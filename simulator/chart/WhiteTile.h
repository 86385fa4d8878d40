// The white tile at the table's home position: how far it reaches, and the dirt that may lie on it.
#pragma once

#include "simulator/ground/Point.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

class WhiteTile {
public:
    /// Radius of the tile in tenths of a millimetre.
    static constexpr double Radius = 100.0;

    /// What an aperture sees on the tile.
    /// @param clean   reflectance of the clean tile, the same everywhere on it
    /// @param offset  middle of the aperture from the middle of the tile
    /// @param dirty   a spot of 1 mm lies 2.4 mm beside the middle, towards lower y: partly under an aperture
    ///                in the middle, and whole under one that stands a millimetre further down
    static Spectrum Seen(const Spectrum& clean, Point offset, double apertureDiameter, bool dirty);
};

}  // namespace J4Bench
