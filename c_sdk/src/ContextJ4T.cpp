#include "c_sdk/src/ContextJ4T.h"

#include <string>

#include "Utilities/Exceptions/SDKError.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/StaticObject.h"
#include "Utilities/Tools/StringTools.h"
#include "src/j4Bridge.h"

namespace Kestrelon::DeviceDriver::J4T {

using Utilities::Tools::SmartPointer;

void ContextJ4T::libraryErrorHandler(const char* context, int32_t status, const char* message)
try {
    const std::string extended = j4Bridge::Instance()->J4_GetOption("ExtendedErrorInformation");
    throw SDKError(CopyLibraryText(context), status, CopyLibraryText(message),
                   Utilities::Tools::DropFirstTwoLines(extended));
}
J4T_TRACE_FRAME

SmartPointer<ContextJ4T>& ContextJ4T::StaticInstance()
{
    return Utilities::Tools::StaticObject<[] { return SmartPointer<ContextJ4T>(); }>::Get();
}

const SmartPointer<ContextJ4T>& ContextJ4T::Instance()
{
    SmartPointer<ContextJ4T>& instance = StaticInstance();
    if (instance.IsNull()) {
        instance = SmartPointer<ContextJ4T>(new ContextJ4T());
    }
    return instance;
}

void ContextJ4T::Drop() { StaticInstance() = 0; }

ContextJ4T::ContextJ4T()
try : sdk(new j4TableSDK()), validator(new ContextValidatorJ4T()) {
    if (!sdk.IsNull()) {
        sdk->SetLibraryErrorHandler(libraryErrorHandler);
    }
}
J4T_TRACE_FRAME

void ContextJ4T::Validate()
try {
    validator->Validate(*this, parameters);
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T
