// The application's calls in the bench's trace. A call does what it does whether it is traced or not, so nothing is
// thrown, and where no trace runs nothing is built.
#include "c_sdk/src/CallTrace.h"

#include <charconv>
#include <iterator>
#include <string>
#include <vector>

#include "c_sdk/include/j4tavla.h"
#include "c_sdk/src/ContextJ4T.h"
#include "simulator/world/Bench.h"

namespace Kestrelon::DeviceDriver::J4T::CallTrace {

namespace {

using J4Bench::Journal;
using J4Bench::JournalEntry;

std::string Word(float number)
{
    char text[32];
    return std::string(text, std::to_chars(text, std::end(text), number).ptr);
}

std::string Word(const char* text) { return text == nullptr ? "null" : text; }

/// Writes an entry that somebody has filled, where a trace runs.
template <class Fill>
void Trace(JournalEntry::Kind kind, const char* function, Fill fill) noexcept
try {
    Journal& journal = J4Bench::Bench::Instance().GetJournal();
    if (journal.Tracing()) {
        JournalEntry entry{kind, function};
        fill(entry);
        journal.Add(entry);
    }
} catch (...) {}

}  // namespace

void Begin(const char* function, const ExportParameters& parameters) noexcept
{
    Trace(JournalEntry::Kind::Call, function, [&](JournalEntry& entry) {
        std::vector<std::string>& words = entry.arguments;
        if (entry.name == "J4_GetOption") {
            words = {Word(parameters.key)};
        } else if (entry.name == "J4_SetOption") {
            words = {Word(parameters.key), Word(parameters.value)};
        } else if (entry.name == "J4_SetPosition") {
            words = {Word(parameters.positionA.x), Word(parameters.positionA.y)};
        } else if (entry.name == "J4_Scan") {
            words = {Word(parameters.positionA.x), Word(parameters.positionA.y), Word(parameters.positionB.x),
                     Word(parameters.positionB.y)};
        } else if (parameters.bufferLength > 0 || entry.name == "J4_TriggerCountedScan") {
            words = {std::to_string(static_cast<uint32_t>(parameters.index))};
        }
    });
}

void EndWithStatus(const char* function, int32_t status) noexcept
{
    Trace(JournalEntry::Kind::Return, function, [status](JournalEntry& entry) {
        entry.status = status;
        // Without the instrument's library there is nothing that could hold a text.
        if (status != J4_ResultNoError && status != J4_ResultFrameFailure) {
            entry.result = ContextJ4T::Instance()->sdk->lastError.what();
        }
    });
}

void End(const char* function, int64_t result) noexcept
{
    Trace(JournalEntry::Kind::Return, function,
          [result](JournalEntry& entry) { entry.result = std::to_string(result); });
}

void End(const char* function, const char* result) noexcept
{
    Trace(JournalEntry::Kind::Return, function, [result](JournalEntry& entry) { entry.result = result; });
}

}  // namespace Kestrelon::DeviceDriver::J4T::CallTrace
