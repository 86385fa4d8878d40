// The ground of the frame tests: an instrument's library that the test scripts, a freshly switched-on virtual
// table whose seat holds that library's instrument, and an application that has just been started. Both
// sides write to one journal.
#pragma once

#include <algorithm>
#include <functional>
#include <map>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "simulator/world/Bench.h"
#include "tests/support/Application.h"
#include "tests/support/CallJournal.h"
#include "tests/support/ScriptedLibrary.h"

namespace J4Test {

struct FrameTest : ApplicationTest {
    ScriptedLibrary& library = ScriptedLibrary::Instance();

    void SetUp() override
    {
        library.PowerOn();
        Application::StartOver();
        Bench().Reset();
        Bench().SeatInstrument(0, ScriptedLibrary::serialNumber);
        library.noticeMeasurement = [] {
            if (J4Bench::Carriage* carriage = Bench().CarriageOf(ScriptedLibrary::serialNumber)) {
                carriage->NoteInstrumentCurrent();
            }
        };
        library.record = [](const std::string& call) {
            Bench().GetJournal().Add({J4Bench::JournalEntry::Kind::Library, call});
        };
        Application::RegisterHandlers();
        J4_IsConnected();  // the library has its handlers
        Bench().GetJournal().Enable(true);
    }

    void TearDown() override
    {
        library.PowerOn();
        Application::StartOver();
    }

    static J4Bench::Bench& Bench() { return J4Bench::Bench::Instance(); }

    static Lines TakeJournal() { return ShortLines(Bench().GetJournal().Take()); }

    /// The table is connected and the journal empty.
    static void Connect()
    {
        ASSERT_EQ(J4_IsTableConnected(), 0) << GetOption("LastError");
        TakeJournal();
    }
};

}  // namespace J4Test
