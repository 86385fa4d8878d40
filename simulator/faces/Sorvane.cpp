// The sixteen C functions of the instrument's library, as a thin face of the bench. They share their names
// and forms with the table's library, whose header declares them. An exception of a registered handler
// passes through.
#include "c_sdk/include/j4tavla.h"
#include "simulator/faces/SorvaneRecords.h"
#include "simulator/world/Bench.h"

namespace {

J4Bench::InstrumentLibrary& Library() { return J4Bench::Bench::Instance().Library(); }

}  // namespace

extern "C" {

J4_Result J4_IsConnected(void) { return Library().IsConnected(); }

int32_t J4_KeyPressed(void) { return Library().KeyPressed(); }

int32_t J4_GetNumberOfAvailableSamples(void) { return Library().GetNumberOfAvailableSamples(); }

J4_Result J4_Calibrate(void) { return Library().Calibrate(); }

J4_Result J4_TriggerMeasurement(void) { return Library().TriggerMeasurement(); }

J4_Result J4_TriggerCountedScan(uint32_t count) { return Library().TriggerCountedScan(count); }

J4_Result J4_GetSpectrum(float* spectrum, uint32_t index) { return Library().GetSpectrum(spectrum, index); }

J4_Result J4_GetTriStimulus(float* tristimulus, uint32_t index) { return Library().GetTriStimulus(tristimulus, index); }

J4_Result J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
{
    return Library().GetDensities(densities, densityIndex, index);
}

J4_Result J4_GetDensity(float* density, uint32_t index) { return Library().GetDensity(density, index); }

J4_Result J4_SetSubstrate(float* substrateSpectrum) { return Library().SetSubstrate(substrateSpectrum); }

J4_Result J4_SetOption(const char* key, const char* value) { return Library().SetOption(key, value); }

const char* J4_GetOption(const char* key) { return Library().GetOption(key); }

J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler) { return Library().RegisterErrorHandler(handler); }

J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
{
    return Library().RegisterDeviceMessageHandler(handler);
}

intptr_t J4_Private(int32_t operation, void* record)
{
    const uint32_t number = static_cast<uint32_t>(operation);
    if (number != 0 && number != 1 && number != 5) {
        return Library().RefusePrivate(number, "There is no such private operation.");
    }
    if (record == nullptr) {
        return Library().RefusePrivate(number, "The operation needs its record.");
    }
    if (number == 0) {
        const auto* request = static_cast<const J4Bench::J4CorrectionRequest*>(record);
        return Library().SetCorrection(request->active, request->name, request->vector);
    }
    if (number == 1) {
        const auto* list = static_cast<const J4Bench::J4SampleList*>(record);
        return Library().ReplaceSamples(list->samples, list->count);
    }
    const auto* list = static_cast<const J4Bench::J4PositionList*>(record);
    return Library().SetPositions(list->positions, list->count);
}

}  // extern "C"
