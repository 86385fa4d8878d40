#include "src/Flash/j4TableFlashDataHandle.h"

#include <algorithm>
#include <cstdint>
#include <vector>

#include "Utilities/Exceptions/TableExceptions.h"
#include "Utilities/Exceptions/TraceFrame.h"
#include "Utilities/Tools/DateTime.h"
#include "src/SpectrumLength.h"

namespace Kestrelon::DeviceDriver::J4T {

using Communication::j4TableComFlash;
using Communication::j4TableComManager;
using Generic::Configuration::Properties;
using Generic::Configuration::Property;
using Utilities::Tools::SmartPointer;

namespace {

constexpr uint32_t FirstRead = 256;
constexpr uint32_t LargestImage = j4TableComFlash::SectorSize;
constexpr int32_t TransferAttempts = 2;
constexpr uint8_t ErasedByte = 0xFF;

}  // namespace

j4TableFlashDataHandle::j4TableFlashDataHandle(const SmartPointer<j4TableComManager>& comManager)
    : comManager(comManager)
{}

j4TableFlashData j4TableFlashDataHandle::GetCachedFlashData()
try {
    if (cachedData.IsNull()) {
        cachedData = SmartPointer<j4TableFlashData>(new j4TableFlashData(LoadFromFlash()));
    }
    cachedData->CheckChecksum();
    return *cachedData;
}
J4T_TRACE_FRAME

j4TableFlashData j4TableFlashDataHandle::LoadFromFlash()
try {
    uint8_t id = 0;
    uint32_t address = 0;
    int32_t number = 0;
    comManager->GetFlash()->ConfigDataBlockStatus(j4TableComFlash::BlockToRead, id, address, number, true);
    std::vector<uint8_t> bytes;
    comManager->GetFlash()->ReadMemory(bytes, address, FirstRead, TransferAttempts);
    const uint32_t size = j4TableFlashData::GetConfigDataSize(bytes);
    if (size > LargestImage) {
        throw EEPromException("Invalid property size.");
    }
    const uint32_t got = static_cast<uint32_t>(bytes.size());
    if (got < size) {
        std::vector<uint8_t> rest;
        comManager->GetFlash()->ReadBigMemory(rest, address + got, size - got, TransferAttempts);
        bytes.insert(bytes.end(), rest.begin(), rest.end());
    }
    j4TableFlashData data(bytes);
    data.CheckChecksum();
    return data;
}
J4T_TRACE_FRAME

void j4TableFlashDataHandle::WriteToFlash(j4TableFlashData& data)
try {
    uint8_t id = 0;
    uint32_t address = 0;
    int32_t number = 0;
    comManager->GetFlash()->ConfigDataBlockStatus(j4TableComFlash::BlockToWrite, id, address, number, true);
    data.SetProperty(FlashId::VersionMark, Property(static_cast<int32_t>(CharID2LongID(id))));
    data.SetProperty(FlashId::BlockNumber, Property(number));
    data.UpdateChecksum();
    std::vector<uint8_t> image = data.Dump(Properties::FormatValuesOnly);
    if (image.empty()) {
        throw EEPromException("Flash data is empty.");
    }
    // An image that is a multiple of the write size already grows by a whole write all the same.
    image.resize(image.size() + j4TableComFlash::WriteSize - image.size() % j4TableComFlash::WriteSize, ErasedByte);
    if (image.size() > LargestImage) {
        throw EEPromException("Flash data is too big.");
    }
    if (address % j4TableComFlash::SectorSize != 0) {
        throw EEPromException("Config data are not in one sector.");
    }
    const uint16_t sector = static_cast<uint16_t>(address / j4TableComFlash::SectorSize);
    cachedData = 0;
    comManager->GetMisc()->Reset(true);
    comManager->GetFlash()->Unlock(j4TableComFlash::BlockToUnlock);
    comManager->GetFlash()->PrepareSector(sector, sector);
    comManager->GetFlash()->EraseSector(sector, sector);
    comManager->GetFlash()->WriteToFlash(image, address, TransferAttempts);
    comManager->GetFlash()->Lock();
}
J4T_TRACE_FRAME

void j4TableFlashDataHandle::GetWhitebaseCorrection(std::vector<float>& white, int32_t& transferTime)
try {
    const j4TableFlashData data = GetCachedFlashData();
    white = data.GetProperty(FlashId::WhiteBase).AsFloatVector();
    CheckWhiteData(white);
    transferTime = data.GetProperty(FlashId::WhiteBaseTime).AsLong();
}
J4T_TRACE_FRAME

void j4TableFlashDataHandle::SynchronizeWhitebases(const std::vector<float>& white)
try {
    Utilities::Tools::DateTime now;
    now.SetNow();
    CheckWhiteData(white);
    j4TableFlashData data = GetCachedFlashData();
    data.SetProperty(FlashId::WhiteBase, Property(white));
    data.SetProperty(FlashId::WhiteBaseTime, Property(now.GetLongTime()));
    WriteToFlash(data);
}
J4T_TRACE_FRAME

void j4TableFlashDataHandle::CheckWhiteData(const std::vector<float>& white)
try {
    if (white.size() != SpectrumLength) {
        throw WhiteBaseException("Invalid white data length.");
    }
    if (std::find(white.begin(), white.end(), 0.0f) != white.end()) {
        throw WhiteBaseException("White data contains zero values.");
    }
}
J4T_TRACE_FRAME

/// A one-byte version number as four ASCII characters, first character in the lowest byte: 12 is "V1.2".
/// From 100 on the first digit is a letter that skips ten, from "VK.0" on.
uint32_t j4TableFlashDataHandle::CharID2LongID(uint8_t id)
{
    const uint32_t tens = id / 10;
    const uint32_t major = tens < 10 ? tens + '0' : tens + 'A';
    const uint32_t minor = id % 10 + '0';
    return uint32_t{'V'} | major << 8 | uint32_t{'.'} << 16 | minor << 24;
}

}  // namespace Kestrelon::DeviceDriver::J4T
