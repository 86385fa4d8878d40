#include "tests/support/FakeLibrary.h"

#include <algorithm>
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
using Kestrelon::Utilities::Exceptions::ResourceNotAvailableException;

FakeLibrary& Fake() { return FakeLibrary::Instance(); }

/// Records a call and gives the status that its script wants.
int32_t Called(const std::string& function, const std::string& arguments = {})
{
    const std::string call = arguments.empty() ? function : function + " " + arguments;
    if (Fake().record) {
        Fake().record("library " + call);
    }
    for (const std::string& name : {call, function}) {
        if (const auto found = Fake().script.find(name); found != Fake().script.end()) {
            const std::function<int32_t()> step = found->second;  // the step may replace itself
            return step();
        }
    }
    return 0;
}

int32_t IsConnected()
{
    if (const int32_t status = Called("J4_IsConnected")) {
        return status;
    }
    const auto device = Fake().devices.find(Fake().options["DeviceType"]);
    return device == Fake().devices.end() ? 2 : device->second;
}

int32_t KeyPressed() { return Called("J4_KeyPressed"); }

int32_t GetNumberOfAvailableSamples()
{
    const int32_t scripted = Called("J4_GetNumberOfAvailableSamples");
    return scripted != 0 ? scripted : static_cast<int32_t>(Fake().samples.size());
}

int32_t Calibrate() { return Called("J4_Calibrate"); }

int32_t TriggerMeasurement()
{
    if (Fake().options["DeviceType"] == Fake().seatedDevice && Fake().noticeMeasurement) {
        Fake().noticeMeasurement();
    }
    return Called("J4_TriggerMeasurement");
}

int32_t TriggerCountedScan(uint32_t count) { return Called("J4_TriggerCountedScan", std::to_string(count)); }

int32_t GetSpectrum(float* spectrum, uint32_t index)
{
    const int32_t status = Called("J4_GetSpectrum", std::to_string(index));
    if (status == 0 && index < Fake().samples.size()) {
        std::copy(Fake().samples[index].begin(), Fake().samples[index].end(), spectrum);
    }
    return status;
}

int32_t GetTriStimulus(float* tristimulus, uint32_t index)
{
    const int32_t status = Called("J4_GetTriStimulus", std::to_string(index));
    if (!Fake().tristimulus.empty()) {
        std::copy(Fake().tristimulus.front().begin(), Fake().tristimulus.front().end(), tristimulus);
        Fake().tristimulus.pop_front();
    }
    return status;
}

int32_t GetDensities(float*, int32_t*, uint32_t index) { return Called("J4_GetDensities", std::to_string(index)); }

int32_t GetDensity(float*, uint32_t index) { return Called("J4_GetDensity", std::to_string(index)); }

int32_t SetSubstrate(float*) { return Called("J4_SetSubstrate"); }

int32_t SetOption(const char* key, const char* value)
{
    const int32_t status = Called("J4_SetOption", std::string(key) + " " + value);
    if (status == 0) {
        Fake().options[key] = value;
    }
    return status;
}

const char* GetOption(const char* key)
{
    Called("J4_GetOption", key);
    return Fake().options[key].c_str();
}

const char* SetOrNull(bool isSet) { return isSet ? "set" : "null"; }

J4_ErrorHandler RegisterErrorHandler(J4_ErrorHandler handler)
{
    Called("J4_RegisterErrorHandler", SetOrNull(handler != nullptr));
    return std::exchange(Fake().errorHandler, handler);
}

J4_DeviceMessageHandler RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
{
    Called("J4_RegisterDeviceMessageHandler", SetOrNull(handler != nullptr));
    return std::exchange(Fake().deviceMessageHandler, handler);
}

intptr_t Private(uint32_t operation, void* record)
{
    const auto called = [operation](const std::string& argument) {
        return Called("J4_Private", std::to_string(operation) + " " + argument);
    };
    switch (static_cast<PrivateOperation>(operation)) {
    case PrivateOperation::Correction: {
        const auto* request = static_cast<const J4CorrectionRequest*>(record);
        const int32_t status = called(std::to_string(request->active));
        std::vector<float>& correction = Fake().corrections[Fake().options["MeasurementMode"]];
        correction.clear();
        if (request->active != 0) {
            correction.assign(request->vector, request->vector + J4_SPECTRUM_LENGTH);
        }
        return status;
    }
    case PrivateOperation::Samples: {
        const auto* list = static_cast<const J4SampleList*>(record);
        const int32_t status = called(std::to_string(list->count));
        Fake().samples.clear();
        for (int32_t i = 0; i < list->count; ++i) {
            Fake().samples.emplace_back(list->samples[i], list->samples[i] + J4_SPECTRUM_LENGTH);
        }
        return status;
    }
    case PrivateOperation::Positions: {
        const auto* list = static_cast<const J4PositionList*>(record);
        const int32_t status = called(std::to_string(list->count));
        Fake().positions.assign(list->positions, list->positions + list->count);
        return status;
    }
    }
    return called(record == nullptr ? "null" : "record");
}

struct Function {
    std::string name;
    void* address;
};

const std::vector<Function>& Functions()
{
    static const std::vector<Function> functions = {
        {"J4_IsConnected", reinterpret_cast<void*>(&IsConnected)},
        {"J4_KeyPressed", reinterpret_cast<void*>(&KeyPressed)},
        {"J4_GetNumberOfAvailableSamples", reinterpret_cast<void*>(&GetNumberOfAvailableSamples)},
        {"J4_Calibrate", reinterpret_cast<void*>(&Calibrate)},
        {"J4_TriggerMeasurement", reinterpret_cast<void*>(&TriggerMeasurement)},
        {"J4_TriggerCountedScan", reinterpret_cast<void*>(&TriggerCountedScan)},
        {"J4_GetSpectrum", reinterpret_cast<void*>(&GetSpectrum)},
        {"J4_GetTriStimulus", reinterpret_cast<void*>(&GetTriStimulus)},
        {"J4_GetDensities", reinterpret_cast<void*>(&GetDensities)},
        {"J4_GetDensity", reinterpret_cast<void*>(&GetDensity)},
        {"J4_SetSubstrate", reinterpret_cast<void*>(&SetSubstrate)},
        {"J4_SetOption", reinterpret_cast<void*>(&SetOption)},
        {"J4_GetOption", reinterpret_cast<void*>(&GetOption)},
        {"J4_RegisterErrorHandler", reinterpret_cast<void*>(&RegisterErrorHandler)},
        {"J4_RegisterDeviceMessageHandler", reinterpret_cast<void*>(&RegisterDeviceMessageHandler)},
        {"J4_Private", reinterpret_cast<void*>(&Private)},
    };
    return functions;
}

}  // namespace

const std::vector<std::string>& FakeLibrary::FunctionNames()
{
    static const std::vector<std::string> names = [] {
        std::vector<std::string> result;
        for (const Function& function : Functions()) {
            result.push_back(function.name);
        }
        return result;
    }();
    return names;
}

FakeLibrary& FakeLibrary::Instance()
{
    // Never destroyed: the table's library may still hold it while the process ends.
    static FakeLibrary* const library = new FakeLibrary();
    return *library;
}

void FakeLibrary::PowerOn()
{
    *this = FakeLibrary();
    std::string white = "0.9";
    for (int band = 1; band < J4_SPECTRUM_LENGTH; ++band) {
        white += " 0.9";
    }
    options = {{"DeviceType", "Sorvane0"},
               {"SerialNumber", serialNumber},
               {"MeasurementMode", "SingleReflectance"},
               {"AvailableMeasurementModes", "SingleReflectance;ScanningReflectance"},
               {"IntegrationTime", "0.03125"},
               {"1100", white},
               {"LastError", "library text"},
               {"ExtendedErrorInformation", "first\nsecond\nthird\nfourth"}};
    devices = {{"Sorvane0", 0}};
    seatedDevice = "Sorvane0";
}

void FakeLibrary::Answer(const std::string& call, int32_t status)
{
    script[call] = [status] { return status; };
}

void FakeLibrary::CallErrorHandler(const std::string& call, const char* context, int32_t status, const char* message)
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

void LibraryLoaderImpl::LookForLibrary(const std::string& name)
{
    ++J4Test::Fake().loads;
    if (!J4Test::Fake().loadFailure.empty()) {
        throw J4Test::ResourceNotAvailableException(J4Test::Fake().loadFailure + name);
    }
}

std::string LibraryLoaderImpl::GetLibraryPath() { return "/fake/sorvane64.dll"; }

void* LibraryLoaderImpl::doResolve(std::string symbol)
{
    const std::vector<J4Test::Function>& functions = J4Test::Functions();
    const auto found = std::find_if(functions.begin(), functions.end(),
                                    [&](const J4Test::Function& function) { return function.name == symbol; });
    return found == functions.end() || symbol == J4Test::Fake().missingFunction ? nullptr : found->address;
}

void LibraryLoaderImpl::UnloadLibrary() {}

}  // namespace Kestrelon::Platform
