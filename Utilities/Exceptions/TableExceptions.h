// What can go wrong with the table and the instrument in it; each type has its own status at the exported
// boundary.
#pragma once

#include "Utilities/Exceptions/Exceptions.h"

struct TableException : Kestrelon::Utilities::Exceptions::RuntimeException {
    J4T_EXCEPTION_CONSTRUCTOR(TableException, RuntimeException)
};
struct J4LibraryException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(J4LibraryException, TableException)
};
struct ScanException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(ScanException, TableException)
};
struct ProperyDataException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(ProperyDataException, TableException)
};
struct FirmwareException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(FirmwareException, TableException)
};
struct DeviceErrorException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(DeviceErrorException, TableException)
};
struct PositionNotReachedException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(PositionNotReachedException, TableException)
};
struct IllegalPositionException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(IllegalPositionException, TableException)
};
struct EEPromException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(EEPromException, TableException)
};
struct WhiteBaseException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(WhiteBaseException, TableException)
};
struct J4NotConnectedException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(J4NotConnectedException, TableException)
};
struct J4CalibrationFailedException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(J4CalibrationFailedException, TableException)
};
struct CommunicationException : TableException {
    J4T_EXCEPTION_CONSTRUCTOR(CommunicationException, TableException)
};
struct GeneralCommunicationException : CommunicationException {
    J4T_EXCEPTION_CONSTRUCTOR(GeneralCommunicationException, CommunicationException)
};
struct CommunicationTimeoutException : CommunicationException {
    J4T_EXCEPTION_CONSTRUCTOR(CommunicationTimeoutException, CommunicationException)
};
struct CommunicationDataException : CommunicationException {
    J4T_EXCEPTION_CONSTRUCTOR(CommunicationDataException, CommunicationException)
};
