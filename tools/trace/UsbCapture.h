// A real table's traffic out of a capture of Linux' usbmon: bulk transfers of the table's USB bridge, whose status bytes
// are taken away, put together to the frames that they carried.
#pragma once

#include <istream>
#include <stdexcept>

#include "tools/trace/TraceReader.h"

namespace J4Tool {

/// What is wrong with a capture, and at which of its records.
struct UsbCaptureError : std::runtime_error {
    using std::runtime_error::runtime_error;
};

/// @param stream  a pcap file of either byte order with the link type 189 or 220
/// @return which record the file cuts, for people; empty for none
/// @throws UsbCaptureError
std::string ReadUsbCapture(std::istream& stream, const TraceListener& listener);

}  // namespace J4Tool
