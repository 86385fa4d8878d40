#include "tests/tools/ScriptedTable.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace J4Tool {

namespace {

ScriptedTable* table = nullptr;

}  // namespace

struct ScriptedFunctions {
    static int32_t Scan(float startX, float startY, float endX, float)
    {
        table->onScan();
        ScriptedTable::Event event;
        if (!table->events.empty()) {
            event = table->events.front();
            table->events.pop_front();
        }
        for (const ChartLayout::Row& row : table->layout.Rows()) {
            const ChartLayout::Patch& first = table->layout.Patches()[row.front()];
            if (std::abs(first.centre.y - static_cast<double>(startY)) > 0.1) {
                continue;
            }
            table->samples.clear();
            for (const size_t patch : row) {
                // Flat spectra have no chroma, so the lightness tells the reflectance.
                const double lightness = ((*table->layout.Patches()[patch].reference)[0] + 16.0) / 116.0;
                table->samples.emplace_back().fill(static_cast<float>(lightness * lightness * lightness));
            }
            if (endX < startX) {
                std::reverse(table->samples.begin(), table->samples.end());
            }
            table->scans.push_back(first.name + (endX < startX ? "<" : ""));
        }
        if (event.change) {
            event.change(table->samples);
        }
        if (event.status != 0 && table->handler != nullptr) {
            table->handler("J4_Scan", event.status, "as the script says");
        }
        return event.status;
    }

    static int32_t Count() { return static_cast<int32_t>(table->samples.size()); }

    static int32_t Spectrum(float* spectrum, uint32_t index)
    {
        std::copy(table->samples[index].begin(), table->samples[index].end(), spectrum);
        return 0;
    }

    static int32_t Set(const char* key, const char* value)
    {
        table->options.push_back(std::string(key) + "=" + value);
        return 0;
    }

    static const char* Get(const char*) { return ""; }

    static J4_ErrorHandler Register(J4_ErrorHandler handler) { return std::exchange(table->handler, handler); }

    static int32_t Position(float* x, float* y)
    {
        *x = 100.0f;
        *y = 80.0f;
        return 0;
    }

    static int32_t Good() { return 0; }
};

ScriptedTable::ScriptedTable(const ChartLayout& layout) : layout(layout) { table = this; }

ScriptedTable::~ScriptedTable() { table = nullptr; }

TableFunctions ScriptedTable::Functions() const
{
    TableFunctions functions;
    functions.Scan = ScriptedFunctions::Scan;
    functions.GetNumberOfAvailableSamples = ScriptedFunctions::Count;
    functions.GetSpectrum = ScriptedFunctions::Spectrum;
    functions.SetOption = ScriptedFunctions::Set;
    functions.GetOption = ScriptedFunctions::Get;
    functions.RegisterErrorHandler = ScriptedFunctions::Register;
    functions.GetPosition = ScriptedFunctions::Position;
    functions.IsTableConnected = ScriptedFunctions::Good;
    functions.GoToHomePosition = ScriptedFunctions::Good;
    functions.Calibrate = ScriptedFunctions::Good;
    return functions;
}

}  // namespace J4Tool
