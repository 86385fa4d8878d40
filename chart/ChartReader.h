// Reads a chart from a CGATS.17 file, for all who use one: the table that measures it, the bench that it lies on, the
// report that judges it. What the file has is checked, wanted or not.
#pragma once

#include "chart/Chart.h"
#include "chart/Grid.h"
#include "chart/cgats/CgatsFile.h"

namespace J4Chart {

class ChartReader {
public:
    /// What a file has to tell.
    struct Wanted {
        bool names = true;     ///< SAMPLE_NAME or SAMPLE_ID
        bool places = false;   ///< X, Y, WIDTH, HEIGHT, or a grid
        bool spectra = false;  ///< all 36 bands
        bool colours = false;  ///< spectra, Lab or XYZ

        /// With spectra: also those of other wavelengths that cover 400 to 700 nm (SpectralColumns).
        bool otherBands = false;

        /// Goes before the keywords of the file, with a number of rows or columns also before its places.
        Grid grid;

        /// The chart is going to be fitted onto the bed: a grid needs neither size nor start.
        bool fittedLater = false;
    };

    /// A reflectance factor that can be. Noise takes black a little below 0; brighteners take white above 1, but not
    /// to where percentages are.
    static constexpr double LowestReflectance = -0.1;
    static constexpr double HighestReflectance = 2.0;

    /// The first table of the file that has what is wanted; one without patches only where no other has it.
    /// @throws CgatsError
    static Chart Read(const CgatsFile& file, const Wanted& wanted);
};

}  // namespace J4Chart
