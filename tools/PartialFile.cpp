#include "tools/PartialFile.h"

#include <cerrno>
#include <filesystem>
#include <numeric>
#include <system_error>
#include <utility>

#include "Utilities/Tools/FilePath.h"
#include "Utilities/Tools/FileSystem.h"
#include "tools/AtomicFile.h"
#include "tools/Platform.h"
#include "tools/ToolError.h"

namespace J4Tool {

using Kestrelon::Utilities::Tools::PathOf;
using Kestrelon::Utilities::Tools::WriteThrough;

PartialFile::PartialFile(std::string name, const ChartLayout& layout, MeasurementFile::Conditions conditions)
    : name(std::move(name)), layout(layout), conditions(std::move(conditions))
{}

PartialFile::~PartialFile() { Close(); }

void PartialFile::Close()
{
    if (file != nullptr) {
        std::fclose(file);
        file = nullptr;
    }
}

/// Puts the head and all rows so far into a new file, which takes the place of an older one whole.
std::string PartialFile::Begin(const Measurements& measurements)
{
    std::vector<size_t> all(measurements.size());
    std::iota(all.begin(), all.end(), size_t{0});
    try {
        const std::string text = MeasurementFile::HeadText(layout, conditions) +
                                 MeasurementFile::RowsText(layout, all, measurements, conditions);
        WriteAtomically(name, text);
        size = static_cast<long long>(text.size());
    } catch (const ToolError& error) {
        return error.what();
    }
    unwritten.clear();
    file = Platform::OpenToAppend(PathOf(name));
    if (file == nullptr) {
        return "opening '" + name + "' failed: " + std::generic_category().message(errno);
    }
    // What a failed write leaves in a buffer would be written a second time.
    std::setvbuf(file, nullptr, _IONBF, 0);
    return {};
}

std::string PartialFile::Add(const std::vector<size_t>& patches, const Measurements& measurements)
{
    unwritten += MeasurementFile::RowsText(layout, patches, measurements, conditions);
    if (file == nullptr) {
        return Begin(measurements);
    }
    errno = 0;
    if (std::fwrite(unwritten.data(), 1, unwritten.size(), file) == unwritten.size() && WriteThrough(file)) {
        size += static_cast<long long>(unwritten.size());
        unwritten.clear();
        return {};
    }
    const std::string reason = std::generic_category().message(errno == 0 ? EIO : errno);
    std::clearerr(file);
    // Half a row must not stand before the next one.
    Platform::CutTo(file, size);
    return "writing '" + name + "' failed: " + reason;
}

std::string PartialFile::End(const Measurements& measurements)
{
    if (CountMeasured(measurements) == 0) {
        return {};
    }
    Close();
    try {
        WriteAtomically(name, MeasurementFile::Text(layout, measurements, conditions, MeasurementFile::Form::Cgats));
    } catch (const ToolError& error) {
        return error.what();
    }
    return {};
}

void PartialFile::Remove()
{
    Close();
    std::error_code ignored;
    std::filesystem::remove(PathOf(name), ignored);
}

}  // namespace J4Tool
