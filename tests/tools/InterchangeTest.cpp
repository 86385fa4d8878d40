// The tool's files in the hands of other programs' readers, and theirs in the tool's.

#include <colord.h>
#include <gtest/gtest.h>
#include <lcms2.h>

#include <cmath>
#include <cstring>
#include <memory>

#include "chart/cgats/CgatsFields.h"
#include "chart/colour/ColourDifference.h"
#include "tests/tools/LayoutText.h"
#include "tools/MeasurementFile.h"

namespace J4Tool {
namespace {

namespace ColourDifference = J4Chart::ColourDifference;
namespace Colorimetry = J4Chart::Colorimetry;

using It8 = std::unique_ptr<void, void (*)(void*)>;

It8 LoadIt8(const std::string& text)
{
    return It8(cmsIT8LoadFromMem(nullptr, text.data(), static_cast<cmsUInt32Number>(text.size())), cmsIT8Free);
}

std::string SaveIt8(const It8& it8)
{
    cmsUInt32Number size = 0;
    EXPECT_TRUE(cmsIT8SaveToMem(it8.get(), nullptr, &size));
    std::string text(size, '\0');
    EXPECT_TRUE(cmsIT8SaveToMem(it8.get(), text.data(), &size));
    text.resize(std::strlen(text.c_str()));
    return text;
}

template <class Object>
struct Unref {
    void operator()(Object* object) const { g_object_unref(object); }
};
using ColordFile = std::unique_ptr<CdIt8, Unref<CdIt8>>;

const MeasurementFile::Conditions Conditions = {{"DESCRIPTOR", "A \"quoted\" chart"}, {"INSTRUMENT_SERIAL", "240118"}};

/// A layout with names that need quotes and with device values.
ChartLayout TrickyLayout()
{
    return LayoutOf(CgatsText("SAMPLE_ID SAMPLE_NAME X Y WIDTH HEIGHT CMYK_C CMYK_M CMYK_Y CMYK_K",
                              "1 \"deep red # 1\" 200 200 10 8 0 100 100 12.5\n2 1A 212 200 10 8 1 2 3 4\n"
                              "3 '6\"' 224 200 10 8 0 0 0 0\n4 -x 236 200 10 8 0 0 0 100\n"
                              "5 \"a\tb\" 248 200 10 8 0 0 0 0\n6 'END_DATA' 260 200 10 8 0 0 0 0\n"
                              "7 'it is' 272 200 10 8 0 0 0 \"END_DATA\"\n8 Grün 284 200 10 8 0 0 0 0\n"));
}

const char* const Names[] = {"deep red # 1", "1A", "6\"", "-x", "a\tb", "END_DATA", "it is", "Grün"};

Measurements SomeSpectra()
{
    Measurements measurements(std::size(Names), PatchReading());
    for (size_t i = 0; i < measurements.size(); ++i) {
        for (size_t band = 0; band < J4Chart::SpectrumLength; ++band) {
            measurements[i]->spectrum[band] = 1.0f / static_cast<float>(2 + i + band);
        }
    }
    return measurements;
}

std::string Written(MeasurementFile::Form form)
{
    return MeasurementFile::Text(TrickyLayout(), SomeSpectra(), Conditions, form);
}

TEST(Interchange, LittleCmsReadsWhatTheToolWrites)
{
    const Measurements measurements = SomeSpectra();
    const It8 it8 = LoadIt8(Written(MeasurementFile::Form::Cgats));
    ASSERT_TRUE(it8);
    EXPECT_STREQ(cmsIT8GetSheetType(it8.get()), "CGATS.17");
    EXPECT_STREQ(cmsIT8GetProperty(it8.get(), "INSTRUMENT_SERIAL"), "240118");
    EXPECT_STREQ(cmsIT8GetProperty(it8.get(), "DESCRIPTOR"), "A \"quoted\" chart");
    EXPECT_EQ(cmsIT8GetPropertyDbl(it8.get(), "NUMBER_OF_SETS"), 8.0);
    for (size_t i = 0; i < std::size(Names); ++i) {
        const std::string id = std::to_string(i + 1);
        EXPECT_STREQ(cmsIT8GetData(it8.get(), id.c_str(), "SAMPLE_NAME"), Names[i]);
        const Colorimetry::Triple lab = Colorimetry::Lab(measurements[i]->spectrum);
        EXPECT_NEAR(cmsIT8GetDataDbl(it8.get(), id.c_str(), "LAB_A"), lab[1], 0.00006);
        for (size_t band = 0; band < measurements[i]->spectrum.size(); ++band) {
            const double value = cmsIT8GetDataDbl(it8.get(), id.c_str(), J4Chart::SpectralField(band).c_str());
            EXPECT_EQ(static_cast<float>(value), measurements[i]->spectrum[band]) << id << " band " << band;
        }
    }
    EXPECT_EQ(cmsIT8GetDataDbl(it8.get(), "1", "CMYK_K"), 12.5);
}

TEST(Interchange, TheToolReadsWhatLittleCmsWrites)
{
    const It8 it8 = LoadIt8(Written(MeasurementFile::Form::Cgats));
    ASSERT_TRUE(it8);
    // It writes a double quote or a tab in a text so that nobody can read it, itself neither.
    cmsIT8SetPropertyStr(it8.get(), "DESCRIPTOR", "A plain chart");
    cmsIT8SetData(it8.get(), "3", "SAMPLE_NAME", "6'");
    cmsIT8SetData(it8.get(), "5", "SAMPLE_NAME", "a b");
    ASSERT_EQ(cmsIT8SetTable(it8.get(), 1), 1);  // a second table behind it
    cmsIT8SetSheetType(it8.get(), "CTI3");
    cmsIT8SetPropertyDbl(it8.get(), "NUMBER_OF_FIELDS", 2);
    cmsIT8SetPropertyDbl(it8.get(), "NUMBER_OF_SETS", 1);
    cmsIT8SetDataFormat(it8.get(), 0, "SAMPLE_ID");
    cmsIT8SetDataFormat(it8.get(), 1, "LAB_L");
    cmsIT8SetData(it8.get(), "w", "SAMPLE_ID", "w");
    cmsIT8SetDataDbl(it8.get(), "w", "LAB_L", 95.5);

    const J4Chart::CgatsFile file = FileOf(SaveIt8(it8));
    ASSERT_EQ(file.Tables().size(), 2u);
    const ChartLayout read = ChartLayout::Read(file, {}, false);
    ASSERT_EQ(read.Patches().size(), std::size(Names));
    EXPECT_EQ(read.Patches()[0].name, "deep red # 1");
    EXPECT_EQ(read.Patches()[2].name, "6'");
    EXPECT_EQ(read.Patches()[5].name, "END_DATA");
    EXPECT_NEAR((*read.Patches()[3].Colour())[0], Colorimetry::Lab(SomeSpectra()[3]->spectrum)[0], 0.001);
    EXPECT_EQ(file.Tables()[1].kind, "CTI3");
    EXPECT_EQ(file.Tables()[1].rows.front().values.back(), "95.5");
}

TEST(Interchange, ColordReadsTheSheetOfSpectra)
{
    const ChartLayout layout = TrickyLayout();
    const Measurements measurements = SomeSpectra();
    const std::string text = Written(MeasurementFile::Form::Spectra);
    const ColordFile it8(cd_it8_new());
    GError* failure = nullptr;
    ASSERT_TRUE(cd_it8_load_from_data(it8.get(), text.data(), text.size(), &failure)) << failure->message;
    EXPECT_EQ(cd_it8_get_kind(it8.get()), CD_IT8_KIND_SPECT);
    GPtrArray* const spectra = cd_it8_get_spectrum_array(it8.get());
    ASSERT_EQ(spectra->len, std::size(Names));
    for (guint i = 0; i < spectra->len; ++i) {
        auto* const spectrum = static_cast<CdSpectrum*>(g_ptr_array_index(spectra, i));
        EXPECT_EQ(cd_spectrum_get_id(spectrum), layout.Patches()[i].name);
        ASSERT_EQ(cd_spectrum_get_size(spectrum), 36u);
        EXPECT_EQ(cd_spectrum_get_start(spectrum), 380.0);
        EXPECT_EQ(cd_spectrum_get_end(spectrum), 730.0);
        for (guint band = 0; band < 36; ++band) {
            EXPECT_NEAR(cd_spectrum_get_value(spectrum, band), measurements[i]->spectrum[band], 1e-6);
        }
    }
    g_ptr_array_unref(spectra);
}

TEST(Interchange, TheToolReadsWhatColordWrites)
{
    const ColordFile it8(cd_it8_new_with_kind(CD_IT8_KIND_SPECT));
    for (int i = 0; i < 2; ++i) {
        CdSpectrum* const spectrum = cd_spectrum_new();
        cd_spectrum_set_id(spectrum, i == 0 ? "first one" : "second");
        cd_spectrum_set_start(spectrum, 380.0);
        cd_spectrum_set_end(spectrum, 730.0);
        for (int band = 0; band < 36; ++band) {
            cd_spectrum_add_value(spectrum, 0.1 + 0.2 * i + 0.01 * band);
        }
        cd_it8_add_spectrum(it8.get(), spectrum);
        cd_spectrum_free(spectrum);
    }
    gchar* data = nullptr;
    gsize size = 0;
    GError* failure = nullptr;
    ASSERT_TRUE(cd_it8_save_to_data(it8.get(), &data, &size, &failure)) << failure->message;
    const std::string text(data, size);
    g_free(data);

    J4Chart::Grid grid;
    grid.columns = 2;
    const ChartLayout layout = LayoutOf(text, grid, true);
    ASSERT_EQ(layout.Patches().size(), 2u);
    EXPECT_EQ(layout.Patches()[0].name, "first one");
    for (size_t band = 0; band < 36; ++band) {
        EXPECT_NEAR((*layout.Patches()[1].spectrum)[band], 0.3 + 0.01 * static_cast<double>(band), 1e-5) << text;
    }
}

TEST(Interchange, TheColourSamplesOfColordAreAChart)
{
    J4Chart::Grid grid;
    grid.columns = 5;
    const ChartLayout layout = ChartLayout::Load("/usr/share/colord/ref/CIE-TCS.sp", grid, true);
    EXPECT_EQ(layout.Rows().size(), 3u);
    EXPECT_EQ(layout.Patches()[14].name, "TCS15");
    EXPECT_TRUE(layout.Patches()[14].Colour());
}

TEST(Interchange, LittleCmsFindsTheSameColourDifferences)
{
    for (int i = 0; i < 500; ++i) {
        const auto between = [i](int salt, double low, double high) {
            return low + (high - low) * std::fmod(i * 0.6180339887 * salt + 0.137 * salt, 1.0);
        };
        const cmsCIELab first{between(1, 0, 100), between(2, -90, 90), between(3, -90, 90)};
        const cmsCIELab second{between(5, 0, 100), between(7, -90, 90), between(11, -90, 90)};
        const Colorimetry::Triple reference = {first.L, first.a, first.b};
        const Colorimetry::Triple sample = {second.L, second.a, second.b};
        EXPECT_NEAR(ColourDifference::Ciede2000(reference, sample), cmsCIE2000DeltaE(&first, &second, 1.0, 1.0, 1.0),
                    1e-6)
            << i;
        EXPECT_NEAR(ColourDifference::Cmc(reference, sample, 2.0, 1.0), cmsCMCdeltaE(&first, &second, 2.0, 1.0), 1e-6)
            << i;
    }
}

}  // namespace
}  // namespace J4Tool
