// The sixteen C functions of the instrument's library, as a thin face of the bench. They share their names
// and forms with the table's library, whose header declares them. An exception of a registered handler
// passes through.
#include "c_sdk/include/j4tavla.h"
#include "simulator/faces/SorvaneRecords.h"
#include "simulator/instrument/InstrumentRack.h"
#include "simulator/world/Bench.h"

namespace {

J4Bench::InstrumentRack& Rack() { return J4Bench::Bench::Instance().Instruments(); }

}  // namespace

extern "C" {

J4_Result J4_IsConnected(void) { return Rack().IsConnected(); }

int32_t J4_KeyPressed(void) { return Rack().KeyPressed(); }

int32_t J4_GetNumberOfAvailableSamples(void) { return Rack().GetNumberOfAvailableSamples(); }

J4_Result J4_Calibrate(void) { return Rack().Calibrate(); }

J4_Result J4_TriggerMeasurement(void) { return Rack().TriggerMeasurement(); }

J4_Result J4_TriggerCountedScan(uint32_t count) { return Rack().TriggerCountedScan(count); }

J4_Result J4_GetSpectrum(float* spectrum, uint32_t index) { return Rack().GetSpectrum(spectrum, index); }

J4_Result J4_GetTriStimulus(float* tristimulus, uint32_t index) { return Rack().GetTriStimulus(tristimulus, index); }

J4_Result J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
{
    return Rack().GetDensities(densities, densityIndex, index);
}

J4_Result J4_GetDensity(float* density, uint32_t index) { return Rack().GetDensity(density, index); }

J4_Result J4_SetSubstrate(float* substrateSpectrum) { return Rack().SetSubstrate(substrateSpectrum); }

J4_Result J4_SetOption(const char* key, const char* value) { return Rack().SetOption(key, value); }

const char* J4_GetOption(const char* key) { return Rack().GetOption(key); }

J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler) { return Rack().RegisterErrorHandler(handler); }

J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
{
    return Rack().RegisterDeviceMessageHandler(handler);
}

intptr_t J4_Private(int32_t operation, void* record)
{
    const uint32_t number = static_cast<uint32_t>(operation);
    if (number != 0 && number != 1 && number != 5) {
        return Rack().RefusePrivate(number, "There is no such private operation.");
    }
    if (record == nullptr) {
        return Rack().RefusePrivate(number, "The operation needs its record.");
    }
    if (number == 0) {
        const auto* request = static_cast<const J4Bench::J4CorrectionRequest*>(record);
        return Rack().SetCorrection(request->active, request->name, request->vector);
    }
    if (number == 1) {
        const auto* list = static_cast<const J4Bench::J4SampleList*>(record);
        return Rack().ReplaceSamples(list->samples, list->count);
    }
    const auto* list = static_cast<const J4Bench::J4PositionList*>(record);
    return Rack().SetPositions(list->positions, list->count);
}

}  // extern "C"
