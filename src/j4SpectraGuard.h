// Keeps the samples in the instrument library's store across a measurement of the table's own, and writes
// them back at the end of the scope; with nothing read it empties the store.
#pragma once

#include <vector>

#include "Utilities/Tools/ScopeObject.h"

namespace Kestrelon::DeviceDriver::J4T {

class j4SpectraGuard : private Utilities::Tools::ScopeObject {
public:
    /// Reads the samples now and restores them at the end.
    j4SpectraGuard();
    /// @throws ScanException when a sample can't be read
    j4SpectraGuard(bool read, bool restore);
    ~j4SpectraGuard() noexcept(false);

private:
    void ReadSpectra();
    void WriteSpectra();

    bool restore;
    std::vector<std::vector<float>> spectra;
};

}  // namespace Kestrelon::DeviceDriver::J4T
