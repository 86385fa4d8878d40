// The functions of the table's library that the tool calls, as they were found in the variant that was loaded.
#pragma once

#include "c_sdk/include/j4tavla.h"

namespace J4Tool {

struct TableFunctions {
    decltype(&::J4_Calibrate) Calibrate = nullptr;
    decltype(&::J4_TriggerMeasurement) TriggerMeasurement = nullptr;
    decltype(&::J4_GetNumberOfAvailableSamples) GetNumberOfAvailableSamples = nullptr;
    decltype(&::J4_GetSpectrum) GetSpectrum = nullptr;
    decltype(&::J4_GetDensities) GetDensities = nullptr;
    decltype(&::J4_SetOption) SetOption = nullptr;
    decltype(&::J4_GetOption) GetOption = nullptr;
    decltype(&::J4_RegisterErrorHandler) RegisterErrorHandler = nullptr;
    decltype(&::J4_GetPosition) GetPosition = nullptr;
    decltype(&::J4_SetPosition) SetPosition = nullptr;
    decltype(&::J4_GoToHomePosition) GoToHomePosition = nullptr;
    decltype(&::J4_Scan) Scan = nullptr;
    decltype(&::J4_IsTableConnected) IsTableConnected = nullptr;
    decltype(&::J4_SynchronizeWhitebases) SynchronizeWhitebases = nullptr;
    decltype(&::J4_Private) Private = nullptr;
};

}  // namespace J4Tool
