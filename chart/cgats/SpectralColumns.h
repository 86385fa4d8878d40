// The spectral fields of a table, and how the bands of a spectrum are made of them where the table has other
// wavelengths than these.
#pragma once

#include <array>
#include <string>
#include <vector>

#include "chart/cgats/CgatsTable.h"
#include "chart/colour/Interpolation.h"
#include "chart/colour/Spectrum.h"

namespace J4Chart {

class SpectralColumns {
public:
    /// The range that spectra have to cover (ISO 13655): beyond it colour hardly depends on them, and the last value
    /// holds. nm
    static constexpr int LeastFirst = 400;
    static constexpr int LeastLast = 700;

    /// The largest step between neighbours, nm.
    static constexpr int LargestStep = 20;

    explicit SpectralColumns(const CgatsTable& table);

    /// A field, and its wavelength in nm.
    struct Column {
        int wavelength;
        size_t field;
    };

    /// The spectral fields that have a part in a band, by wavelength.
    const std::vector<Column>& Columns() const { return columns; }

    /// The first band that has no field, as a reason; empty when the table has all of them.
    const std::string& Missing() const { return missing; }

    /// Why no spectrum can be made of the fields, also not by interpolation; empty when one can.
    const std::string& Fault() const { return fault; }

    /// The bands of the spectrum that lie within the table's own range; all others have the value of the nearest.
    /// @pre there is no fault
    BandRange Bands() const;

    /// @param values  one for each of Columns()
    /// @pre there is no fault
    Spectrum SpectrumOf(const std::vector<double>& values) const;

private:
    std::string FindFault() const;

    std::vector<Column> columns;
    std::string missing;
    std::string fault;
    std::array<std::vector<Interpolation::Term>, SpectrumLength> terms;  ///< of the values for each band
};

}  // namespace J4Chart
