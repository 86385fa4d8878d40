#include "tools/trace/TraceReader.h"

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>

#include "Utilities/Tools/FilePath.h"
#include "tools/Json.h"
#include "tools/ToolError.h"
#include "tools/trace/UsbCapture.h"
#include "trace/TraceLine.h"

namespace J4Tool {

namespace {

constexpr const char* Advice =
    "A trace is what the option Simulator.TraceFile of the virtual table writes, or a capture of usbmon as a pcap "
    "file.";

/// The reason of a failure without the JSON library's own numbers.
std::string ReasonOf(const std::exception& error)
{
    std::string text = error.what();
    if (text.starts_with("[json.exception") && text.find("] ") != std::string::npos) {
        text.erase(0, text.find("] ") + 2);
    }
    // It has parsed one line and counts that.
    const std::string one = "at line 1, ";
    if (const size_t at = text.find(one); at != std::string::npos) {
        text.replace(at, one.size(), "at ");
    }
    return text;
}

/// @return the line that the file cuts, for people; empty for none
std::string ReadLines(std::istream& stream, const std::string& fileName, const TraceListener& listener)
{
    std::string text;
    for (size_t number = 1; std::getline(stream, text); ++number) {
        try {
            // A program that ends, or a full disk, leaves a line without its end.
            if (number > 1 && stream.eof() && !Json::accept(text)) {
                return "line " + std::to_string(number);
            }
            if (number > 1) {
                listener(J4Trace::TraceLine::Event(text));
            } else if (!J4Trace::TraceLine::IsHead(text)) {
                throw std::runtime_error("this is no trace, or one of a later version");
            }
        } catch (const ToolError&) {
            throw;
        } catch (const std::exception& error) {
            throw ToolError(ExitCode::File, fileName + ": line " + std::to_string(number) + ": " + ReasonOf(error),
                            Advice);
        }
    }
    return {};
}

}  // namespace

std::string ReadTrace(const std::string& fileName, const TraceListener& listener)
{
    std::error_code error;
    if (std::filesystem::is_directory(Kestrelon::Utilities::Tools::PathOf(fileName), error)) {
        throw ToolError(ExitCode::File, fileName + ": it is a folder", Advice);
    }
    std::ifstream stream(Kestrelon::Utilities::Tools::PathOf(fileName), std::ios::binary);
    if (!stream) {
        throw ToolError(ExitCode::File, fileName + ": it can't be opened", Advice);
    }
    return ReadTrace(stream, fileName, listener);
}

std::string ReadTrace(std::istream& stream, const std::string& fileName, const TraceListener& listener)
{
    if (stream.peek() == std::istream::traits_type::eof()) {
        throw ToolError(ExitCode::File, fileName + ": it is empty", Advice);
    }
    if (stream.peek() == '{') {
        return ReadLines(stream, fileName, listener);
    }
    try {
        return ReadUsbCapture(stream, listener);
    } catch (const UsbCaptureError& error) {
        throw ToolError(ExitCode::File, fileName + ": " + error.what(), Advice);
    }
}

}  // namespace J4Tool
