#include "simulator/instrument/InstrumentOptions.h"

#include <algorithm>
#include <iterator>
#include <string>
#include <string_view>

#include "simulator/ground/TextList.h"

namespace J4Bench {

namespace Colorimetry = J4Chart::Colorimetry;

namespace {

struct NamedColourSpace {
    std::string_view name;
    SampleStore::Conversion convert;
};

constexpr NamedColourSpace ColourSpaces[] = {
    {"CIELab", Colorimetry::Lab},
    {"CIELCh", Colorimetry::LCh},
    {"CIEXYZ", Colorimetry::TristimulusValues},
    {"XYZ", Colorimetry::TristimulusValues},
    {"CIExyY", Colorimetry::Chromaticity},
};

/// An option that has only one value.
Option Fixed(const char* key, const char* meaning, const char* only)
{
    return {key, meaning,
            [only](const std::string& value) {
                return value == only ? Outcome() : Refuse(value, std::string("\"") + only + "\"");
            },
            [only] { return std::string(only); }};
}

std::string Modes(const Instrument&)
{
    std::string names;
    for (const char* name : ModeNames) {
        AppendToList(names, name, ';');
    }
    return names;
}

std::string IntegrationTime(const Instrument& instrument)
{
    return OptionTable::WriteReal(static_cast<double>(instrument.IntegrationTime()) / 1e6);
}

std::string WhiteReference(const Instrument& instrument)
{
    std::string text;
    for (const float value : instrument.WhiteReference()) {
        AppendToList(text, OptionTable::WriteReal(static_cast<double>(value)), ' ');
    }
    return text;
}

}  // namespace

InstrumentOptions::InstrumentOptions(InstrumentRack& rack, OptionTable& table) : rack(rack)
{
    AddInstrument(table);
    AddColour(table);
    table.AddSwitch("Recognition", "a counted scan is reduced to patches", settings.recognition);
    table.AddSwitch("NoPersistentCalibrationLog", "taken and kept", settings.noPersistentCalibrationLog);
}

void InstrumentOptions::AddInstrument(OptionTable& table)
{
    // Texts of the selected instrument; empty while there is none.
    const auto read = [&](const char* key, const char* meaning, std::string (*text)(const Instrument&)) {
        table.Add({key, meaning, {}, [this, text] {
                       const Instrument* const instrument = rack.Selected();
                       return instrument == nullptr ? std::string() : text(*instrument);
                   }});
    };
    table.Add({"DeviceType", "the selected instrument",
               [this](const std::string& value) { return SelectInstrument(value); },
               [this] { return rack.SelectedName(); }});
    table.Add({"MeasurementMode", "of whichever instrument is selected",
               [this](const std::string& value) { return SetMode(value); },
               [this] { return std::string(ModeNames[static_cast<size_t>(rack.GetMode())]); }});
    read("SerialNumber", "of the selected instrument",
         [](const Instrument& instrument) { return instrument.Serial(); });
    read("AvailableMeasurementModes", "of the selected instrument, separated by \";\"", Modes);
    read("IntegrationTime", "of the current mode in seconds; 0 before its calibration", IntegrationTime);
    read("1100", "the instrument's white reference, 36 reflectance factors", WhiteReference);
}

void InstrumentOptions::AddColour(OptionTable& table)
{
    table.Add({"ColorSpaceDescription.Type", "what J4_GetTriStimulus gives",
               [this](const std::string& value) { return SetColourSpace(value); },
               [this] { return std::string(ColourSpaces[settings.colourSpace].name); }});
    table.Add(Fixed("Colorimetric.Illumination", "illuminant of the colour values", "D50"));
    table.Add(Fixed("Colorimetric.Observer", "observer of the colour values", "TwoDegree"));
}

SampleStore::Conversion InstrumentOptions::ColourSpace() const { return ColourSpaces[settings.colourSpace].convert; }

Outcome InstrumentOptions::SelectInstrument(const std::string& name)
{
    const std::string_view prefix = InstrumentRack::NamePrefix;
    if (!name.starts_with(prefix)) {
        return Refuse(name, "an instrument of this library");
    }
    return OptionTable::ReadInteger(name.substr(prefix.size()), 0, InstrumentRack::MaximumInstruments - 1,
                                    [this](int64_t index) { rack.Select(static_cast<size_t>(index)); });
}

Outcome InstrumentOptions::SetMode(const std::string& name)
{
    if (Outcome outcome = rack.Ready(); outcome.Failed()) {
        return outcome;
    }
    const auto found = std::find(ModeNames.begin(), ModeNames.end(), name);
    if (found == ModeNames.end()) {
        return Refuse(name, "a measurement mode of this instrument");
    }
    rack.SetMode(static_cast<Mode>(found - ModeNames.begin()));
    return {};
}

Outcome InstrumentOptions::SetColourSpace(const std::string& name)
{
    const auto found = std::ranges::find(ColourSpaces, name, &NamedColourSpace::name);
    if (found == std::end(ColourSpaces)) {
        return Refuse(name, "a colour space of this library");
    }
    settings.colourSpace = static_cast<size_t>(found - std::begin(ColourSpaces));
    return {};
}

}  // namespace J4Bench
