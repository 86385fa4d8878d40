// The 22 exported functions: each names its arguments to the frame and runs the facade's operation of the
// same name in it.

#include <cstdint>
#include <new>
#include <optional>
#include <string>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Tools/StaticObject.h"
#include "c_sdk/include/j4tavla.h"
#include "c_sdk/src/CallGuard.h"
#include "c_sdk/src/CallTrace.h"
#include "c_sdk/src/Sandbox.h"
#include "src/Position.h"
#include "src/j4Bridge.h"

using Kestrelon::DeviceDriver::J4T::ContextJ4T;
using Kestrelon::DeviceDriver::J4T::ExportGuard;
using Kestrelon::DeviceDriver::J4T::ExportParameters;
using Kestrelon::DeviceDriver::J4T::j4Bridge;
using Kestrelon::DeviceDriver::J4T::j4TableSDK;
using Kestrelon::DeviceDriver::J4T::Position;
using Kestrelon::DeviceDriver::J4T::PositionUnitMillimetre;
using Kestrelon::DeviceDriver::J4T::Sandbox;
using Kestrelon::DeviceDriver::J4T::SDKError;
using Kestrelon::Utilities::Tools::SmartPointer;
using Kestrelon::Utilities::Tools::StaticObject;

namespace CallTrace = Kestrelon::DeviceDriver::J4T::CallTrace;

namespace {

const SmartPointer<j4TableSDK>& Sdk() { return ContextJ4T::Instance()->sdk; }

/// The application's coordinates; the facade gives them their unit.
Position MakePosition(const ExportParameters::FloatPosition& position)
{
    return Position{static_cast<double>(position.x), static_cast<double>(position.y), PositionUnitMillimetre, 0.0};
}

ExportParameters SampleParameters(float* buffer, uint64_t length, uint32_t index)
{
    ExportParameters parameters{};
    parameters.buffer = buffer;
    parameters.bufferLength = length;
    parameters.index = static_cast<int32_t>(index);
    return parameters;
}

/// What J4_GetOption gave last.
std::string& OptionAnswer()
{
    return StaticObject<[] { return std::string(); }>::Get();
}

bool IsFullReset(const std::string& key, const std::string& value)
{
    return key == "Reset" && (value == "J4TAll" || value == "All");
}

}  // namespace

J4_Result J4_Calibrate(void)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, ExportParameters{}, [] { Sdk()->J4_Calibrate(); });
}

J4_Result J4_TriggerMeasurement(void)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, ExportParameters{}, [] { Sdk()->J4_TriggerMeasurement(); });
}

int32_t J4_GetNumberOfAvailableSamples(void)
{
    int32_t count = -1;
    Sandbox::Run(J4T_EXPORT_SITE, ExportParameters{}, [&] { count = Sdk()->J4_GetNumberOfAvailableSamples(); });
    CallTrace::End(__func__, int64_t{count});
    return count;
}

J4_Result J4_GetSpectrum(float* spectrum, uint32_t index)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, SampleParameters(spectrum, J4_SPECTRUM_LENGTH, index),
                                 [&] { Sdk()->J4_GetSpectrum(spectrum, index); });
}

J4_Result J4_GetTriStimulus(float* tristimulus, uint32_t index)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, SampleParameters(tristimulus, 3, index),
                                 [&] { Sdk()->J4_GetTriStimulus(tristimulus, index); });
}

J4_Result J4_GetDensity(float* density, uint32_t index)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, SampleParameters(density, 1, index),
                                 [&] { Sdk()->J4_GetDensity(density, index); });
}

J4_Result J4_SetSubstrate(float* substrateSpectrum)
{
    ExportParameters parameters{};
    parameters.buffer = substrateSpectrum;
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters, [&] { Sdk()->J4_SetSubstrate(substrateSpectrum); });
}

J4_Result J4_SetOption(const char* key, const char* value)
{
    ExportParameters parameters{};
    parameters.key = key;
    parameters.value = value;
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters, [&] {
        if (IsFullReset(key, value)) {
            ContextJ4T::Drop();
            j4Bridge::Instance()->J4_SetOption("Reset", "All");
            j4Bridge::UnloadInstance();
        } else {
            Sdk()->J4_SetOption(key, value);
        }
    });
}

const char* J4_GetOption(const char* key)
{
    [[maybe_unused]] const ExportGuard guard(__func__);
    std::string* answer = nullptr;
    std::optional<SDKError> errorBefore;
    bool isErrorLost = false;
    try {
        answer = &OptionAnswer();
        answer->clear();
        errorBefore = Sdk()->lastError;
    } catch (const std::bad_alloc&) {
        isErrorLost = true;
    } catch (...) {
        // The frame below meets the same failure and gives its text.
    }
    ExportParameters parameters{};
    parameters.key = key;
    Sandbox::Run(
        J4T_EXPORT_SITE, parameters,
        [&] {
            answer = &OptionAnswer();
            const std::string name = key;
            if (name == "LastError" || name == "ExtendedErrorInformation") {
                if (isErrorLost) {
                    throw std::bad_alloc();
                }
                Sdk()->lastError = errorBefore.value_or(SDKError());
            }
            *answer = Sdk()->J4_GetOption(name);
        },
        [&](const J4LibraryException& exception) {
            answer = &OptionAnswer();
            *answer = exception.what();
        });
    const char* const text = answer != nullptr ? answer->c_str() : "";
    CallTrace::End(__func__, text);
    return text;
}

int32_t J4_KeyPressed(void)
{
    int32_t state = 2;
    Sandbox::Run(J4T_EXPORT_SITE, ExportParameters{}, [&] { state = Sdk()->J4_KeyPressed(); });
    CallTrace::End(__func__, int64_t{state});
    return state;
}

J4_Result J4_IsConnected(void)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, ExportParameters{}, [] { Sdk()->J4_IsConnected(); });
}

J4_Result J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index)
{
    ExportParameters parameters = SampleParameters(densities, 4, index);
    parameters.densityIndex = densityIndex;
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters,
                                 [&] { Sdk()->J4_GetDensities(densities, densityIndex, index); });
}

J4_Result J4_TriggerCountedScan(uint32_t count)
{
    ExportParameters parameters{};
    parameters.index = static_cast<int32_t>(count);
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters, [&] { Sdk()->J4_TriggerCountedScan(count); });
}

J4_ErrorHandler J4_RegisterErrorHandler(J4_ErrorHandler handler)
{
    J4_ErrorHandler previous = nullptr;
    Sandbox::Run(J4T_EXPORT_SITE, ExportParameters{}, [&] { previous = Sdk()->SetErrorHandler(handler); });
    CallTrace::End(__func__, previous != nullptr ? "set" : "null");
    return previous;
}

J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler)
{
    J4_DeviceMessageHandler previous = nullptr;
    Sandbox::Run(J4T_EXPORT_SITE, ExportParameters{},
                 [&] { previous = Sdk()->J4_RegisterDeviceMessageHandler(handler); });
    CallTrace::End(__func__, previous != nullptr ? "set" : "null");
    return previous;
}

J4_Result J4_GetPosition(float* x, float* y)
{
    ExportParameters parameters{};
    parameters.outX = x;
    parameters.outY = y;
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters, [&] {
        const Position position = Sdk()->J4_GetPosition();
        *x = static_cast<float>(position.x);
        *y = static_cast<float>(position.y);
    });
}

J4_Result J4_SetPosition(float x, float y)
{
    ExportParameters parameters{};
    parameters.positionA = {x, y};
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters,
                                 [&] { Sdk()->J4_SetPosition(MakePosition(parameters.positionA)); });
}

J4_Result J4_GoToHomePosition(void)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, ExportParameters{}, [] { Sdk()->J4_GoToHomePosition(); });
}

J4_Result J4_Scan(float startX, float startY, float endX, float endY)
{
    ExportParameters parameters{};
    parameters.positionA = {startX, startY};
    parameters.positionB = {endX, endY};
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters, [&] {
        Sdk()->J4_Scan(MakePosition(parameters.positionA), MakePosition(parameters.positionB));
    });
}

J4_Result J4_IsTableConnected(void)
{
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, ExportParameters{}, [] {
        if (!Sdk()->J4_IsTableConnected()) {
            Sdk()->ThrowOnStatus(J4_ResultDeviceNotConnected);
        }
    });
}

J4_Result J4_SynchronizeWhitebases(float* whiteBase)
{
    ExportParameters parameters{};
    parameters.buffer = whiteBase;
    return Sandbox::RunForStatus(J4T_EXPORT_SITE, parameters, [&] { Sdk()->J4_SynchronizeWhitebases(whiteBase); });
}

intptr_t J4_Private(int32_t operation, void* record)
{
    intptr_t result = 0;
    Sandbox::Run(J4T_EXPORT_SITE, ExportParameters{}, [&] { result = Sdk()->J4_Private(operation, record); });
    CallTrace::End(__func__, int64_t{result});
    return result;
}
