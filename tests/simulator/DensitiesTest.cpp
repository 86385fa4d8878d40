#include "simulator/instrument/Densities.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "Generic/Colour/Colorimetry.h"

namespace J4Bench {
namespace {

namespace Colorimetry = Kestrelon::DeviceDriver::Generic::Colorimetry;

Spectrum Flat(float value)
{
    Spectrum spectrum;
    spectrum.fill(value);
    return spectrum;
}

TEST(Densities, ColouredBandsGoWhereTheyBelong)
{
    // One filter over each third of the spectrum.
    struct Case {
        int from, to;  // nm, dark
        size_t density;
        double hueFrom, hueTo;
    };
    const Case cases[] = {{600, 730, 0, 180, 270}, {500, 590, 1, 290, 360}, {380, 490, 2, 60, 120}};
    for (const Case& test : cases) {
        Spectrum spectrum = Flat(0.8f);
        for (int wavelength = test.from; wavelength <= test.to; wavelength += WavelengthStep) {
            spectrum[static_cast<size_t>((wavelength - FirstWavelength) / WavelengthStep)] = 0.08f;
        }
        const Densities densities = DensitiesOf(spectrum);
        EXPECT_EQ(static_cast<size_t>(std::max_element(densities.begin(), densities.end()) - densities.begin()),
                  test.density);
        EXPECT_NEAR(densities[test.density], 1.0969, 0.0001);
        const Colorimetry::Triple lch = Colorimetry::LCh(spectrum);
        const Colorimetry::Triple lab = Colorimetry::Lab(spectrum);
        EXPECT_GT(lch[2], test.hueFrom);
        EXPECT_LT(lch[2], test.hueTo);
        EXPECT_NEAR(lch[1] * lch[1], lab[1] * lab[1] + lab[2] * lab[2], 1e-9);
    }
    EXPECT_NEAR(DensitiesOf(Flat(0.0f))[3], 4.0, 1e-9);
}

}  // namespace
}  // namespace J4Bench
