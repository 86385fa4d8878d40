#include "tools/LineScan.h"

#include <cmath>
#include <locale>
#include <sstream>

#include "chart/MotionProfile.h"
#include "chart/ScanMotion.h"
#include "tools/ToolError.h"

namespace J4Tool {

double LineScan::Ramp(double speed) { return speed * speed / (2.0 * J4Chart::ScanMotion::UsualAcceleration); }

LineScan::LineScan(Session& session) : session(session)
{
    session.SetOption("MeasurementMode", "ScanningReflectance");
    std::istringstream text(session.GetOption("IntegrationTime"));
    text.imbue(std::locale::classic());
    if (!(text >> integrationTime) || !(integrationTime > 0.0)) {
        throw ToolError(ExitCode::Device, "the instrument does not tell its integration time", "Calibrate it.");
    }
}

LineScan::Samples LineScan::Take(Point start, Point end, int speed)
{
    session.SetOption("MeasurementMode", "ScanningReflectance");
    session.SetOption("J4TRecognitionAlgorithm", "0");
    session.SetOption("J4TScanSpeed", std::to_string(speed));
    const std::vector<J4Chart::Spectrum> all = session.Scan(start, end);

    const J4Chart::MotionProfile profile(Distance(start, end), speed, J4Chart::ScanMotion::UsualAcceleration);
    Samples samples;
    samples.blur = speed * integrationTime;
    for (size_t i = 0; i < all.size(); ++i) {
        const double moment = (static_cast<double>(i) + 0.5) * integrationTime;
        if (moment >= profile.AccelerationEnd() && moment <= profile.DecelerationStart()) {
            samples.spectra.push_back(all[i]);
            if (!session.SampleDensities().empty()) {
                samples.densities.push_back(session.SampleDensities()[i]);
            }
            samples.places.push_back(profile.DistanceAt(moment));
        }
    }
    return samples;
}

}  // namespace J4Tool
