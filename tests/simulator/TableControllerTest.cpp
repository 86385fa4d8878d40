#include <gtest/gtest.h>

#include "tests/simulator/TableLine.h"

namespace J4Bench {
namespace {

struct Exchange {
    const char* request;
    const char* reply;
};

void ExpectExchanges(TableLine& line, std::initializer_list<Exchange> exchanges)
{
    for (const Exchange& exchange : exchanges) {
        EXPECT_EQ(line.Ask(exchange.request), exchange.reply) << exchange.request;
    }
}

TEST(TableController, AnswersEveryImmediateCommand)
{
    TableLine line;
    ExpectExchanges(line, {
                              {"a0",
                               "$a00"
                               "000012"},
                              {"a1",
                               "$a10"
                               "0104023112"},
                              {"a2",
                               "$a20"
                               "0000019c"
                               "000023ae"
                               "00173d38"
                               "00000025"
                               "00000000"
                               "00000000"
                               "00000000"},
                              {"a3",
                               "$a30"
                               "00000000"
                               "00000000"
                               "0000"},
                              {"a4",
                               "$a40"
                               "000000000000000000000000"},
                              {"a5",
                               "$a50"
                               "00fa0002"},
                              {"d100c8",
                               "$d10"
                               "00c8"},
                              {"k0",
                               "$k01"
                               "00000000000000"},
                              {"k2",
                               "$k20"
                               "0ce00000000003"},
                              {"k3",
                               "$k30"
                               "0ce00000000003"},
                              {"p0",
                               "$p00"
                               "07d007d0"},
                              {"s0", "$s00"},
                              {"s1", "$s17"},
                              {"uB", "$uB0"},
                              {"r", "$r0"},
                          });
}

TEST(TableController, FoilAndButtonHaveOppositePolarity)
{
    TableLine line;
    ExpectExchanges(line, {
                              {"f4",
                               "$f40"
                               "00"},
                              {"f1",
                               "$f10"
                               "01"},
                              {"f2",
                               "$f20"
                               "03"},
                              {"f4",
                               "$f40"
                               "03"},
                              {"f0",
                               "$f00"
                               "02"},
                              {"f3",
                               "$f30"
                               "00"},
                              {"f4",
                               "$f40"
                               "00"},
                          });
}

TEST(TableController, SeesTheInstrumentsCurrentOnlyWhileArmed)
{
    TableLine line;
    line.table.NoteInstrumentCurrent();
    EXPECT_EQ(line.Ask("c2"), "$c2000");
    line.Ask("c1");
    EXPECT_EQ(line.Ask("c2"), "$c2000");
    line.table.NoteInstrumentCurrent();
    EXPECT_EQ(line.Ask("c2"), "$c2001");
    line.Ask("c0");
    line.table.NoteInstrumentCurrent();
    EXPECT_EQ(line.Ask("c2"), "$c2000");
}

TEST(TableController, CurrentCountsForACommandThatIsStillInWork)
{
    TableLine line;
    line.SendRaw(";c1" + WireChecksum(";c1"));
    line.clock.Advance(TableLine::Shortly);
    line.table.NoteInstrumentCurrent();
    EXPECT_EQ(line.Ask("c2"), "$c1000 $c2001");
}

TEST(TableController, RejectsWhatItDoesNotUnderstand)
{
    TableLine line;
    line.Start();
    ExpectExchanges(line, {
                              {"x", "&x"},
                              {"x5", "&x5"},
                              {"a6", "&a6"},
                              {"a", "&a"},
                              {"u3", "&u3"},
                              {"a01", "&a0"},
                              {"r0", "&r"},
                              {"d1", "&d1"},
                              {"d10", "&d1"},
                              {"d1zzzz", "&d1"},
                              {"m0", "&m0"},
                              {"m007d007d0", "&m0"},
                              {"m007d007d0012cc", "&m0"},
                              {"m007d007d00xyz", "&m0"},
                              {"m4"
                               "07d0"
                               "07d0"
                               "012c",
                               "&m4"},
                              {"m0"
                               "07d007d007d0012c",
                               "&m0"},
                          });
    line.SendRaw(";a035");
    EXPECT_EQ(line.Replies(TableLine::Shortly), "&a0");
    line.SendRaw(";r00");
    EXPECT_EQ(line.Replies(TableLine::Shortly), "&r");
}

TEST(TableController, IgnoresLinesWithoutACommand)
{
    TableLine line;
    for (const char* noise : {"", ";", "a034", "00", ":!m008"}) {
        line.SendRaw(noise);
        EXPECT_EQ(line.Replies(TableLine::Shortly), "") << noise;
    }
    line.SendRaw(std::string(5000, ';'));
    EXPECT_EQ(line.Replies(TableLine::Shortly), "&;;");
    EXPECT_EQ(line.Ask("a0"), "$a00000012");
}

TEST(TableController, ChecksumsAreThoseOfTheProtocol)
{
    EXPECT_EQ(WireChecksum(";a0"), "34");
    EXPECT_EQ(WireChecksum(":$a000a12f0"), "57");
    EXPECT_EQ(WireChecksum(";m003e807d0012c"), "37");
    EXPECT_EQ(WireChecksum(":!m0"), "08");
    TableLine line;
    ASSERT_EQ(WireChecksum(";uB"), "0e") << "a checksum with a letter in it";
    line.SendRaw(";uB0E");
    EXPECT_EQ(line.Replies(TableLine::Shortly), "$uB0");
}

TEST(TableController, ResetPutsEverythingBackAndCounts)
{
    TableLine line;
    line.Start();
    for (const char* command : {"f1", "f2", "c1", "d10100", "uA317598"}) {
        line.Ask(command);
    }
    line.table.NoteInstrumentCurrent();
    line.Ask("s1");
    EXPECT_EQ(line.Ask("a0").substr(4, 2), "7c");
    EXPECT_EQ(line.Ask("r"), "$r0");
    EXPECT_EQ(line.Ask("a0"), "") << "the controller boots";
    line.Replies(400000);
    ExpectExchanges(line, {{"a0", "$a00000012"}, {"f4", "$f4000"}, {"c2", "$c2000"}, {"u077", "$u07"}});
    EXPECT_EQ(line.Ask("a2").substr(4 + 24, 8), "00000026");
}

TEST(TableController, FaultsShowOnTheLine)
{
    TableLine line;
    line.faults.tableBusy = true;
    ExpectExchanges(line, {{"a0", "#a0"}, {"r", "#r"}, {"m007d007d0012c", "#m0"}, {"x1", "&x1"}});
    line.faults = {};
    line.faults.tableSilent = true;
    EXPECT_EQ(line.Ask("f1"), "");
    line.faults = {};
    EXPECT_EQ(line.Ask("f4"), "$f4001") << "a silent table has done what it was told";
    line.faults.corruptReplies = 1;
    const std::string damaged = line.Ask("a0");
    EXPECT_EQ(damaged.size(), std::string("$a0000801200").size()) << "checksum was taken for a right one";
    EXPECT_EQ(line.Ask("a0"), "$a00080012");
    EXPECT_EQ(line.faults.corruptReplies, 0);
}

}  // namespace
}  // namespace J4Bench
