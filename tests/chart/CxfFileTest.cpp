#include "chart/cxf/CxfFile.h"

#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <utility>

#include "chart/cgats/CgatsError.h"
#include "chart/cgats/CgatsFile.h"
#include "chart/cxf/CxfReader.h"
#include "tests/support/ChartText.h"

namespace J4Chart {
namespace {

using J4Test::CgatsText;

std::string Written(const std::string& text, std::optional<int> screenMaximum = {})
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
    ExpectParts(Written(CgatsText("SAMPLE_ID RGB_R RGB_G RGB_B", "1 0 0.5 1\n", "DEVICE_MAXIMUM 1\n")),
                {"<cc:MaxRange>10<", "<cc:G>5<", "<cc:B>10<"});
    ExpectParts(Written(CgatsText("SAMPLE_ID CMYK_C CMYK_M CMYK_Y CMYK_K", "1 0 0.3 1 .5\n", "DEVICE_MAXIMUM 1\n")),
                {"<cc:Magenta>30<", "<cc:Yellow>100<", "<cc:Black>50<"});
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
        {CgatsText("SAMPLE_ID", "1\n", "DEVICE_MAXIMUM 0.5\n"),
         "line 2: DEVICE_MAXIMUM '0.5' is not a whole number from 1 to 65535"},
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

/// A file of others: objects of one line each, with two specifications.
std::string Foreign(const std::string& objects)
{
    const auto specification = [](const char* id, const char* illuminant, const char* light) {
        return std::string("<ColorSpecification Id='") + id + "'><TristimulusSpec><Illuminant>" + illuminant +
               "</Illuminant><Observer>2_Degree</Observer></TristimulusSpec><MeasurementSpec><WavelengthRange "
               "StartWL='400' Increment='10'/><Device><Model>Any</Model><DeviceIllumination>" +
               light + "</DeviceIllumination></Device></MeasurementSpec></ColorSpecification>";
    };
    return "\xef\xbb\xbf<?xml version='1.0'?>\n<CxF xmlns='http://colorexchangeformat.com/CxF3-core'>\n"
           "<!-- > --><FileInformation><Description>a &amp; <![CDATA[b]]></Description><Tag Name='no keyword' "
           "Value='1'/>"
           "</FileInformation><Resources><ObjectCollection>\n" +
           objects + "</ObjectCollection><ColorSpecificationCollection>" + specification("m1", "D50", "M1_Daylight") +
           specification("m2", "C", "M2_UVExcluded") + "</ColorSpecificationCollection></Resources></CxF>";
}

CgatsTable ReadCxf(const std::string& text)
{
    std::istringstream input(text);
    return CxfReader::Read(input);
}

TEST(CxfReader, ReadsWhatOthersWrite)
{
    const CgatsTable table = ReadCxf(
        Foreign("<Object Name='' Id='x1'><ColorValues><ReflectanceSpectrum "
                "ColorSpecification='m2'>0.1\n0.2</ReflectanceSpectrum>"
                "<ColorCIELab ColorSpecification='m2'><L>1</L><A>2</A><B>3</B></ColorCIELab></ColorValues>"
                "<DeviceColorValues><ColorRGB><MaxRange>65535</MaxRange><R>65535</R><G> 0 </G><B>257</B></ColorRGB>"
                "</DeviceColorValues></Object>\n"
                "<Object Name='white' Id='x2'><ColorValues><ReflectanceSpectrum ColorSpecification='m1'>1 "
                "1</ReflectanceSpectrum>"
                "<ReflectanceSpectrum ColorSpecification='m2' StartWL='400'>0.3 0.4</ReflectanceSpectrum>"
                "<ColorCIELab ColorSpecification='m2'><L>4</L><A>5</A><B>6</B></ColorCIELab></ColorValues>"
                "<DeviceColorValues><ColorRGB><R>1</R><G>2</G><B>3</B></ColorRGB></DeviceColorValues></Object>\n"
                "<Object Name='nothing' Id='x3'/>"));
    EXPECT_EQ(table.fields, (std::vector<std::string>{"SAMPLE_NAME", "RGB_R", "RGB_G", "RGB_B", "LAB_L", "LAB_A",
                                                      "LAB_B", "SPECTRAL_NM400", "SPECTRAL_NM410"}));
    ASSERT_EQ(table.rows.size(), 2u);
    EXPECT_EQ(table.rows[0].values, (std::vector<std::string>{"x1", "255", "0", "1", "1", "2", "3", "0.1", "0.2"}));
    EXPECT_EQ(table.rows[1].values, (std::vector<std::string>{"white", "1", "2", "3", "4", "5", "6", "0.3", "0.4"}));
    EXPECT_EQ(table.rows[1].line, 6);
    EXPECT_EQ(table.ValueOf("DESCRIPTOR"), "a &");
    EXPECT_EQ(table.ValueOf("WEIGHTING_FUNCTION"), "ILLUMINANT,C;OBSERVER,2 degree");
    EXPECT_EQ(table.ValueOf("MEASUREMENT_CONDITION"), "M2");
    EXPECT_EQ(table.ValueOf("INSTRUMENTATION"), "Any");
    EXPECT_EQ(table.FindKeyword("no keyword"), nullptr);
}

TEST(CxfReader, RefusalsNameLineAndReason)
{
    const auto object = [](const std::string& values) {
        return "<Object Name='a' Id='a'><ColorValues>" + values + "</ColorValues></Object>\n";
    };
    const std::string lab = "<ColorCIELab ColorSpecification='m1'><L>1</L><A>2</A><B>3</B></ColorCIELab>";
    std::string deep;
    for (int i = 0; i < 100000; ++i) {
        deep += "<a>";
    }
    std::string own;  // each object with a field that no other has
    for (int i = 0; i < 2300; ++i) {
        own += "<Object Name='a'><TagCollection Name='Fields'><Tag Name='A" + std::to_string(i) +
               "' Value=''/></TagCollection></Object>";
    }
    const std::pair<std::string, std::string> cases[] = {
        {Foreign(own), "line 4: the objects have more than 5000000 values in all, those counted that others have"},
        {"", "the file is no CxF"},
        {"<a>\n<b>\n</a></b>", "line 3: no whole XML: invalid closing tag name"},
        {"<CxF xmlns='http://other'/>",
         "line 1: the file is no CxF3: its namespace is not http://colorexchangeformat.com/CxF3-core"},
        {"<a><!-- ", "line 1: what begins here has no end"},
        {"\n<a b='>", "line 2: what begins here has no end"},
        {"<!DOCTYPE a [<!ENTITY b 'c'>]><a/>", "line 1: a document type is not taken"},
        {deep, "line 1: elements lie more than 64 deep in one another"},
        {std::string("\xff\xfe<\0a\0", 6), "the file is not in UTF-8"},
        {Foreign(object(lab) + object("")), "line 5: the object 'a' has no LAB_L, which others have"},
        {Foreign(object("<ColorCIELab ColorSpecification='m1'><L>1</L><A>2</A></ColorCIELab>")),
         "line 4: ColorCIELab has no B"},
        {Foreign(object("<ReflectanceSpectrum ColorSpecification='m3'>1</ReflectanceSpectrum>")),
         "line 4: the spectrum's first wavelength ('') and step ('') are not told as whole numbers of nm"},
        {Foreign(object(lab) + object("<ColorCIELab ColorSpecification='m2'/>")),
         "line 5: ColorCIELab is not of the ColorSpecification 'm1', as that of others is"},
        {Foreign("<Object Name='a'><DeviceColorValues><ColorRGB><R>x</R></ColorRGB></DeviceColorValues></Object>"),
         "line 4: R 'x' is not a number"},
    };
    for (const auto& [text, reason] : cases) {
        try {
            ReadCxf(text);
            ADD_FAILURE() << "accepted: " << reason;
        } catch (const CgatsError& error) {
            EXPECT_EQ(error.what(), reason);
        }
    }
}

}  // namespace
}  // namespace J4Chart
