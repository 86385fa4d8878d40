// A file that is written beside another one, under a name that no file had, and then takes its place: readers see the one
// or the other, whole, and programs that write the same file at once don't meet. It goes at the end unless it has taken
// the place.
#pragma once

#include <cstdio>
#include <filesystem>
#include <string>

namespace Kestrelon::Utilities::Tools {

class ReplacementFile {
public:
    /// @param target  the file that will be replaced; it may not exist yet
    /// @throws std::system_error, as all functions here, with the system's reason
    explicit ReplacementFile(const std::filesystem::path& target);
    ~ReplacementFile();
    ReplacementFile(const ReplacementFile&) = delete;
    ReplacementFile& operator=(const ReplacementFile&) = delete;

    /// Where it is now.
    const std::filesystem::path& Name() const { return name; }

    void Write(const std::string& content);

    /// Returns when everything written is on the disk; TakePlace then does so with the name. What is not written through
    /// outlives the program, but not every failure of the power.
    void WriteThrough();

    /// Nothing can be written any more.
    void Close();

    void TakePlace();

private:
    const std::filesystem::path target;
    std::filesystem::path name;
    std::FILE* file = nullptr;
    bool isWrittenThrough = false;
};

}  // namespace Kestrelon::Utilities::Tools
