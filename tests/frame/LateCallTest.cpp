// Static objects of an application that live longer than those of the library, because they were made before its first
// call: one calls the library from its destructor, and after it the table is to be free again. They have no test
// framework any more; a failure ends the program with an exit code.
#include <cstdio>
#include <cstdlib>

#include "simulator/world/Bench.h"
#include "tests/support/Application.h"
#include "tests/support/CallJournal.h"
#include "tests/support/ScriptedLibrary.h"

namespace J4Test {
namespace {

void Require(bool holds, const char* what)
{
    if (!holds) {
        std::fprintf(stderr, "after the end of main: %s does not hold\n", what);
        std::_Exit(1);
    }
}

struct LastLook {
    ~LastLook()
    {
        const Lines lines = ShortLines(J4Bench::Bench::Instance().GetJournal().Take());
        Require(lines == Lines{"table s0", "table f0", "table f3"}, "the table is released and nothing else called");
    }
} lastLook;

struct LateCaller {
    ~LateCaller()
    {
        ScriptedLibrary::Instance().PowerOn();
        Require(SetOption("J4TMoveSpeed", "abc") == J4_ResultException, "a wrong value is refused");
        const std::string text = GetOption("LastError");
        Require(text.starts_with("lexical_cast(): fail to convert 'abc' from "), "the failure has its text");
        Require(SetOption("J4TSerialPortLogFile", "a name that is too long to be kept inside of a string") == 0,
                "an option of the library is written");
        Require(SetOption("J4TUseableWithoutJ4", "yes") == 0 && J4_IsTableConnected() == 0, "a table is connected");
        Require(GetOption("J4TMoveSpeed") == "300", "it has its defaults");
        J4Bench::Bench::Instance().GetJournal().Enable(true);
        J4Bench::Bench::Instance().GetJournal().Take();
    }
} lateCaller;

}  // namespace
}  // namespace J4Test
