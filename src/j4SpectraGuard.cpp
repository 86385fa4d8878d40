#include "src/j4SpectraGuard.h"

#include <cstddef>
#include <cstdint>
#include <string>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "src/j4Bridge.h"

namespace Kestrelon::DeviceDriver::J4T {

j4SpectraGuard::j4SpectraGuard() : j4SpectraGuard(true, true) {}

j4SpectraGuard::j4SpectraGuard(bool read, bool restore)
try : restore(restore) {
    if (read) {
        // Runs before the guard exists: a failure here restores nothing.
        ReadSpectra();
    }
}
J4T_TRACE_FRAME

void j4SpectraGuard::ReadSpectra()
try {
    const int32_t count = Library()->J4_GetNumberOfAvailableSamples();
    if (count <= 0) {
        return;
    }
    if (count > MaximumSamples) {
        throw ScanException("Can't get " + std::to_string(count) + " samples in j4 SDK.");
    }
    spectra.resize(static_cast<std::size_t>(count));
    for (std::size_t i = 0; i < spectra.size(); ++i) {
        spectra[i].assign(SpectrumLength, 0.0f);
        if (Library()->J4_GetSpectrum(spectra[i].data(), static_cast<uint32_t>(i)) != 0) {
            throw ScanException("Can't get sample " + std::to_string(i) + " in j4 SDK.");
        }
    }
}
J4T_TRACE_FRAME

void j4SpectraGuard::WriteSpectra()
{
    std::vector<float*> samples;
    samples.reserve(spectra.size());
    for (std::vector<float>& spectrum : spectra) {
        samples.push_back(spectrum.data());
    }
    J4SampleList list{samples.data(), static_cast<int32_t>(samples.size())};
    Library()->J4_Private(PrivateOperation::Samples, &list);
}

j4SpectraGuard::~j4SpectraGuard() noexcept(false)
{
    if (restore) {
        AtEnd([this] { WriteSpectra(); });
    }
}

}  // namespace Kestrelon::DeviceDriver::J4T
