// Illuminant and observer for which a spectrum becomes a colour. Where nobody says otherwise these are D50 and the 2
// degree observer, computed as all of the system does (Colorimetry); any other pair has weights of its own.
#pragma once

#include <array>
#include <optional>
#include <string>

#include "chart/Chart.h"
#include "chart/colour/Colorimetry.h"
#include "chart/colour/Spectrum.h"

namespace J4Chart {

class ColourConditions {
public:
    enum class Illuminant { D50, D65, A, F11 };
    enum class Observer { Degrees2, Degrees10 };

    static constexpr std::array<const char*, 4> IlluminantNames = {"D50", "D65", "A", "F11"};
    static constexpr std::array<const char*, 2> ObserverNames = {"2", "10"};

    explicit ColourConditions(Illuminant illuminant = Illuminant::D50, Observer observer = Observer::Degrees2);

    /// What a file's WEIGHTING_FUNCTION tells, in one keyword or several: "ILLUMINANT,D50;OBSERVER,2 degree".
    /// @return nothing where it does not tell both, or others than these
    static std::optional<ColourConditions> StatedBy(const Chart::Conditions& conditions);

    /// Whether a file tells that its colours are for another illuminant or observer, known here or not.
    bool AreStatedOtherwise(const Chart::Conditions& conditions) const;

    Illuminant GetIlluminant() const { return illuminant; }
    Observer GetObserver() const { return observer; }

    /// As IlluminantNames and ObserverNames have them.
    std::string IlluminantName() const { return IlluminantNames[static_cast<size_t>(illuminant)]; }
    std::string ObserverName() const { return ObserverNames[static_cast<size_t>(observer)]; }

    /// For people: "D50 and 2 degrees".
    std::string Words() const { return IlluminantName() + " and " + ObserverName() + " degrees"; }

    /// For WEIGHTING_FUNCTION.
    std::string Text() const;

    /// True for D50 and 2 degrees.
    bool AreUsual() const { return illuminant == Illuminant::D50 && observer == Observer::Degrees2; }

    /// X, Y, Z, scaled so that the perfect diffuser has Y = 100. Sums over 380 to 780 nm in steps of 5 nm, between the
    /// bands by Interpolation, beyond the last band with its value (ASTM E308); for the usual pair those of
    /// Colorimetry.
    Colorimetry::Triple TristimulusValues(const Spectrum& reflectance) const;

    /// Of the perfect diffuser, by the same sums.
    const Colorimetry::Triple& White() const { return white; }

    /// L*, a*, b* relative to White().
    Colorimetry::Triple LabOfTristimulus(const Colorimetry::Triple& values) const;
    Colorimetry::Triple Lab(const Spectrum& reflectance) const;

    bool operator==(const ColourConditions& other) const
    {
        return illuminant == other.illuminant && observer == other.observer;
    }

private:
    using Weights = std::array<Colorimetry::Triple, SpectrumLength>;

    Illuminant illuminant;
    Observer observer;
    Weights weights{};
    Colorimetry::Triple white{};
};

}  // namespace J4Chart
