// What an instrument knows of the table that carries it: where its aperture is at any moment, what lies on the
// table's white tile, and that its lamp's current is seen by the table.
#pragma once

#include <cstdint>

#include "simulator/ground/Point.h"
#include "simulator/ground/Spectrum.h"

namespace J4Bench {

class Carriage {
public:
    virtual ~Carriage() = default;

    /// Position of the aperture at a moment of the bench's clock; past, present, or up to the end of the
    /// running motion.
    virtual Point ApertureAt(int64_t microseconds) const = 0;

    /// Where the middle of the white tile lies.
    virtual Point TilePosition() const = 0;

    /// What the white tile reflects.
    virtual const Spectrum& TileWhite() const = 0;

    /// The seated instrument measured: an armed current detection is set.
    virtual void NoteInstrumentCurrent() = 0;
};

}  // namespace J4Bench
