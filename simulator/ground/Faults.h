// What is wrong on the bench at the moment. Set through the "Simulator." options, read by table, bridge
// and instrument.
#pragma once

#include <cstdint>

namespace J4Bench {

struct Faults {
    bool tableUnplugged = false;           ///< every USB access fails
    int64_t unplugAfterTransfers = -1;     ///< counts down at each USB transfer and unplugs at 0; -1: never
    int64_t powerCutAfterFlashSteps = -1;  ///< counts down at each step that writes flash and cuts one short; -1: never
    bool tableSilent = false;              ///< the controller takes commands and answers nothing
    bool tableBusy = false;                ///< the controller answers every command with "busy"
    bool positionNotReached = false;       ///< moves end with the error "Current limit reached."
    int32_t corruptReplies = 0;            ///< so many of the next replies have a damaged checksum
    bool dirtyTile = false;                ///< a spot lies on the white tile beside the middle
    bool instrumentLoose = false;          ///< the instrument does not sit tight: less light comes back
    double drift = 0.0;                    ///< readings grow by this share in a minute since the calibration
    bool errorHandlerCalls = false;        ///< failures of the instrument's library also go to its error handler
};

}  // namespace J4Bench
