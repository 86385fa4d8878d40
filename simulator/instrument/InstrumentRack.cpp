#include "simulator/instrument/InstrumentRack.h"

#include <utility>

#include "simulator/ground/TextList.h"

namespace J4Bench {

void InstrumentRack::SetCount(size_t count)
{
    while (instruments.size() > count) {
        instruments.pop_back();
    }
    while (instruments.size() < count) {
        instruments.emplace_back(instruments.size());
    }
}

Instrument* InstrumentRack::FindSerial(const std::string& serial)
{
    for (Instrument& instrument : instruments) {
        if (instrument.Serial() == serial) {
            return &instrument;
        }
    }
    return nullptr;
}

Instrument* InstrumentRack::Selected()
{
    if (selected >= instruments.size()) {
        return nullptr;
    }
    Instrument& instrument = instruments[selected];
    instrument.mode = mode;  // the mode stays when another instrument is selected
    return &instrument;
}

Outcome InstrumentRack::Ready()
{
    const Instrument* const instrument = Selected();
    if (instrument == nullptr) {
        return {Status::NoSuchDevice, "There is no instrument " + SelectedName() + "."};
    }
    if (instrument->unplugged) {
        return {Status::DeviceFault, "Instrument " + instrument->Serial() + " has been unplugged."};
    }
    return {};
}

void InstrumentRack::Unplug(Instrument& instrument)
{
    instrument.unplugged = true;
    instrument.Forget();
    goneSerial = instrument.Serial();
}

void InstrumentRack::PlugAll()
{
    for (Instrument& instrument : instruments) {
        instrument.unplugged = false;
    }
}

std::string InstrumentRack::UnpluggedSerials() const
{
    std::string list;
    for (const Instrument& instrument : instruments) {
        if (instrument.unplugged) {
            AppendToList(list, instrument.Serial(), ';');
        }
    }
    return list.empty() ? "none" : list;
}

std::string InstrumentRack::TakeGoneSerial() { return std::exchange(goneSerial, {}); }

void InstrumentRack::Forget()
{
    selected = 0;
    mode = Mode::SingleReflectance;
    for (Instrument& instrument : instruments) {
        instrument.Forget();
    }
}

}  // namespace J4Bench
