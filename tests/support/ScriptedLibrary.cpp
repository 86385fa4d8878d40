#include "tests/support/ScriptedLibrary.h"

#include <algorithm>
#include <sstream>
#include <utility>

#include "Utilities/Exceptions/Exceptions.h"
#include "Utilities/Tools/LibraryLoaderImpl.h"
#include "src/j4Bridge.h"

namespace J4Test {

namespace {

using Kestrelon::DeviceDriver::J4T::J4CorrectionRequest;
using Kestrelon::DeviceDriver::J4T::J4PositionList;
using Kestrelon::DeviceDriver::J4T::J4SampleList;
using Kestrelon::DeviceDriver::J4T::PrivateOperation;

ScriptedLibrary& Script() { return ScriptedLibrary::Instance(); }

/// Records a call and gives the status that its script wants.
template <class... Arguments>
int32_t Called(const std::string& function, const Arguments&... arguments)
{
    std::ostringstream text;
    text << function;
    ((text << ' ' << arguments), ...);
    if (Script().record) {
        Script().record(text.str());
    }
    for (const std::string& name : {text.str(), function}) {
        if (const auto found = Script().script.find(name); found != Script().script.end()) {
            const std::function<int32_t()> step = found->second;  // the step may replace itself
            return step();
        }
    }
    return 0;
}

intptr_t Private(uint32_t operation, void* record)
{
    int32_t status = 0;
    switch (static_cast<PrivateOperation>(operation)) {
    case PrivateOperation::Correction: {
        const auto* request = static_cast<const J4CorrectionRequest*>(record);
        status = Called("J4_Private", operation, static_cast<int>(request->active));
        Script().corrections[Script().options["MeasurementMode"]].assign(
            request->vector, request->vector + (request->active != 0 ? J4_SPECTRUM_LENGTH : 0));
        return status;
    }
    case PrivateOperation::Samples: {
        const auto* list = static_cast<const J4SampleList*>(record);
        status = Called("J4_Private", operation, list->count);
        Script().samples.clear();
        for (int32_t i = 0; i < list->count; ++i) {
            Script().samples.emplace_back(list->samples[i], list->samples[i] + J4_SPECTRUM_LENGTH);
        }
        return status;
    }
    case PrivateOperation::Positions: {
        const auto* list = static_cast<const J4PositionList*>(record);
        status = Called("J4_Private", operation, list->count);
        Script().positions.assign(list->positions, list->positions + list->count);
        return status;
    }
    }
    return Called("J4_Private", operation, record == nullptr ? "null" : "record");
}

template <class Result, class... Arguments>
void* Address(Result (*function)(Arguments...))
{
    return reinterpret_cast<void*>(function);
}

}  // namespace

const std::map<std::string, void*>& ScriptedLibrary::Functions()
{
    // Never destroyed, like the library itself.
    static const auto& functions = *new std::map<std::string, void*>{
        {"J4_IsConnected", Address(+[] {
             const int32_t status = Called("J4_IsConnected");
             const auto device = Script().devices.find(Script().options["DeviceType"]);
             return status != 0 ? status : device == Script().devices.end() ? 2 : device->second;
         })},
        {"J4_KeyPressed", Address(+[] { return Called("J4_KeyPressed"); })},
        {"J4_GetNumberOfAvailableSamples", Address(+[] {
             const int32_t scripted = Called("J4_GetNumberOfAvailableSamples");
             return scripted != 0 ? scripted : static_cast<int32_t>(Script().samples.size());
         })},
        {"J4_Calibrate", Address(+[] { return Called("J4_Calibrate"); })},
        {"J4_TriggerMeasurement", Address(+[] {
             if (Script().options["DeviceType"] == Script().seatedDevice && Script().noticeMeasurement) {
                 Script().noticeMeasurement();
             }
             return Called("J4_TriggerMeasurement");
         })},
        {"J4_TriggerCountedScan", Address(+[](uint32_t count) { return Called("J4_TriggerCountedScan", count); })},
        {"J4_GetSpectrum", Address(+[](float* spectrum, uint32_t index) {
             const int32_t status = Called("J4_GetSpectrum", index);
             if (status == 0 && index < Script().samples.size()) {
                 std::copy(Script().samples[index].begin(), Script().samples[index].end(), spectrum);
             }
             return status;
         })},
        {"J4_GetTriStimulus", Address(+[](float* tristimulus, uint32_t index) {
             const int32_t status = Called("J4_GetTriStimulus", index);
             if (!Script().tristimulus.empty()) {
                 std::copy(Script().tristimulus.front().begin(), Script().tristimulus.front().end(), tristimulus);
                 Script().tristimulus.pop_front();
             }
             return status;
         })},
        {"J4_GetDensities",
         Address(+[](float*, int32_t*, uint32_t index) { return Called("J4_GetDensities", index); })},
        {"J4_GetDensity", Address(+[](float*, uint32_t index) { return Called("J4_GetDensity", index); })},
        {"J4_SetSubstrate", Address(+[](float*) { return Called("J4_SetSubstrate"); })},
        {"J4_SetOption", Address(+[](const char* key, const char* value) {
             const int32_t status = Called("J4_SetOption", key, value);
             if (status == 0) {
                 Script().options[key] = value;
             }
             return status;
         })},
        {"J4_GetOption", Address(+[](const char* key) {
             Called("J4_GetOption", key);
             return Script().options[key].c_str();
         })},
        {"J4_RegisterErrorHandler", Address(+[](J4_ErrorHandler handler) {
             Called("J4_RegisterErrorHandler", handler != nullptr ? "set" : "null");
             return std::exchange(Script().errorHandler, handler);
         })},
        {"J4_RegisterDeviceMessageHandler", Address(+[](J4_DeviceMessageHandler handler) {
             Called("J4_RegisterDeviceMessageHandler", handler != nullptr ? "set" : "null");
             return std::exchange(Script().deviceMessageHandler, handler);
         })},
        {"J4_Private", Address(&Private)}};
    return functions;
}

ScriptedLibrary& ScriptedLibrary::Instance()
{
    // Never destroyed: the table's library may still hold it while the process ends.
    static ScriptedLibrary* const library = new ScriptedLibrary();
    return *library;
}

void ScriptedLibrary::PowerOn()
{
    *this = ScriptedLibrary();
    options = {{"DeviceType", "Sorvane0"},
               {"SerialNumber", serialNumber},
               {"MeasurementMode", "SingleReflectance"},
               {"AvailableMeasurementModes", "SingleReflectance;ScanningReflectance"},
               {"IntegrationTime", "0.03125"},
               {"1100", "0.9"},
               {"LastError", "library text"},
               {"ExtendedErrorInformation", "first\nsecond\nthird\nfourth"}};
    for (int band = 1; band < J4_SPECTRUM_LENGTH; ++band) {
        options["1100"] += " 0.9";
    }
    devices = {{"Sorvane0", 0}};
    seatedDevice = "Sorvane0";
}

void ScriptedLibrary::Answer(const std::string& call, int32_t status)
{
    script[call] = [status] { return status; };
}

void ScriptedLibrary::CallErrorHandler(const std::string& call, const char* context, int32_t status,
                                       const char* message)
{
    script[call] = [this, context, status, message] {
        if (errorHandler != nullptr) {
            errorHandler(context, status, message);
        }
        return status;
    };
}

}  // namespace J4Test

namespace Kestrelon::Platform {

using J4Test::ScriptedLibrary;

void LibraryLoaderImpl::LookForLibrary(const std::string& name)
{
    ScriptedLibrary& library = ScriptedLibrary::Instance();
    ++library.loads;
    if (!library.loadFailure.empty()) {
        throw Utilities::Exceptions::ResourceNotAvailableException(library.loadFailure + name);
    }
}

std::string LibraryLoaderImpl::GetLibraryPath() { return "/scripted/sorvane64.dll"; }

void* LibraryLoaderImpl::doResolve(std::string symbol)
{
    ScriptedLibrary::Instance().resolved.push_back(symbol);
    const auto found = ScriptedLibrary::Functions().find(symbol);
    const bool isMissing = symbol == ScriptedLibrary::Instance().missingFunction;
    return isMissing || found == ScriptedLibrary::Functions().end() ? nullptr : found->second;
}

void LibraryLoaderImpl::UnloadLibrary() {}

}  // namespace Kestrelon::Platform
