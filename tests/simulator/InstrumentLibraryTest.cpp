#include "simulator/instrument/InstrumentLibrary.h"

#include <gtest/gtest.h>

#include <fstream>
#include <limits>
#include <sstream>
#include <stdexcept>

#include "Generic/Colour/Colorimetry.h"
#include "simulator/table/ConfigurationBlock.h"
#include "simulator/table/WireText.h"
#include "simulator/world/Bench.h"
#include "tests/simulator/ChartText.h"

namespace J4Bench {
namespace {

namespace Colorimetry = Kestrelon::DeviceDriver::Generic::Colorimetry;

constexpr const char* Seated = "240118";  // the second instrument, which sits in the table
constexpr const char* Free = "240117";

/// A bench whose table has its motors ready and stands on the tile, with the seated instrument selected.
class LibraryTest : public testing::Test {
protected:
    LibraryTest()
    {
        Ask("i0");
        Ask("i1");
        library().SetOption("DeviceType", "Sorvane1");
    }

    InstrumentLibrary& library() { return bench.Library(); }
    std::string Get(const std::string& key) { return library().GetOption(key.c_str()); }
    int32_t Set(const std::string& key, const std::string& value)
    {
        return library().SetOption(key.c_str(), value.c_str());
    }

    /// Sends a command to the table and lets it come to rest.
    void Ask(const std::string& request, int64_t wait = 20000000)
    {
        TableController& table = bench.TableAt(0)->Controller();
        const std::string line = ";" + request;
        for (const char character : line + WireChecksum(line) + "\r") {
            table.Receive(character, bench.Clock().Now());
        }
        table.RunTo(bench.Clock().Now() + 10000);
        bench.Clock().Advance(wait);
        table.RunTo(bench.Clock().Now());
    }

    void MoveTo(int x, int y)
    {
        Ask("m0" + ToHex(static_cast<uint32_t>(x), 4) + ToHex(static_cast<uint32_t>(y), 4) + "012c");
    }

    Spectrum Sample(uint32_t index)
    {
        Spectrum spectrum{};
        EXPECT_EQ(library().GetSpectrum(spectrum.data(), index), Status::Ok);
        return spectrum;
    }

    Spectrum Measure()
    {
        EXPECT_EQ(library().TriggerMeasurement(), Status::Ok) << Get("LastError");
        return Sample(0);
    }

    Spectrum Reference()
    {
        Spectrum reference{};
        std::istringstream text(Get("1100"));
        for (float& value : reference) {
            text >> value;
        }
        EXPECT_TRUE(text && text.eof()) << "36 words and no blank behind";
        return reference;
    }

    void PutChart(const std::vector<FlatPatch>& patches)
    {
        const std::string name = testing::TempDir() + "library_test.cgats";
        std::ofstream(name) << ChartText(patches, "PAPER_REFLECTANCE 0.88\n");
        ASSERT_EQ(Set("Simulator.ChartFile", name), Status::Ok) << Get("LastError");
    }

    Bench bench;
};

void ExpectNear(const Spectrum& found, const Spectrum& expected, double tolerance)
{
    for (size_t band = 0; band < found.size(); ++band) {
        EXPECT_NEAR(found[band], expected[band], tolerance) << "band " << band;
    }
}

TEST_F(LibraryTest, TheCorrectionMakesResultsTrue)
{
    PutChart({{"grey", 300, 300, 30, 30, 0.4}});
    const Spectrum& tile = ConfigurationBlock::FactoryWhiteBase();
    const Spectrum reference = Reference();
    Spectrum vector{};
    for (size_t band = 0; band < vector.size(); ++band) {
        EXPECT_GT(reference[band], 0.85f);
        EXPECT_LT(reference[band], 0.96f);
        vector[band] = tile[band] / reference[band];
    }

    // Without a correction the instrument takes the table's tile for its own white.
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    ExpectNear(Measure(), reference, 1e-6);
    MoveTo(3000, 3000);
    Spectrum uncorrected{};
    for (size_t band = 0; band < vector.size(); ++band) {
        uncorrected[band] = 0.4f * reference[band] / tile[band];
    }
    ExpectNear(Measure(), uncorrected, 1e-6);

    ASSERT_EQ(library().SetCorrection(1, "j4TavlaCorrection", vector.data()), Status::Ok);
    Spectrum grey;
    grey.fill(0.4f);
    ExpectNear(Measure(), grey, 1e-6);

    // It belongs to the mode in which it was installed.
    Ask("i1");
    ASSERT_EQ(Set("MeasurementMode", "ScanningReflectance"), Status::Ok);
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    ExpectNear(Measure(), reference, 1e-6);
    ASSERT_EQ(Set("MeasurementMode", "SingleReflectance"), Status::Ok);
    ExpectNear(Measure(), tile, 1e-6);
    ASSERT_EQ(library().SetCorrection(0, nullptr, nullptr), Status::Ok);
    ExpectNear(Measure(), reference, 1e-6);
}

TEST_F(LibraryTest, CalibrationLearnsAndFails)
{
    EXPECT_EQ(Get("IntegrationTime"), "0");
    ASSERT_EQ(library().TriggerMeasurement(), Status::NotCalibrated);
    EXPECT_EQ(library().GetNumberOfAvailableSamples(), 0);
    ASSERT_EQ(library().TriggerCountedScan(10), Status::NotCalibrated);
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    const double tight = std::stod(Get("IntegrationTime"));
    EXPECT_NEAR(tight, 0.005, 0.0005);
    ASSERT_EQ(Set("Simulator.InstrumentLoose", "yes"), Status::Ok);
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    EXPECT_GT(std::stod(Get("IntegrationTime")), 1.15 * tight) << "more than a placement check lets pass";

    PutChart({{"black", 300, 300, 30, 30, 0.05}});
    MoveTo(3000, 3000);
    EXPECT_EQ(library().Calibrate(), Status::CalibrationFailed);
    EXPECT_GT(std::stod(Get("IntegrationTime")), 1.15 * tight) << "the old calibration stays";
    ASSERT_EQ(Set("MeasurementMode", "SingleEmission"), Status::Ok);
    EXPECT_EQ(library().TriggerMeasurement(), Status::Ok);
    EXPECT_EQ(library().TriggerCountedScan(10), Status::NotInThisMode);
}

TEST_F(LibraryTest, DirtOnTheTileShowsBesideItsMiddle)
{
    const auto difference = [&] {
        float lab[2][3];
        for (int i = 0; i < 2; ++i) {
            MoveTo(1000, 800 - 5 * i);
            EXPECT_EQ(library().TriggerMeasurement(), Status::Ok);
            EXPECT_EQ(library().GetTriStimulus(lab[i], 0), Status::Ok);
        }
        return Colorimetry::Distance({lab[0][0], lab[0][1], lab[0][2]}, {lab[1][0], lab[1][1], lab[1][2]});
    };
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    EXPECT_LT(difference(), 0.001);
    ASSERT_EQ(Set("Simulator.DirtyTile", "1"), Status::Ok);
    EXPECT_GT(difference(), 0.3);
}

TEST_F(LibraryTest, TheTableSeesOnlyItsOwnInstrument)
{
    for (const char* index : {"0", "1"}) {
        ASSERT_EQ(Set("DeviceType", std::string("Sorvane") + index), Status::Ok);
        EXPECT_EQ(library().IsConnected(), Status::Ok);
        Ask("c0", 0);
        Ask("c1", 0);
        EXPECT_EQ(library().TriggerMeasurement(), Status::NotCalibrated) << "the lamp is on all the same";
        TableController& table = bench.TableAt(0)->Controller();
        while (table.TakeReply()) {}
        Ask("c2", 0);
        const auto reply = table.TakeReply();
        ASSERT_TRUE(reply);
        EXPECT_EQ(reply->text.find("$c2001") != std::string::npos, index[0] == '1') << reply->text;
    }
    EXPECT_EQ(Set("DeviceType", "Sorvane2"), Status::Ok) << "one that is not there can be selected";
    EXPECT_EQ(library().IsConnected(), Status::NoSuchDevice);
    EXPECT_EQ(Get("DeviceType"), "Sorvane2");
    EXPECT_EQ(Get("SerialNumber"), "");
    EXPECT_EQ(Get("MeasurementMode"), "SingleReflectance") << "goes with no instrument";
    EXPECT_EQ(Set("MeasurementMode", "SingleReflectance"), Status::NoSuchDevice);
}

TEST_F(LibraryTest, ACountedScanSeesTheRunningMotion)
{
    PutChart({{"a", 300, 300, 20, 20, 0.2}, {"b", 320, 300, 20, 20, 0.6}, {"c", 343, 300, 20, 20, 0.1}});
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    Spectrum vector{};
    const Spectrum reference = Reference();
    for (size_t band = 0; band < vector.size(); ++band) {
        vector[band] = ConfigurationBlock::FactoryWhiteBase()[band] / reference[band];
    }
    ASSERT_EQ(library().SetCorrection(1, "j4TavlaCorrection", vector.data()), Status::Ok);
    const auto run = [&](const char* recognition) {
        EXPECT_EQ(Set("Recognition", recognition), Status::Ok);
        MoveTo(2800, 3000);
        Ask("d100c8", 0);
        Ask("m2" + ToHex(3600, 4) + ToHex(3000, 4) + ToHex(160, 4), 50000);
        const int64_t begin = bench.Clock().Now();
        EXPECT_EQ(library().TriggerCountedScan(150), Status::Ok) << Get("LastError");
        const double expected = Instrument::ScanStartUpTime + 150 * 1e6 * std::stod(Get("IntegrationTime"));
        EXPECT_NEAR(static_cast<double>(bench.Clock().Now() - begin), expected, 1.0);
    };
    run("no");
    ASSERT_EQ(library().GetNumberOfAvailableSamples(), 150);
    EXPECT_NEAR(Sample(0)[10], 0.88, 1e-5) << "on paper, still at the start";
    EXPECT_NEAR(Sample(149)[10], 0.88, 1e-5) << "on paper, at rest behind the end";
    run("yes");
    ASSERT_EQ(library().GetNumberOfAvailableSamples(), 3);
    EXPECT_NEAR(Sample(0)[10], 0.2, 1e-5);
    EXPECT_NEAR(Sample(1)[10], 0.6, 1e-5);
    EXPECT_NEAR(Sample(2)[10], 0.1, 1e-5);
}

TEST_F(LibraryTest, NoiseIsOffUnlessAskedForAndRepeatable)
{
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    EXPECT_EQ(Measure(), Measure());
    ASSERT_EQ(Set("Simulator.Noise", "0.002"), Status::Ok);
    ASSERT_EQ(Set("Simulator.NoiseSeed", "7"), Status::Ok);
    const Spectrum first = Measure();
    EXPECT_NE(Measure(), first);
    ASSERT_EQ(Set("Simulator.NoiseSeed", "7"), Status::Ok);
    EXPECT_EQ(Measure(), first);
    double squares = 0.0;
    for (int i = 0; i < 100; ++i) {
        const Spectrum noisy = Measure();
        for (size_t band = 0; band < noisy.size(); ++band) {
            squares += std::pow(noisy[band] - Reference()[band], 2) / 3600.0;
        }
    }
    EXPECT_NEAR(std::sqrt(squares), 0.002, 0.0003);
}

TEST_F(LibraryTest, OptionsTakeWhatTheyShouldAndRefuseTheRest)
{
    struct Case {
        const char* key;
        const char* good;
        const char* reads;
        const char* bad;
        const char* error;
    };
    const Case cases[] = {
        {"DeviceType", "Sorvane0", "Sorvane0", "Sorvane128", "DeviceType: '128' is not a number from 0 to 127."},
        {"DeviceType", "Sorvane1", "Sorvane1", "Other1", "DeviceType: 'Other1' is not an instrument of this library."},
        {"MeasurementMode", "ScanningReflectance", "ScanningReflectance", "Fast",
         "MeasurementMode: 'Fast' is not a measurement mode of this instrument."},
        {"ColorSpaceDescription.Type", "CIEXYZ", "CIEXYZ", "RGB",
         "ColorSpaceDescription.Type: 'RGB' is not a colour space of this library."},
        {"Colorimetric.Illumination", "D50", "D50", "A", "Colorimetric.Illumination: 'A' is not \"D50\"."},
        {"Colorimetric.Observer", "TwoDegree", "TwoDegree", "TenDegree",
         "Colorimetric.Observer: 'TenDegree' is not \"TwoDegree\"."},
        {"Recognition", "yes", "yes", "maybe", "Recognition: 'maybe' is neither yes nor no."},
        {"NoPersistentCalibrationLog", "yes", "yes", "", "NoPersistentCalibrationLog: '' is neither yes nor no."},
        {"Simulator.TimeScale", "0.0", "0", "-1", "Simulator.TimeScale: '-1' is not a number from 0 to 1000."},
        {"Simulator.Noise", "0.001", "0.001", "nan", "Simulator.Noise: 'nan' is not a number from 0 to 1."},
        {"Simulator.NoiseSeed", "12", "12", "1x", "Simulator.NoiseSeed: '1x' is not a number from 0 to 2147483647."},
        {"Simulator.Tables", "2", "2", "128", "Simulator.Tables: '128' is not a number from 0 to 127."},
        {"Simulator.Instruments", "3", "3", "129", "Simulator.Instruments: '129' is not a number from 0 to 128."},
        {"Simulator.SeatedInstrument", "240119;240117", "240119;240117", "1",
         "Simulator.SeatedInstrument: There is no instrument with the serial number '1'."},
        {"Simulator.SeatedInstrument", "none;240118", "none;240118", "240118;240118",
         "Simulator.SeatedInstrument: Instrument 240118 can't sit in two tables."},
        {"Simulator.TableUnplugged", "yes", "yes", "2", "Simulator.TableUnplugged: '2' is neither yes nor no."},
        {"Simulator.UnplugAfterTransfers", "10", "10", "-2",
         "Simulator.UnplugAfterTransfers: '-2' is not a number from -1 to 2147483647."},
        {"Simulator.TableSilent", "1", "yes", "x", "Simulator.TableSilent: 'x' is neither yes nor no."},
        {"Simulator.TableBusy", "yes", "yes", "x", "Simulator.TableBusy: 'x' is neither yes nor no."},
        {"Simulator.PositionNotReached", "yes", "yes", "x", "Simulator.PositionNotReached: 'x' is neither yes nor no."},
        {"Simulator.CorruptReplies", "3", "3", "-1",
         "Simulator.CorruptReplies: '-1' is not a number from 0 to 2147483647."},
        {"Simulator.DirtyTile", "0", "no", "x", "Simulator.DirtyTile: 'x' is neither yes nor no."},
        {"Simulator.InstrumentLoose", "yes", "yes", "x", "Simulator.InstrumentLoose: 'x' is neither yes nor no."},
        {"Simulator.Unplug", "240117", "240117", "5",
         "Simulator.Unplug: There is no instrument with the serial number '5'."},
        {"Simulator.ErrorHandlerCalls", "no", "no", "x", "Simulator.ErrorHandlerCalls: 'x' is neither yes nor no."},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.key);
        EXPECT_EQ(Set(test.key, test.good), Status::Ok) << Get("LastError");
        EXPECT_EQ(Get("LastError"), "no error");
        EXPECT_EQ(Get(test.key), test.reads);
        EXPECT_EQ(Set(test.key, test.bad), Status::InvalidValue);
        EXPECT_EQ(Get("LastError"), test.error);
        EXPECT_EQ(Get(test.key), test.reads) << "unchanged";
    }
    for (const char* key :
         {"SerialNumber", "1100", "Simulator.Clock", "Simulator.Help", "Unknown", "Simulator.No", ""}) {
        EXPECT_EQ(Set(key, "1"), Status::UnknownOption) << key;
    }
    EXPECT_EQ(Get("Unknown"), "");
    EXPECT_EQ(Get("Simulator.No"), "");
    EXPECT_EQ(Set("Simulator.ChartFile", "none.cgats"), Status::InvalidValue);
    EXPECT_EQ(Get("LastError"), "Simulator.ChartFile: Chart file 'none.cgats': the file can't be opened.");
    const std::string help = Get("Simulator.Help");
    for (const Case& test : cases) {
        if (std::string(test.key).starts_with(InstrumentLibrary::BenchPrefix)) {
            EXPECT_NE(help.find(std::string(test.key) + ": "), std::string::npos) << test.key;
        }
    }
    EXPECT_EQ(Set("Simulator.Reset", "yes"), Status::Ok);
    EXPECT_EQ(Get("Simulator.SeatedInstrument"), Seated);
    EXPECT_EQ(Get("Simulator.TableUnplugged"), "no");
}

TEST_F(LibraryTest, BadArgumentsGiveAStatusAndKeepTheSamples)
{
    ASSERT_EQ(library().Calibrate(), Status::Ok);
    const Spectrum before = Measure();
    float values[36] = {};
    const float* spectra[2] = {values, nullptr};
    float notANumber[36];
    std::fill(std::begin(notANumber), std::end(notANumber), std::numeric_limits<float>::quiet_NaN());
    const uint16_t position = 0;
    EXPECT_EQ(library().GetSpectrum(nullptr, 0), Status::InvalidValue);
    EXPECT_EQ(library().GetSpectrum(values, 1), Status::NoSample);
    EXPECT_EQ(library().GetSpectrum(values, 0xffffffff), Status::NoSample);
    EXPECT_EQ(library().GetTriStimulus(nullptr, 0), Status::InvalidValue);
    EXPECT_EQ(library().GetDensities(nullptr, nullptr, 0), Status::InvalidValue);
    EXPECT_EQ(library().GetDensities(values, nullptr, 0), Status::Ok);
    EXPECT_EQ(library().GetDensity(nullptr, 0), Status::InvalidValue);
    EXPECT_EQ(library().SetSubstrate(nullptr), Status::InvalidValue);
    EXPECT_EQ(library().SetSubstrate(notANumber), Status::InvalidValue);
    EXPECT_EQ(library().SetOption(nullptr, "x"), Status::InvalidValue);
    EXPECT_EQ(library().SetOption("Recognition", nullptr), Status::InvalidValue);
    EXPECT_STREQ(library().GetOption(nullptr), "");
    EXPECT_EQ(library().TriggerCountedScan(0), Status::InvalidValue);
    EXPECT_EQ(library().TriggerCountedScan(0xffffffff), Status::InvalidValue);
    EXPECT_EQ(library().SetCorrection(1, nullptr, values), Status::InvalidValue);
    EXPECT_EQ(library().SetCorrection(1, "another", values), Status::InvalidValue);
    EXPECT_EQ(library().SetCorrection(1, "j4TavlaCorrection", nullptr), Status::InvalidValue);
    EXPECT_EQ(library().SetCorrection(1, "j4TavlaCorrection", notANumber), Status::InvalidValue);
    EXPECT_EQ(library().ReplaceSamples(nullptr, 1), Status::InvalidValue);
    EXPECT_EQ(library().ReplaceSamples(spectra, -1), Status::InvalidValue);
    EXPECT_EQ(library().ReplaceSamples(spectra, 2), Status::InvalidValue);
    EXPECT_EQ(library().SetPositions(nullptr, 1), Status::InvalidValue);
    EXPECT_EQ(library().SetPositions(&position, std::numeric_limits<uint64_t>::max()), Status::InvalidValue);
    EXPECT_EQ(library().SetPositions(nullptr, 0), Status::Ok);
    ASSERT_EQ(library().GetNumberOfAvailableSamples(), 1);
    EXPECT_EQ(Sample(0), before);

    const float* replacement[2] = {before.data(), values};
    EXPECT_EQ(library().ReplaceSamples(replacement, 2), Status::Ok);
    EXPECT_EQ(library().GetNumberOfAvailableSamples(), 2);
    EXPECT_EQ(library().ReplaceSamples(nullptr, 0), Status::Ok);
    EXPECT_EQ(library().GetNumberOfAvailableSamples(), 0);
}

TEST_F(LibraryTest, DensitiesAreRelativeToTheSubstrate)
{
    Spectrum paper;
    paper.fill(0.8f);
    Spectrum ink = paper;
    std::fill(ink.begin(), ink.begin() + 12, 0.08f);  // 380 to 490 nm: a yellow
    const float* list[] = {ink.data()};
    ASSERT_EQ(library().ReplaceSamples(list, 1), Status::Ok);
    ASSERT_EQ(library().SetSubstrate(paper.data()), Status::Ok);
    float densities[4];
    int32_t highest = -1;
    ASSERT_EQ(library().GetDensities(densities, &highest, 0), Status::Ok);
    EXPECT_EQ(highest, 2);
    EXPECT_NEAR(densities[0], 0.0, 1e-6);
    EXPECT_NEAR(densities[2], 1.0, 1e-6);
    float density = 0.0f;
    ASSERT_EQ(library().GetDensity(&density, 0), Status::Ok);
    EXPECT_EQ(density, densities[2]);
}

int32_t lastMessage = 0;
std::string lastText;

void KeepMessage(int32_t message, const char* text)
{
    lastMessage = message;
    lastText = text;
}

void ThrowError(const char* context, int32_t status, const char* message)
{
    throw std::runtime_error(std::string(context) + " " + std::to_string(status) + " " + message);
}

TEST_F(LibraryTest, HandlersHearWhatTheyShould)
{
    EXPECT_EQ(library().RegisterErrorHandler(ThrowError), nullptr);
    EXPECT_EQ(library().RegisterDeviceMessageHandler(KeepMessage), nullptr);
    EXPECT_EQ(library().TriggerMeasurement(), Status::NotCalibrated) << "statuses alone, unless asked for";
    ASSERT_EQ(Set("Simulator.ErrorHandlerCalls", "yes"), Status::Ok);
    try {
        library().TriggerMeasurement();
        FAIL() << "the handler's exception passes through";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "J4_TriggerMeasurement 3 Instrument 240118 is not calibrated in the mode SingleReflectance.");
    }
    EXPECT_EQ(Get("ExtendedErrorInformation"),
              "Instrument library (simulated)\nSelected instrument: Sorvane1\n"
              "J4_TriggerMeasurement ended with status 3\n"
              "Instrument 240118 is not calibrated in the mode SingleReflectance.");
    EXPECT_EQ(library().IsConnected(), Status::Ok);
    EXPECT_EQ(Get("LastError"), "no error");
    ASSERT_EQ(Set("Simulator.ErrorHandlerCalls", "no"), Status::Ok);

    lastMessage = 0;
    ASSERT_EQ(Set("Simulator.Unplug", Seated), Status::Ok);
    EXPECT_EQ(lastMessage, 0) << "told in the next call";
    EXPECT_EQ(library().IsConnected(), Status::DeviceFault);
    EXPECT_EQ(lastMessage, 1);
    EXPECT_EQ(lastText, Seated);
    EXPECT_EQ(library().TriggerMeasurement(), Status::DeviceFault);
    ASSERT_EQ(Set("Simulator.Unplug", "none"), Status::Ok);
    EXPECT_EQ(library().IsConnected(), Status::Ok);

    EXPECT_EQ(Set("Simulator.Reset", "yes"), Status::Ok);
    EXPECT_EQ(library().RegisterErrorHandler(ThrowError), ThrowError) << "the bench forgets, the library does not";
    EXPECT_EQ(Set("Reset", "All"), Status::Ok);
    EXPECT_EQ(library().RegisterErrorHandler(nullptr), nullptr);
    EXPECT_EQ(library().RegisterDeviceMessageHandler(nullptr), nullptr);
    EXPECT_EQ(Get("DeviceType"), "Sorvane0");
    EXPECT_EQ(Get("SerialNumber"), Free);
}

TEST_F(LibraryTest, TheJournalHoldsCallsAndResults)
{
    ASSERT_EQ(Set("Simulator.Journal", "yes"), Status::Ok);
    Set("MeasurementMode", "SingleReflectance");
    Get("MeasurementMode");
    Get("Simulator.Clock");
    library().TriggerCountedScan(130);
    library().SetCorrection(0, nullptr, nullptr);
    library().ReplaceSamples(nullptr, 0);
    library().GetNumberOfAvailableSamples();
    library().RegisterErrorHandler(nullptr);
    library().SetOption(nullptr, "x");
    EXPECT_EQ(Get("Simulator.Journal"),
              "library J4_SetOption MeasurementMode SingleReflectance = 0\n"
              "library J4_GetOption MeasurementMode = SingleReflectance\n"
              "library J4_TriggerCountedScan 130 = 3\n"
              "library J4_Private 0 0 = 0\n"
              "library J4_Private 1 0 = 0\n"
              "library J4_GetNumberOfAvailableSamples = 0\n"
              "library J4_RegisterErrorHandler null = 0\n"
              "library J4_SetOption null x = 6\n");
    EXPECT_EQ(Get("Simulator.Journal"), "");
}

}  // namespace
}  // namespace J4Bench
