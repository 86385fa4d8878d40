#include "chart/cxf/CxfFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>

#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsFile.h"
#include "tests/support/ChartText.h"

namespace J4Chart {
namespace {

using J4Test::CgatsText;

std::string Written(const std::string& text, int screenMaximum = 255)
{
    std::istringstream input(text);
    return CxfFile::Text(CgatsFile::Read(input).Tables().front(), {"j4tavla", "2026-03-02T00:00:00Z", screenMaximum});
}

void ExpectParts(const std::string& text, std::initializer_list<const char*> parts)
{
    for (const char* part : parts) {
        EXPECT_NE(text.find(part), std::string::npos) << part << " in\n" << text;
    }
}

// Whole files are held against a schema where the tool writes them.
TEST(CxfFile, HasWhatTheFormatHasNoElementForInItsOwnWay)
{
    ExpectParts(Written(CgatsText("SAMPLE_ID RGB_R RGB_G RGB_B", "1 0 12.75 255\n")),
                {"<cc:MaxRange>25500<", "<cc:R>0<", "<cc:G>1275<", "<cc:B>25500<"});
    ExpectParts(Written(CgatsText("SAMPLE_ID RGB_R RGB_G RGB_B", "1 0 50 100\n"), 100),
                {"<cc:MaxRange>100<", "<cc:G>50<", "<cc:B>100<"});
    ExpectParts(Written(CgatsText("SAMPLE_ID LAB_L LAB_A LAB_B XYZ_X XYZ_Y XYZ_Z", "1 -0.02 +1e-05 -0.5 -0 -0.002 2\n",
                                  "CREATED \"2026-03-01 12:00:00\"\n")),
                {"<cc:L>0<", "<cc:A>0.00001<", "<cc:B>-0.5<", "<cc:X>0<", "<cc:Y>0<", "<cc:Z>2<",
                 ">Colorimetric_Reflectance<", ">not told<", "<cc:CreationDate>2026-03-01T12:00:00<"});
    ExpectParts(
        Written(CgatsText("SAMPLE_ID SAMPLE_NAME CMYK_C", "1 \"<\t&'\" 5\n", "CREATED \"2026-02-29T12:00:00Z\"\n")),
        {"Name=\"&lt;&#9;&amp;'\"", "<cc:Tag Name=\"CMYK_C\" Value=\"5\"/>", "<cc:CreationDate>2026-03-02T00:00:00Z<"});
}

TEST(CxfFile, RefusalsNameLineAndReason)
{
    const auto colour = [](const std::string& fields, const std::string& values) {
        return CgatsText("SAMPLE_ID " + fields, "1 " + values + "\n");
    };
    const std::string factor = "' is no reflectance factor of CxF3, which are above -0.1 and below 3";
    const std::string noise = "' is below 0, which CxF3 does not have, and by more than noise";
    const std::pair<std::string, std::string> cases[] = {
        {colour("NM380 NM390", "-0.1 0.5"), "line 6: NM380 '-0.1" + factor},
        {colour("NM380 NM390", "0.5 3"), "line 6: NM390 '3" + factor},
        {colour("NM380 NM390 NM410", "0 0 0"),
         "line 3: CxF3 has spectra in an even step only, and NM410 is out of step"},
        {colour("NM410 NM420", "0 0"), "line 3: CxF3 has spectra that begin at 360 to 400 nm, these begin at 410 nm"},
        {colour("LAB_L LAB_A LAB_B", "-0.6 0 0"), "line 6: LAB_L '-0.6" + noise},
        {colour("XYZ_X XYZ_Y XYZ_Z", "0 -0.1 0"), "line 6: XYZ_Y '-0.1" + noise},
        {colour("LAB_L LAB_A LAB_B", "1 x 0"), "line 6: LAB_A 'x' is not a number"},
        {colour("CMYK_C CMYK_M CMYK_Y CMYK_K", "0 100.1 0 0"),
         "line 6: CMYK_M '100.1' is not a percentage from 0 to 100"},
        {colour("RGB_R RGB_G RGB_B", "0 256 0"), "line 6: RGB_G '256' is not a screen value from 0 to 255"},
        {CgatsText("LAB_L LAB_A LAB_B", "1 0 0\n"), "line 3: the field SAMPLE_NAME or SAMPLE_ID is missing"},
        {CgatsText("SAMPLE_NAME", "a\n\"b\x01\"\n"),
         "line 7: no XML file can hold a text with the control character 0x01"},
        {CgatsText("SAMPLE_NAME", "\xc3(\n"),
         "line 6: no XML file can hold a text with the byte 0xc3, which is not UTF-8 for any of its characters"},
        {CgatsText("SAMPLE_NAME", "a\n", "SERIES \"\xed\xa0\x80\"\n"),
         "line 2: no XML file can hold a text with the byte 0xed, which is not UTF-8 for any of its characters"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            Written(text);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const CgatsError& error) {
            EXPECT_EQ(error.what(), reason);
        }
    }
}

}  // namespace
}  // namespace J4Chart
