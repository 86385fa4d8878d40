// How fast the instrument may be carried so that enough samples fall into the middle of a patch, and how much bare
// paper a travel needs at its ends to reach that speed.
#pragma once

namespace J4Tool {

class RowSpeed {
public:
    static constexpr int Fastest = 160;     ///< mm/s, the library's own choice
    static constexpr int LeastSamples = 5;  ///< in the middle of a patch

    /// @param integrationTime  of one sample, s
    /// @param chosen           mm/s, 0: whatever the patches allow
    RowSpeed(double integrationTime, int chosen) : integrationTime(integrationTime), chosen(chosen) {}

    /// @param patch  shortest patch in the direction of the travel, mm
    /// @return mm/s
    int For(double patch) const;

    /// For the instrument's own recognition, mm/s.
    int ForRecognition() const { return chosen > 0 ? chosen : Fastest; }

    /// From the start of a travel to the first edge, and from the last edge to its end, mm.
    static double Margin(int speed);

    double IntegrationTime() const { return integrationTime; }

private:
    double integrationTime;
    int chosen;
};

}  // namespace J4Tool
