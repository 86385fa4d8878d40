#include "tests/support/CallJournal.h"

#include <algorithm>
#include <sstream>

namespace J4Test {

namespace {

std::string WithoutPrefix(const std::string& text, const std::string& prefix) { return text.substr(prefix.size()); }

std::string LibraryLine(std::string call)
{
    std::string result;
    if (const size_t equals = call.find(" ="); equals != std::string::npos) {
        result = call.substr(equals);
        call.resize(equals);
    }
    if (call.starts_with("J4_GetOption ")) {
        return "get " + WithoutPrefix(call, "J4_GetOption ");
    }
    const bool hasStatus = !call.starts_with("J4_GetNumberOfAvailableSamples") && result != " = 0";
    for (const auto& [from, to] : {std::pair<std::string, std::string>("J4_SetOption ", "set "),
                                   std::pair<std::string, std::string>("J4_Private ", "private ")}) {
        if (call.starts_with(from)) {
            call = to + WithoutPrefix(call, from);
        }
    }
    return hasStatus ? call + result : call;
}

std::string WireLine(const std::string& frame)
{
    const size_t checksumLength = 2;
    const std::string content = frame.substr(1, frame.size() - 1 - checksumLength);
    const bool isFlash = content.starts_with("u");
    const std::string header = content.substr(0, 2);
    return "table " + (isFlash || content.size() <= 2 ? header : header + " " + content.substr(2));
}

}  // namespace

const Lines flashRead = {"table k2", "table u8", "table u8"};

Lines ShortLines(const std::string& journal)
{
    Lines lines;
    std::istringstream stream(journal);
    for (std::string line; std::getline(stream, line);) {
        if (line.starts_with("library ")) {
            lines.push_back(LibraryLine(WithoutPrefix(line, "library ")));
        } else if (line.starts_with("wire > ")) {
            lines.push_back(WireLine(WithoutPrefix(line, "wire > ")));
        }
    }
    return lines;
}

Lines LinesThatBegin(const Lines& lines, std::initializer_list<const char*> beginnings)
{
    Lines found;
    std::copy_if(lines.begin(), lines.end(), std::back_inserter(found), [&](const std::string& line) {
        return std::any_of(beginnings.begin(), beginnings.end(),
                           [&](const char* beginning) { return line.starts_with(beginning); });
    });
    return found;
}

Lines Joined(std::initializer_list<Lines> parts)
{
    Lines all;
    for (const Lines& part : parts) {
        all.insert(all.end(), part.begin(), part.end());
    }
    return all;
}

Lines Preparation(const std::string& mode, const Lines& flashRead)
{
    const auto prepared = [](const char* name, const Lines& read) {
        return Joined(
            {{std::string("set MeasurementMode ") + name, "set NoPersistentCalibrationLog yes", "private 0 0"},
             read,
             {"get 1100", "private 0 1"}});
    };
    return Joined({{"get MeasurementMode", "get AvailableMeasurementModes"},
                   prepared("SingleReflectance", flashRead),
                   prepared("ScanningReflectance", {}),
                   {"set MeasurementMode " + mode}});
}

}  // namespace J4Test
