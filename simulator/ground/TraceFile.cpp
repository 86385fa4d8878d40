#include "simulator/ground/TraceFile.h"

#include <string>

#include "trace/TraceLine.h"

namespace J4Bench {

namespace {

void WriteLine(std::ofstream& stream, const std::string& line) { stream << line << '\n' << std::flush; }

}  // namespace

bool TraceFile::Open(const std::filesystem::path& file)
{
    stream.open(file, std::ios::binary | std::ios::trunc);
    WriteLine(stream, J4Trace::TraceLine::Head());
    if (!stream) {
        stream.close();
    }
    return stream.is_open();
}

void TraceFile::Write(const JournalEntry& entry, int64_t moment)
{
    if (!IsOpen()) {
        return;
    }
    WriteLine(stream, J4Trace::TraceLine::Of(moment, entry));
    if (!stream) {
        stream.close();
    }
}

}  // namespace J4Bench
