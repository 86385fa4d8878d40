// Carries the instrument along a straight line without patch recognition, and tells for each sample where it was taken.
#pragma once

#include <vector>

#include "chart/colour/Spectrum.h"
#include "tools/Point.h"
#include "tools/Session.h"

namespace J4Tool {

class LineScan {
public:
    /// What was seen at full speed; the ramps at both ends are left out.
    struct Samples {
        std::vector<J4Chart::Spectrum> spectra;
        std::vector<J4Chart::Densities> densities;  ///< of each, where the session reads them
        std::vector<double> places;  ///< of the middle of each sample, mm from the line's start, if the instrument
                                     ///< began to measure when the table began to move
        double blur = 0.0;           ///< way during one sample, mm
    };

    /// The way that the arm needs to reach a speed or to stop from it, mm.
    static double Ramp(double speed);

    /// Switches the instrument to scanning without recognition.
    explicit LineScan(Session& session);

    /// @param speed  mm/s
    Samples Take(Point start, Point end, int speed);

    /// Of the instrument, s.
    double IntegrationTime() const { return integrationTime; }

private:
    Session& session;
    double integrationTime = 0.0;
};

}  // namespace J4Tool
