#include <gtest/gtest.h>

#include "tests/simulator/TableLine.h"

namespace J4Bench {
namespace {

std::string WriteRam(uint32_t address, size_t count, uint8_t value)
{
    std::string request = "u9" + ToHex(address, 4) + (count == 128 ? "1" : "2");
    for (size_t i = 0; i < count; ++i) {
        request += ToHex(value, 2);
    }
    return request;
}

TEST(TableFlash, EveryRuleHasItsStatus)
{
    const std::string ramRequest = WriteRam(0, 128, 0);
    const struct {
        std::string request;
        const char* reply;
    } exchanges[] = {
        {"u077", "$u07"},  // locked at power-on
        {"u277", "$u27"},
        {"u10e00000003", "$u17"},
        {"uA000000", "$uAa"},  // wrong id
        {"uA31759", "$uA2"},
        {"uA317598", "$uA0"},
        {"u277", "$u28"},  // not prepared
        {"u10e00000003", "$u18"},
        {"u066", "$u07"},  // belongs to another block
        {"u078", "$u07"},
        {"u000", "$u03"},  // no such sectors
        {"u0ff", "$u03"},
        {"u087", "$u03"},
        {"u07", "$u02"},
        {"u0777", "$u02"},
        {"u0g7", "$u02"},
        {"u077", "$u00"},
        {"u277", "$u20"},
        {"u277", "$u28"},  // the preparation is spent
        {"u077", "$u00"},
        {"u10e10000003", "$u14"},  // refused copies leave the preparation
        {"u10e00000013", "$u14"},
        {"u10e00000002", "$u15"},
        {"u10e00000005", "$u15"},
        {"u10e0000f003", "$u10"},
        {"u10e0000f003", "$u18"},
        {"u10e00010013", "$u15"},  // beyond the RAM buffer
        {"u10fe0000006", "$u19"},  // would run into the next sector
        {"u11e00000003", "$u19"},
        {"u10000000003", "$u19"},
        {"u10e000003", "$u12"},
        {ramRequest, "$u90"},
        {ramRequest.substr(0, ramRequest.size() - 2), "$u92"},
        {ramRequest + "00", "$u92"},
        {WriteRam(0x1000, 256, 0), "$u90"},
        {WriteRam(0x1001, 256, 0), "$u95"},
        {"u90000300", "$u95"},
        {"u8000000100002",
         "$u80"
         "652c"},  // of the boot loader's banner
        {"u80001dfff0001",
         "$u80"
         "ff"},
        {"u80001dfff0002",
         "$u89"
         "0000"},
        {"u8ffffffff0001",
         "$u89"
         "00"},
        {"u8000000000000", "$u80"},
        {"u80000000", "$u82"},
        {"uB00", "$uB2"},
        {"uB", "$uB0"},
        {"u077", "$u07"},
    };
    TableLine line;
    for (const auto& exchange : exchanges) {
        EXPECT_EQ(line.Ask(exchange.request, 500000), exchange.reply) << exchange.request;
    }
    const std::string large = line.Ask("u8000000000101");
    EXPECT_EQ(large.substr(0, 4), "$u85");
}

TEST(TableFlash, ErasingSetsAndProgrammingOnlyClearsBits)
{
    TableLine line;
    const auto program = [&](uint8_t value) {
        line.Ask(WriteRam(0, 256, value));
        line.Ask(WriteRam(256, 256, value));
        line.Ask("u088");
        EXPECT_EQ(line.Ask("u11020000003", 100000), "$u10");
        return line.Ask("u8000102000002");
    };
    line.Ask("uA264083");
    EXPECT_EQ(program(0xf1),
              "$u80"
              "f1f1");
    EXPECT_EQ(program(0x8f),
              "$u80"
              "8181");
    EXPECT_EQ(line.Ask("u8000104000001"),
              "$u80"
              "ff")
        << "only 512 bytes were programmed";
    line.Ask("u088");
    EXPECT_EQ(line.Ask("u288", 500000), "$u20");
    EXPECT_EQ(program(0x8f),
              "$u80"
              "8f8f");
}

TEST(TableFlash, BrokenConfigurationStopsTheTableUntilItIsRewritten)
{
    TableLine line;
    std::string factory;
    for (const uint8_t byte : line.table.Flash().Memory().subspan(TableFlash::ConfigurationAddress, 512)) {
        factory += ToHex(byte, 2);
    }
    const auto copy = [&] {
        line.Ask("u077");
        return line.Ask(
            "u10e000"
            "0000"
            "3",
            100000);
    };
    line.Ask("uA317598");
    line.Ask("u900001" + std::string(256, 'f'));
    line.Ask("u900801" + std::string(256, '0'));
    EXPECT_EQ(copy(), "$u10");
    EXPECT_EQ(line.Ask("k2").substr(0, 4), "$k22") << "damaged";
    EXPECT_EQ(line.Ask("i0"), "!i0 $i09");
    EXPECT_EQ(line.Ask("p0"), "$p0200000000");

    line.Ask("u077");
    line.Ask("u277", 500000);
    EXPECT_EQ(line.Ask("k2").substr(0, 4), "$k21") << "missing";
    EXPECT_EQ(line.Ask("k3"), "$k300ce00000000003") << "but there is a place to write it";
    EXPECT_EQ(line.Ask("i0"), "!i0 $i08");
    EXPECT_EQ(line.Ask("m007d007d0012c"), "!m0 $m08");
    EXPECT_EQ(line.Ask("p1"), "$p1100000000");

    line.Ask("u900002" + factory.substr(0, 512));
    line.Ask("u901002" + factory.substr(512));
    EXPECT_EQ(copy(), "$u10");
    EXPECT_EQ(line.Ask("k2").substr(0, 4), "$k20");
    EXPECT_EQ(line.Ask("i0", TableLine::Long), "!i0 $i00");
}

}  // namespace
}  // namespace J4Bench
