#include "simulator/instrument/InstrumentLibrary.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <fstream>
#include <functional>
#include <limits>
#include <sstream>
#include <stdexcept>
#include <string>
#include <tuple>
#include <utility>
#include <vector>

#include "simulator/table/ConfigurationBlock.h"
#include "simulator/world/Bench.h"
#include "tests/simulator/TableLine.h"
#include "tests/support/ChartText.h"

namespace J4Bench {
namespace {

constexpr const char* Seated = "240118";  // the second instrument, which sits in the table
constexpr const char* Free = "240117";

/// A bench whose table has its motors ready and stands on the tile, with the seated instrument selected.
class LibraryTest : public testing::Test {
protected:
    LibraryTest()
    {
        line.Ask("i0", TableLine::Long);
        line.Ask("i1", TableLine::Long);
        library.SetOption("DeviceType", "Sorvane1");
    }

    std::string Get(const std::string& key) { return library.GetOption(key.c_str()); }
    int32_t Set(const std::string& key, const std::string& value)
    {
        return library.SetOption(key.c_str(), value.c_str());
    }

    void MoveTo(int x, int y) { line.Ask(TableLine::MoveTo("m0", x, y, 300), TableLine::Long); }

    Spectrum Sample(uint32_t index)
    {
        Spectrum spectrum{};
        EXPECT_EQ(library.GetSpectrum(spectrum.data(), index), Status::Ok);
        return spectrum;
    }

    Spectrum Measure()
    {
        EXPECT_EQ(library.TriggerMeasurement(), Status::Ok) << Get("LastError");
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

    void PutChart(const std::vector<J4Test::FlatPatch>& patches)
    {
        const std::string name = testing::TempDir() + "library_test.cgats";
        std::ofstream(name) << J4Test::ChartText(patches, "PAPER_REFLECTANCE 0.88\n");
        ASSERT_EQ(Set("Simulator.ChartFile", name), Status::Ok) << Get("LastError");
    }

    /// What makes results true on the table's tile.
    Spectrum Correction()
    {
        const Spectrum reference = Reference();
        Spectrum vector{};
        for (size_t band = 0; band < vector.size(); ++band) {
            vector[band] = ConfigurationBlock::FactoryWhiteBase()[band] / reference[band];
        }
        return vector;
    }

    Bench bench;
    InstrumentLibrary& library = bench.Library();
    TableLine line{bench.Clock(), bench.TableAt(0)->Controller()};
};

auto Near(const Spectrum& expected) { return testing::Pointwise(testing::FloatNear(1e-6f), expected); }

TEST_F(LibraryTest, TheCorrectionMakesResultsTrue)
{
    ASSERT_EQ(Set("Simulator.ChartOffset", "30 -20 0"), Status::Ok);
    PutChart({{"grey", 270, 320, 30, 30, 0.4}});
    const Spectrum& tile = ConfigurationBlock::FactoryWhiteBase();
    const Spectrum reference = Reference();
    const Spectrum vector = Correction();

    // Without a correction the instrument takes the table's tile for its own white.
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    EXPECT_THAT(Measure(), Near(reference));
    MoveTo(3000, 3000);
    EXPECT_EQ(Set("Simulator.ChartFile", "none.cgats"), Status::InvalidValue) << "the old chart stays";
    Spectrum uncorrected{};
    for (size_t band = 0; band < vector.size(); ++band) {
        EXPECT_GT(reference[band], 0.85f);
        EXPECT_LT(reference[band], 0.96f);
        uncorrected[band] = 0.4f / vector[band];
    }
    EXPECT_THAT(Measure(), Near(uncorrected));

    ASSERT_EQ(library.SetCorrection(1, "j4TavlaCorrection", vector.data()), Status::Ok);
    Spectrum grey;
    grey.fill(0.4f);
    EXPECT_THAT(Measure(), Near(grey));

    // It belongs to the mode in which it was installed.
    line.Ask("i1", TableLine::Long);
    ASSERT_EQ(Set("MeasurementMode", "ScanningReflectance"), Status::Ok);
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    EXPECT_THAT(Measure(), Near(reference));
    ASSERT_EQ(Set("MeasurementMode", "SingleReflectance"), Status::Ok);
    EXPECT_THAT(Measure(), Near(tile));
    ASSERT_EQ(library.SetCorrection(0, nullptr, nullptr), Status::Ok);
    EXPECT_THAT(Measure(), Near(reference));
}

TEST_F(LibraryTest, CalibrationLearnsAndFails)
{
    EXPECT_EQ(Get("IntegrationTime"), "0");
    ASSERT_EQ(library.TriggerMeasurement(), Status::NotCalibrated);
    EXPECT_EQ(library.GetNumberOfAvailableSamples(), 0);
    ASSERT_EQ(library.TriggerCountedScan(10), Status::NotCalibrated);
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    const double tight = std::stod(Get("IntegrationTime"));
    EXPECT_NEAR(tight, 0.005, 0.0005);
    ASSERT_EQ(Set("Simulator.InstrumentLoose", "yes"), Status::Ok);
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    EXPECT_GT(std::stod(Get("IntegrationTime")), 1.15 * tight) << "more than a placement check lets pass";

    PutChart({{"black", 300, 300, 30, 30, 0.05}});
    MoveTo(3000, 3000);
    EXPECT_EQ(library.Calibrate(), Status::CalibrationFailed);
    EXPECT_GT(std::stod(Get("IntegrationTime")), 1.15 * tight) << "the old calibration stays";
    ASSERT_EQ(Set("MeasurementMode", "SingleEmission"), Status::Ok);
    EXPECT_EQ(library.TriggerMeasurement(), Status::Ok);
    EXPECT_EQ(library.TriggerCountedScan(10), Status::NotInThisMode);
}

TEST_F(LibraryTest, TheTableSeesOnlyItsOwnInstrument)
{
    for (const char* index : {"0", "1"}) {
        ASSERT_EQ(Set("DeviceType", std::string("Sorvane") + index), Status::Ok);
        EXPECT_EQ(library.IsConnected(), Status::Ok);
        line.Ask("c0");
        line.Ask("c1");
        EXPECT_EQ(library.TriggerMeasurement(), Status::NotCalibrated) << "the lamp is on all the same";
        EXPECT_EQ(line.Ask("c2"), index[0] == '1' ? "$c2001" : "$c2000");
    }
    EXPECT_EQ(Set("DeviceType", "Sorvane2"), Status::Ok) << "one that is not there can be selected";
    EXPECT_EQ(library.IsConnected(), Status::NoSuchDevice);
    EXPECT_EQ(Get("DeviceType"), "Sorvane2");
    EXPECT_EQ(Get("SerialNumber"), "");
    EXPECT_EQ(Get("MeasurementMode"), "SingleReflectance") << "goes with no instrument";
    EXPECT_EQ(Set("MeasurementMode", "SingleReflectance"), Status::NoSuchDevice);
}

TEST_F(LibraryTest, ACountedScanSeesTheRunningMotion)
{
    PutChart({{"a", 300, 300, 20, 20, 0.2}});
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    ASSERT_EQ(library.SetCorrection(1, "j4TavlaCorrection", Correction().data()), Status::Ok);
    const uint16_t nowhere[150] = {};
    ASSERT_EQ(library.SetPositions(nowhere, 150), Status::Ok);
    MoveTo(2800, 3000);
    line.Ask("d100c8");
    line.Ask(TableLine::MoveTo("m2", 3200, 3000, 160), 50000);
    const int64_t begin = bench.Clock().Now();
    EXPECT_EQ(library.TriggerCountedScan(150), Status::Ok) << Get("LastError");
    const double expected = Instrument::ScanStartUpTime + 150 * 1e6 * std::stod(Get("IntegrationTime"));
    EXPECT_NEAR(static_cast<double>(bench.Clock().Now() - begin), expected, 1.0);
    ASSERT_EQ(library.GetNumberOfAvailableSamples(), 150);
    EXPECT_NEAR(Sample(0)[10], 0.88, 1e-5) << "on paper, still at the start";
    EXPECT_NEAR(Sample(33)[10], 0.2, 1e-5) << "on the patch, half-way";
    EXPECT_NEAR(Sample(149)[10], 0.88, 1e-5) << "on paper, at rest behind the end";
    ASSERT_EQ(Set("Recognition", "yes"), Status::Ok);
    MoveTo(3000, 3000);
    ASSERT_EQ(library.TriggerCountedScan(20), Status::Ok);
    EXPECT_EQ(library.GetNumberOfAvailableSamples(), 1) << "the positions were those of the scan before";
}

TEST_F(LibraryTest, NoiseIsOffUnlessAskedForAndRepeatable)
{
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    EXPECT_EQ(Measure(), Measure());
    ASSERT_EQ(Set("Simulator.Noise", "0.002"), Status::Ok);
    ASSERT_EQ(Set("Simulator.NoiseSeed", "7"), Status::Ok);
    const Spectrum first = Measure();
    EXPECT_NE(Measure(), first);
    ASSERT_EQ(Set("Simulator.NoiseSeed", "7"), Status::Ok);
    EXPECT_EQ(Measure(), first);
    const auto deviation = [&](const std::function<Spectrum(uint32_t)>& sample) {
        double squares = 0.0;
        for (uint32_t i = 0; i < 100; ++i) {
            const Spectrum noisy = sample(i);
            for (size_t band = 0; band < noisy.size(); ++band) {
                squares += std::pow(noisy[band] - Reference()[band], 2) / 3600.0;
            }
        }
        return std::sqrt(squares);
    };
    EXPECT_NEAR(deviation([&](uint32_t) { return Measure(); }), 0.0002, 0.00003) << "a mean of many samples";
    ASSERT_EQ(Set("MeasurementMode", "ScanningReflectance"), Status::Ok);
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    ASSERT_EQ(library.TriggerCountedScan(100), Status::Ok);
    EXPECT_NEAR(deviation([&](uint32_t index) { return Sample(index); }), 0.002, 0.0003);
}

TEST_F(LibraryTest, DriftGrowsFromTheCalibrationOn)
{
    ASSERT_EQ(Set("MeasurementMode", "ScanningReflectance"), Status::Ok);
    ASSERT_EQ(Set("Simulator.Drift", "0.002"), Status::Ok);
    const auto expectShare = [&](float share) {
        Spectrum expected = Reference();
        std::transform(expected.begin(), expected.end(), expected.begin(), [&](float value) { return value * share; });
        EXPECT_THAT(Measure(), testing::Pointwise(testing::FloatNear(1e-4f), expected)) << "a single measurement";
        ASSERT_EQ(library.TriggerCountedScan(1), Status::Ok);
        EXPECT_THAT(Sample(0), testing::Pointwise(testing::FloatNear(1e-4f), expected)) << "a scan";
    };
    for (int round = 0; round < 2; ++round) {
        ASSERT_EQ(library.Calibrate(), Status::Ok);
        expectShare(1.0f);
        bench.Clock().Advance(180'000'000);
        expectShare(1.006f);
    }
}

TEST_F(LibraryTest, OptionsTakeWhatTheyShouldAndRefuseTheRest)
{
    struct Case {
        std::string key, good, bad, error;
    };
    std::vector<Case> cases = {
        {"DeviceType", "Sorvane1", "Other1", "'Other1' is not an instrument of this library."},
        {"DeviceType", "Sorvane0", "Sorvane128", "'128' is not a number from 0 to 127."},
        {"MeasurementMode", "ScanningReflectance", "Fast", "'Fast' is not a measurement mode of this instrument."},
        {"ColorSpaceDescription.Type", "XYZ", "RGB", "'RGB' is not a colour space of this library."},
        {"Colorimetric.Illumination", "D50", "A", "'A' is not \"D50\"."},
        {"Colorimetric.Observer", "TwoDegree", "TenDegree", "'TenDegree' is not \"TwoDegree\"."},
        {"Simulator.ChartOffset", "-2.5 100 0.25", "1 2", "'1 2' is not an offset \"dx dy degrees\"."},
        {"Simulator.ChartOffset", "0 0 -360", "0 nan 0", "'nan' is not a number from -1000 to 1000."},
        {"Simulator.ChartOffset", "0 0 0", "0 0 361", "'361' is not a number from -360 to 360."},
        {"Simulator.TimeScale", "0", "-1", "'-1' is not a number from 0 to 1000."},
        {"Simulator.Noise", "0.001", "nan", "'nan' is not a number from 0 to 1."},
        {"Simulator.NoiseSeed", "12", "1x", "'1x' is not a number from 0 to 2147483647."},
        {"Simulator.Tables", "127", "128", "'128' is not a number from 0 to 127."},
        {"Simulator.Tables", "2", "-1", "'-1' is not a number from 0 to 127."},
        {"Simulator.Instruments", "3", "129", "'129' is not a number from 0 to 128."},
        {"Simulator.SeatedInstrument", "240119;240117", "1", "There is no instrument with the serial number '1'."},
        {"Simulator.SeatedInstrument", "none;240117", "none;none;240118", "There are only 2 tables."},
        {"Simulator.SeatedInstrument", "none;240118", "240118;240118", "Instrument 240118 can't sit in two tables."},
        {"Simulator.UnplugAfterTransfers", "10", "-2", "'-2' is not a number from -1 to 2147483647."},
        {"Simulator.CorruptReplies", "3", "-1", "'-1' is not a number from 0 to 2147483647."},
        {"Simulator.Drift", "-0.001", "inf", "'inf' is not a number from -1 to 1."},
        {"Simulator.Unplug", "240117", "5", "There is no instrument with the serial number '5'."},
    };
    for (const char* key : {"Recognition", "NoPersistentCalibrationLog", "Simulator.TableUnplugged",
                            "Simulator.TableSilent", "Simulator.TableBusy", "Simulator.PositionNotReached",
                            "Simulator.DirtyTile", "Simulator.InstrumentLoose", "Simulator.ErrorHandlerCalls"}) {
        cases.push_back({key, "yes", "maybe", "'maybe' is neither yes nor no."});
        cases.push_back({key, "no", "", "'' is neither yes nor no."});
    }
    const std::string help = Get("Simulator.Help");
    for (const auto& [key, good, bad, error] : cases) {
        SCOPED_TRACE(key);
        EXPECT_EQ(Set(key, good), Status::Ok) << Get("LastError");
        EXPECT_EQ(Get("LastError"), "no error");
        EXPECT_EQ(Get(key), good);
        EXPECT_EQ(Set(key, bad), Status::InvalidValue);
        EXPECT_EQ(Get("LastError"), key + ": " + error);
        EXPECT_EQ(Get(key), good) << "unchanged";
        EXPECT_EQ(help.find(key + ": ") != std::string::npos, key.starts_with("Simulator."));
    }
    for (const auto& [value, reads] : {std::pair("1", "yes"), {"0", "no"}, {"on", "yes"}, {"off", "no"}}) {
        EXPECT_EQ(Set("Recognition", value), Status::Ok);
        EXPECT_EQ(Get("Recognition"), reads);
    }
    for (const char* key :
         {"SerialNumber", "1100", "Simulator.Clock", "Simulator.Help", "Unknown", "Simulator.No", ""}) {
        EXPECT_EQ(Set(key, "1"), Status::UnknownOption) << key;
    }
    EXPECT_EQ(Get("Unknown"), "");
    EXPECT_EQ(Get("Simulator.No"), "");
    EXPECT_EQ(Set("Simulator.ChartFile", "none.cgats"), Status::InvalidValue);
    EXPECT_EQ(Get("LastError"), "Simulator.ChartFile: Chart file 'none.cgats': the file can't be opened.");
    EXPECT_EQ(Set("Simulator.Instruments", "1"), Status::Ok);
    EXPECT_EQ(Get("Simulator.SeatedInstrument"), "none;none") << "the seated one is gone";
}

TEST_F(LibraryTest, BadArgumentsGiveAStatusAndKeepTheSamples)
{
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    const Spectrum before = Measure();
    float values[36] = {};
    const float* spectra[2] = {values, nullptr};
    float notANumber[36];
    std::fill(std::begin(notANumber), std::end(notANumber), std::numeric_limits<float>::quiet_NaN());
    const uint16_t position = 0;
    std::string statuses;
    EXPECT_EQ(library.GetSpectrum(values, 1), Status::NoSample);
    EXPECT_EQ(library.GetSpectrum(values, 0xffffffff), Status::NoSample);
    EXPECT_EQ(library.GetDensities(values, nullptr, 0), Status::Ok);
    EXPECT_EQ(library.SetPositions(nullptr, 0), Status::Ok);
    EXPECT_STREQ(library.GetOption(nullptr), "");
    for (const int32_t status :
         {library.GetSpectrum(nullptr, 0), library.GetTriStimulus(nullptr, 0),
          library.GetDensities(nullptr, nullptr, 0), library.GetDensity(nullptr, 0), library.SetSubstrate(nullptr),
          library.SetSubstrate(notANumber), library.SetOption(nullptr, "x"), library.SetOption("Recognition", nullptr),
          library.TriggerCountedScan(0), library.TriggerCountedScan(0xffffffff),
          library.SetCorrection(1, nullptr, values), library.SetCorrection(1, "another", values),
          library.SetCorrection(1, "j4TavlaCorrection", nullptr),
          library.SetCorrection(1, "j4TavlaCorrection", notANumber), library.ReplaceSamples(nullptr, 1),
          library.ReplaceSamples(spectra, -1), library.ReplaceSamples(spectra, 2), library.SetPositions(nullptr, 1),
          library.SetPositions(&position, std::numeric_limits<uint64_t>::max())}) {
        statuses += std::to_string(status);
    }
    EXPECT_EQ(statuses, std::string(19, '6')) << "in the order of the calls";
    ASSERT_EQ(library.GetNumberOfAvailableSamples(), 1);
    EXPECT_EQ(Sample(0), before);

    const float* replacement[2] = {before.data(), values};
    EXPECT_EQ(library.ReplaceSamples(replacement, 2), Status::Ok);
    EXPECT_EQ(library.GetNumberOfAvailableSamples(), 2);
    EXPECT_EQ(library.ReplaceSamples(nullptr, 0), Status::Ok);
    EXPECT_EQ(library.GetNumberOfAvailableSamples(), 0);
}

TEST_F(LibraryTest, DensitiesAreThoseOfTheirBandsAndRelativeToTheSubstrate)
{
    Spectrum paper;
    paper.fill(0.8f);
    const std::tuple<int, int, size_t> filters[] = {{600, 730, 0}, {500, 590, 1}, {380, 490, 2}};  // nm, dark
    float absolute[4];
    float relative[4];
    for (const auto& [from, to, dense] : filters) {
        Spectrum ink = paper;
        for (int wavelength = from; wavelength <= to; wavelength += WavelengthStep) {
            ink[static_cast<size_t>((wavelength - FirstWavelength) / WavelengthStep)] = 0.08f;
        }
        const float* list[] = {ink.data()};
        ASSERT_EQ(Set("Reset", "All"), Status::Ok);
        ASSERT_EQ(library.ReplaceSamples(list, 1), Status::Ok);
        ASSERT_EQ(library.GetDensities(absolute, nullptr, 0), Status::Ok);
        ASSERT_EQ(library.SetSubstrate(paper.data()), Status::Ok);
        int32_t highest = -1;
        ASSERT_EQ(library.GetDensities(relative, &highest, 0), Status::Ok);
        EXPECT_EQ(static_cast<size_t>(highest), dense);
        for (size_t i = 0; i < 3; ++i) {
            EXPECT_NEAR(absolute[i], i == dense ? 1.0969 : 0.0969, 0.0001);
            EXPECT_NEAR(relative[i], i == dense ? 1.0 : 0.0, 1e-6);
        }
        float density = 0.0f;
        ASSERT_EQ(library.GetDensity(&density, 0), Status::Ok);
        EXPECT_EQ(density, relative[dense]);
    }
    EXPECT_THAT(DensitiesOf(Spectrum{}), testing::Each(testing::DoubleNear(4.0, 1e-9))) << "black has an end";
}

int32_t lastMessage = 0;
std::string lastText;

void KeepMessage(int32_t message, const char* text)
{
    lastMessage = message;
    lastText = text;
}

Bench* benchToReset = nullptr;

void ResetTwice(int32_t, const char*)
{
    benchToReset->Library().SetOption("Simulator.Reset", "yes");
    benchToReset->Library().SetOption("Simulator.Reset", "yes");
}

void ThrowError(const char* context, int32_t status, const char* message)
{
    throw std::runtime_error(std::string(context) + " " + std::to_string(status) + " " + message);
}

TEST_F(LibraryTest, HandlersHearWhatTheyShould)
{
    EXPECT_EQ(library.RegisterErrorHandler(ThrowError), nullptr);
    EXPECT_EQ(library.RegisterDeviceMessageHandler(KeepMessage), nullptr);
    EXPECT_EQ(library.TriggerMeasurement(), Status::NotCalibrated) << "statuses alone, unless asked for";
    ASSERT_EQ(Set("Simulator.ErrorHandlerCalls", "yes"), Status::Ok);
    try {
        library.TriggerMeasurement();
        FAIL() << "the handler's exception passes through";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(),
                     "J4_TriggerMeasurement 3 Instrument 240118 is not calibrated in the mode SingleReflectance.");
    }
    EXPECT_EQ(Get("ExtendedErrorInformation"),
              "Instrument library (simulated)\nSelected instrument: Sorvane1\n"
              "J4_TriggerMeasurement ended with status 3\n"
              "Instrument 240118 is not calibrated in the mode SingleReflectance.");
    EXPECT_EQ(library.IsConnected(), Status::Ok);
    EXPECT_EQ(Get("LastError"), "no error");
    ASSERT_EQ(Set("Simulator.ErrorHandlerCalls", "no"), Status::Ok);

    lastMessage = 0;
    ASSERT_EQ(library.Calibrate(), Status::Ok);
    ASSERT_EQ(Set("Simulator.Unplug", Seated), Status::Ok);
    EXPECT_EQ(lastMessage, 0) << "told in the next call";
    EXPECT_EQ(library.IsConnected(), Status::DeviceFault);
    EXPECT_EQ(lastMessage, 1);
    EXPECT_EQ(lastText, Seated);
    EXPECT_EQ(library.TriggerMeasurement(), Status::DeviceFault);
    ASSERT_EQ(Set("Simulator.Unplug", "none"), Status::Ok);
    EXPECT_EQ(library.IsConnected(), Status::Ok);
    EXPECT_EQ(library.TriggerMeasurement(), Status::NotCalibrated) << "it has forgotten what it learnt";

    benchToReset = &bench;
    EXPECT_EQ(library.RegisterDeviceMessageHandler(ResetTwice), KeepMessage);
    ASSERT_EQ(Set("Simulator.Unplug", Free), Status::Ok);
    EXPECT_EQ(library.IsConnected(), Status::Ok) << "in the world that the handler has left";
    EXPECT_EQ(Get("Simulator.Unplug"), "none");
    EXPECT_EQ(library.RegisterErrorHandler(ThrowError), ThrowError) << "the bench forgets, the library does not";
    EXPECT_EQ(Set("Reset", "All"), Status::Ok);
    EXPECT_EQ(library.RegisterErrorHandler(nullptr), nullptr);
    EXPECT_EQ(library.RegisterDeviceMessageHandler(nullptr), nullptr);
    EXPECT_EQ(Get("DeviceType"), "Sorvane0");
    EXPECT_EQ(Get("SerialNumber"), Free);
}

}  // namespace
}  // namespace J4Bench
