#include "src/Communication/j4TableComManager.h"

#include <cstdint>
#include <string>

#include "Utilities/Exceptions/TraceFrame.h"

namespace Kestrelon::DeviceDriver::J4T::Communication {

using LowLevel::SerialUSB;

j4TableComManager::j4TableComManager(uint16_t deviceIndex)
try : deviceIndex(deviceIndex) {
    Initialize();
}
J4T_TRACE_FRAME

j4TableComManager::~j4TableComManager() { UnInitialize(); }

void j4TableComManager::Initialize()
try {
    serial = SmartPointer<SerialUSB>(new SerialUSB());
    serial->OpenDevice(deviceIndex);
    serial->ClearCache();
    serial->InitCom();
    info = SmartPointer<j4TableComInfo>(new j4TableComInfo(serial));
    motors = SmartPointer<j4TableComMotors>(new j4TableComMotors(serial));
    misc = SmartPointer<j4TableComMisc>(new j4TableComMisc(serial));
    flash = SmartPointer<j4TableComFlash>(new j4TableComFlash(serial));
}
J4T_TRACE_FRAME

void j4TableComManager::UnInitialize()
{
    info = 0;
    motors = 0;
    misc = 0;
    flash = 0;
    serial = 0;
}

bool j4TableComManager::IsTableConnected()
{
    try {
        return !serial->SerialNumber().empty();
    } catch (...) {
        Utilities::Exceptions::RethrowOutOfMemory();
        return false;
    }
}

std::string j4TableComManager::GetSerialNumber()
try {
    return serial->SerialNumber();
}
J4T_TRACE_FRAME

void j4TableComManager::WriteSerialData(const std::string& text)
try {
    serial->WriteString(text + j4TableCommunication::ChecksumText(text) + "\r");
}
J4T_TRACE_FRAME

std::string j4TableComManager::ReadSerialData(int32_t count, int32_t timeout)
try {
    return serial->Read(count, timeout);
}
J4T_TRACE_FRAME

void j4TableComManager::WriteToSerialLogFile(const std::string& text)
try {
    serial->WriteToLogFile(text);
}
J4T_TRACE_FRAME

}  // namespace Kestrelon::DeviceDriver::J4T::Communication
