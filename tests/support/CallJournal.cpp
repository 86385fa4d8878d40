#include "tests/support/CallJournal.h"

#include <algorithm>
#include <regex>
#include <sstream>
#include <utility>

namespace J4Test {

const Lines flashRead = {"table k2", "table u8", "table u8"};

Lines ShortLines(const std::string& journal)
{
    // The first form that fits counts. A status of 0 and what a query gave are dropped; so are the checksum of a frame
    // and the long data of the flash commands.
    static const auto& forms = *new std::vector<std::pair<std::regex, const char*>>{
        {std::regex("library J4_GetOption (.*?)( =.*)?"), "get $1"},
        {std::regex("library J4_SetOption (.*?)( = 0)?"), "set $1"},
        {std::regex("library J4_Private (.*?)( = 0)?"), "private $1"},
        {std::regex("library (J4_GetNumberOfAvailableSamples).*"), "$1"},
        {std::regex("library (.*?)( = 0)?"), "$1"},
        {std::regex("wire > .(u.).*|wire > .(..?).."), "table $1$2"},
        {std::regex("wire > .(..)(.+).."), "table $1 $2"}};
    Lines lines;
    std::istringstream stream(journal);
    for (std::string line; std::getline(stream, line);) {
        std::smatch match;
        const auto form = std::find_if(forms.begin(), forms.end(),
                                       [&](const auto& it) { return std::regex_match(line, match, it.first); });
        if (form != forms.end()) {
            lines.push_back(match.format(form->second));
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
    const Lines removed = {"set NoPersistentCalibrationLog yes", "private 0 0"};
    const Lines installed = {"get 1100", "private 0 1"};
    return Joined({{"get MeasurementMode", "get AvailableMeasurementModes", "set MeasurementMode SingleReflectance"},
                   removed,
                   flashRead,
                   installed,
                   {"set MeasurementMode ScanningReflectance"},
                   removed,
                   installed,
                   {"set MeasurementMode " + mode}});
}

}  // namespace J4Test
