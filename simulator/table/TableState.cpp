#include "simulator/table/TableState.h"

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <fstream>
#include <iterator>
#include <span>
#include <sstream>
#include <stdexcept>
#include <string_view>
#include <system_error>
#include <thread>

#include "Utilities/Tools/ReplacementFile.h"
#include "simulator/table/TableFlash.h"
#include "trace/WireText.h"

namespace J4Bench {

namespace {

using J4Trace::FromHex;
using J4Trace::ToHex;

constexpr std::string_view Heading = "J4TAVLA-TABLE 1";
constexpr std::string_view ChecksumWord = "checksum ";
constexpr size_t RowSize = 32;          // bytes of the flash in one line
constexpr double LargestPlace = 1e5;    // tenths of a millimetre; no arm is longer
constexpr double LargestCount = 4.2e9;  // the counters have 32 bits

/// FNV-1a: tells a file that was cut or changed.
uint32_t ChecksumOf(std::string_view text)
{
    uint32_t hash = 0x811c9dc5;
    for (const char character : text) {
        hash = (hash ^ static_cast<uint8_t>(character)) * 0x01000193;
    }
    return hash;
}

/// The shortest text that reads as the same number.
std::string Exactly(double number)
{
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, number).ptr);
}

/// One line of the file: a key and its numbers, or bytes.
class Line {
public:
    Line(const std::string& text, size_t number) : stream(text), number(number) { stream >> key; }

    const std::string& Key() const { return key; }

    [[noreturn]] void Fail(const std::string& reason) const
    {
        throw std::runtime_error("line " + std::to_string(number) + ": " + reason);
    }

    std::string Word()
    {
        std::string word;
        if (!(stream >> word)) {
            Fail("'" + key + "' is cut.");
        }
        return word;
    }

    double Number(double low, double high)
    {
        const std::string word = Word();
        double value = 0.0;
        const auto [stop, failure] = std::from_chars(word.data(), word.data() + word.size(), value);
        if (failure != std::errc() || stop != word.data() + word.size() || !(value >= low && value <= high)) {
            Fail("'" + word + "' is no value of '" + key + "'.");
        }
        return value;
    }

    uint32_t Count() { return static_cast<uint32_t>(Number(0.0, LargestCount)); }

    /// One row of the flash: its address and its bytes.
    void ReadRow(std::span<uint8_t> memory)
    {
        const std::string place = Word();
        const std::string bytes = Word();
        const uint32_t address = FromHex(place).value_or(static_cast<uint32_t>(memory.size()));
        if (address % RowSize != 0 || address >= memory.size() || bytes.size() != 2 * RowSize) {
            Fail("'" + place + "' is no row of the flash.");
        }
        for (size_t i = 0; i < RowSize; ++i) {
            const auto byte = FromHex(std::string_view(bytes).substr(2 * i, 2));
            if (!byte) {
                Fail("'" + bytes + "' is no bytes.");
            }
            memory[address + i] = static_cast<uint8_t>(*byte);
        }
    }

private:
    std::istringstream stream;
    size_t number;
    std::string key;
};

/// A pipe or a device has no end, and where a link stands a file would take its place.
void RequireRegular(const std::filesystem::path& file)
{
    const std::filesystem::file_status status = std::filesystem::symlink_status(file);
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw std::runtime_error("it is no regular file.");
    }
}

}  // namespace

std::string TableState::Text() const
{
    std::string text(Heading);
    text += "\narm " + Exactly(arm.x) + " " + Exactly(arm.y);
    text += "\nreference-runs " + std::to_string(counters.homeMovements);
    text += "\nmovements " + std::to_string(counters.movements);
    text += "\ndistance " + Exactly(counters.distance);
    text += "\nresets " + std::to_string(resets) + "\n";
    for (size_t address = 0; address < flash.size(); address += RowSize) {
        const std::span<const uint8_t> row(flash.data() + address, RowSize);
        if (std::ranges::any_of(row, [](uint8_t byte) { return byte != TableFlash::Erased; })) {
            text += "flash " + ToHex(static_cast<uint32_t>(address), 5) + " ";
            for (const uint8_t byte : row) {
                text += ToHex(byte, 2);
            }
            text += "\n";
        }
    }
    return text + std::string(ChecksumWord) + ToHex(ChecksumOf(text), 8) + "\n";
}

TableState TableState::Parse(const std::string& text)
{
    if (!text.starts_with(Heading)) {
        throw std::runtime_error("line 1: this is no state of a table.");
    }
    const size_t end = text.rfind(ChecksumWord);
    if (end == std::string::npos ||
        text.substr(end) != std::string(ChecksumWord) + ToHex(ChecksumOf(text.substr(0, end)), 8) + "\n") {
        throw std::runtime_error("line " + std::to_string(std::ranges::count(text, '\n')) +
                                 ": the checksum is not that of the lines before it: the file was cut or changed.");
    }
    TableState state;
    state.flash.assign(TableFlash::MemorySize, TableFlash::Erased);
    std::istringstream lines(text.substr(0, end));
    std::string words;
    std::getline(lines, words);
    for (size_t number = 2; std::getline(lines, words); ++number) {
        Line line(words, number);
        if (line.Key() == "arm") {
            state.arm.x = line.Number(-LargestPlace, LargestPlace);
            state.arm.y = line.Number(-LargestPlace, LargestPlace);
        } else if (line.Key() == "reference-runs") {
            state.counters.homeMovements = line.Count();
        } else if (line.Key() == "movements") {
            state.counters.movements = line.Count();
        } else if (line.Key() == "distance") {
            state.counters.distance = line.Number(0.0, LargestCount);
        } else if (line.Key() == "resets") {
            state.resets = line.Count();
        } else if (line.Key() == "flash") {
            line.ReadRow(state.flash);
        } else {
            line.Fail("'" + line.Key() + "' is unknown.");
        }
    }
    return state;
}

TableState TableState::Load(const std::filesystem::path& file)
{
    RequireRegular(file);
    std::ifstream stream(file, std::ios::binary);
    // Windows lets nobody open a file while another one takes its place.
    constexpr int tries = 200;
    for (int left = tries; !stream && left > 0; --left) {
        std::this_thread::sleep_for(std::chrono::milliseconds(10));
        stream.open(file, std::ios::binary);
    }
    const std::string text(std::istreambuf_iterator<char>(stream), {});
    if (!stream) {
        throw std::runtime_error("it can't be read.");
    }
    return Parse(text);
}

bool TableState::Save(const std::filesystem::path& file) const
{
    try {
        RequireRegular(file);
        Kestrelon::Utilities::Tools::ReplacementFile next(file);
        next.Write(Text());
        next.TakePlace();
        return true;
    } catch (const std::exception&) {
        return false;
    }
}

}  // namespace J4Bench
