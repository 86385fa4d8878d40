// The one object behind the exported functions: keeps the last error and the application's handlers, and
// has an operation for each export, which it sends to the instrument's library or to the table. Failures
// are thrown.
#pragma once

#include <cstdint>
#include <list>
#include <string>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Tools/SmartPointer.h"
#include "c_sdk/include/j4tavla.h"
#include "src/Position.h"
#include "src/j4Table.h"

namespace Kestrelon::DeviceDriver::J4T {

struct OptionKey;

class j4TableSDK {
public:
    j4TableSDK();
    ~j4TableSDK();
    j4TableSDK(const j4TableSDK&) = delete;
    j4TableSDK& operator=(const j4TableSDK&) = delete;

    /// Exchanges the application's error handler; gives the old one.
    J4_ErrorHandler SetErrorHandler(J4_ErrorHandler handler);
    /// Exchanges the handler that the instrument's library calls for its own errors; gives the old one.
    J4_ErrorHandler SetLibraryErrorHandler(J4_ErrorHandler handler);
    /// Registers the dispatcher of device messages with the instrument's library.
    void SetDeviceMessageHandler();

    /// Stores the outcome of an exported call and tells the application's handler of it. Nothing is thrown but what
    /// the handler throws.
    /// @param error  null where memory is missing to make it: that is then what is reported, without any
    void ReportError(const char* name, const SDKError* error);

    /// Throws an SDKError with the status and the texts of the instrument's library, unless it is 0.
    void ThrowOnStatus(int32_t status);

    // Measuring calls, answered by the instrument's library.
    void J4_IsConnected();
    int32_t J4_KeyPressed();
    int32_t J4_GetNumberOfAvailableSamples();
    void J4_TriggerMeasurement();
    void J4_TriggerCountedScan(uint32_t count);
    void J4_GetSpectrum(float* spectrum, uint32_t index);
    void J4_GetTriStimulus(float* tristimulus, uint32_t index);
    void J4_GetDensities(float* densities, int32_t* densityIndex, uint32_t index);
    void J4_GetDensity(float* density, uint32_t index);
    void J4_SetSubstrate(float* substrate);
    J4_DeviceMessageHandler J4_RegisterDeviceMessageHandler(J4_DeviceMessageHandler handler);
    intptr_t J4_Private(int32_t operation, void* record);

    // Calls of the table; positions come and go in the user's unit.
    void J4_Calibrate();
    bool J4_IsTableConnected();
    void J4_GoToHomePosition();
    void J4_SynchronizeWhitebases(const float* whiteBase);
    Position J4_GetPosition();
    void J4_SetPosition(const Position& position);
    void J4_Scan(const Position& start, const Position& end);

    // Options: a key is a table property, an option of the facade, a numeric key, or the library's.
    std::string J4_GetOption(const std::string& key);
    void J4_SetOption(const std::string& key, const std::string& value);

    /// Outcome of the last exported call.
    SDKError lastError;

private:
    void Initialize();
    void UnInitialize();

    /// The current table; made when there is none, and anew after a device message made it invalid.
    Utilities::Tools::SmartPointer<j4Table> Table();
    Position ConvertToTablePositionUnit(const Position& position);
    Position ConvertToUserPositionUnit(const Position& position);
    int32_t UserUnit();

    friend void ProcessDeviceMessage(int32_t message, const char* text);
    void MessageFromDevice(int32_t message, const char* text);

    std::string ReadOption(const OptionKey& option);
    void WriteOption(const OptionKey& option, const std::string& value);
    void SetDeviceType(const std::string& value);
    void SetRecognition(const std::string& value);
    void SetLibraryOption(const std::string& key, const std::string& value);
    bool IsJ4TableBackdoorKey(const std::string& key);
    std::string EnterBackdoor(const std::string& key);
    void EnterBackdoor(const std::string& key, const std::string& value);
    void PrivateTableRequest(int32_t operation, J4PrivateTableRequest& request);

    Utilities::Tools::SmartPointer<j4Table> table;
    J4_ErrorHandler errorHandler = nullptr;
    J4_ErrorHandler libraryHandler = nullptr;
    bool tableInvalid = false;

    static std::list<j4TableSDK*>* liveObjects;
    static unsigned liveObjectUsers;
    static J4_DeviceMessageHandler deviceMessageHandler;
};

/// Receives the device messages of the instrument's library, for all facades and the application.
void ProcessDeviceMessage(int32_t message, const char* text);

}  // namespace Kestrelon::DeviceDriver::J4T
