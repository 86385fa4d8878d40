// What the frames on the table's line say: for each of the library's commands the words for it and for the numbers in its
// request and its reply, one line each. The dialogue of a trace is made of it, and so is the table in docs/protocol.md.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "src/Communication/j4TableCommands.h"

namespace J4Tool {

/// One number of a request or a reply, in hexadecimal digits.
struct WireField {
    enum class Unit { Count, Signed, Hexadecimal, Tenths, Milliseconds, Speed, Mode, Decimal, Bytes };

    const char* name;
    size_t width;  ///< digits; of Bytes 0: all that follow
    Unit unit = Unit::Count;
};

struct WireCommand {
    const Kestrelon::DeviceDriver::J4T::Communication::CommandDefinition& definition;
    const char* name;
    const char* meaning;                 ///< empty where the selectors tell it
    std::vector<const char*> selectors;  ///< what each number that is added to the sub-command stands for
    std::vector<WireField> request;
    std::vector<WireField> reply;
    const char* remark = "";  ///< for the document

    bool HasSubCommand() const;
    /// Two replies: accepted, and done.
    bool IsLong() const;

    static const std::vector<WireCommand>& All();
    /// The table of docs/protocol.md, a line for each command.
    static std::string Document();
    /// Its list of errors of motions, a line for each.
    static std::string ErrorDocument();
};

/// A frame taken apart.
class WireFrame {
public:
    /// @param text  without carriage return
    explicit WireFrame(std::string_view text);

    bool IsRequest() const { return !isReply; }
    /// Null for what is no known command's.
    const WireCommand* Command() const { return command; }
    bool Is(const Kestrelon::DeviceDriver::J4T::Communication::CommandDefinition& definition) const
    {
        return command != nullptr && &command->definition == &definition;
    }
    size_t Selector() const { return selector; }

    /// '!', '$', '&' or '#' of a reply.
    char Acknowledge() const { return acknowledge; }
    int Error() const { return error; }
    bool HasChecksum() const { return hasChecksum; }

    /// The table refused it, failed, or the frame is damaged.
    bool IsFailure() const;

    /// The numbers in the order of the command's fields; those of a reply with an error mean nothing and are left out.
    std::span<const int64_t> Values() const { return values; }

    /// What it says, in words.
    std::string Text() const;

private:
    void Read(std::string_view content);
    void ReadFields(std::span<const WireField> fields, std::string_view data);
    std::string ErrorText() const;

    bool isReply = false;
    bool hasChecksum = false;
    bool isWhole = false;  ///< the fields fit
    const WireCommand* command = nullptr;
    size_t selector = 0;
    char acknowledge = 0;
    int error = 0;
    std::vector<int64_t> values;
};

/// What a vendor request to the USB bridge does, empty for an unknown one.
std::string BridgeRequestText(unsigned request, unsigned value);

}  // namespace J4Tool
