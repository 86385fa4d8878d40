#include "simulator/instrument/PatchRecognition.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <utility>

#include "simulator/chart/Aperture.h"
#include "simulator/chart/PrintedChart.h"
#include "simulator/instrument/Noise.h"

namespace J4Bench {
namespace {

/// A row of patches, each 12 mm wide, the first one's middle at 50 mm.
struct RowOnPaper {
    std::vector<double> reflectances;
    double gap;         ///< mm
    double pace;        ///< tenths of a millimetre a sample
    double from, past;  ///< mm: begin of the travel, and its end behind the last patch's middle
};

constexpr double Width = 12.0;

/// What the samples of a travel at constant speed become; the instrument stands still for ten more samples at
/// each end, and the positions behind the end fall again, on a short row below 0, which leaves their low 16 bits.
std::vector<Spectrum> Recognised(const RowOnPaper& row, bool withPositions, double deviation = 0.0)
{
    J4Chart::Chart printed;
    for (size_t i = 0; i < row.reflectances.size(); ++i) {
        const double x = 50 + static_cast<double>(i) * (Width + row.gap);
        printed.places.push_back(J4Chart::Place::Upright({x, 50}, Width, 20));
        printed.patches.emplace_back().spectrum.emplace().fill(static_cast<float>(row.reflectances[i]));
    }
    const PrintedChart chart(printed);

    Noise noise;
    noise.SetDeviation(deviation);
    Spectrum known;
    known.fill(static_cast<float>(deviation));
    const double length = printed.places.back().centre.x * 10 + row.past * 10 - row.from * 10;
    const int moving = static_cast<int>(length / row.pace);
    std::vector<Spectrum> samples;
    std::vector<uint16_t> positions;
    for (int i = -10; i < moving + 10; ++i) {
        const double travel = std::clamp(i * row.pace, 0.0, length);
        samples.push_back(chart.ReflectanceAt({row.from * 10 + travel, 500}, ApertureDiameter));
        noise.AddTo(samples.back(), 1);
        const int fallen = std::max(0, i - moving);
        positions.push_back(static_cast<uint16_t>(static_cast<int>(travel) - 10 * fallen * fallen));
    }
    return PatchRecognition::Reduce(samples, withPositions ? positions : std::vector<uint16_t>(), known);
}

TEST(PatchRecognition, FindsThePatchesOfARow)
{
    const std::vector<double> mixed{0.1, 0.6, 0.05, 0.4, 0.45, 0.2};
    const std::pair<const char*, RowOnPaper> cases[] = {
        {"narrow gaps", {mixed, 3.0, 8.0, 35, 15}},
        {"no gaps", {mixed, 0.0, 8.0, 35, 15}},
        {"slow", {mixed, 0.0, 1.0, 35, 15}},
        {"fast", {mixed, 2.0, 12.0, 35, 15}},
        {"from middle to middle", {mixed, 0.0, 8.0, 50, 0}},
        {"one patch", {{0.3}, 0.0, 8.0, 35, 15}},
        {"white patches inside", {{0.1, 0.85, 0.1}, 0.0, 8.0, 35, 15}},
        {"equal patches beside a narrow gap", {{0.3, 0.3, 0.3}, 1.0, 8.0, 35, 15}},
        {"equal patches beside a gap", {{0.3, 0.3, 0.3}, 2.0, 8.0, 35, 15}},
        {"equal light patches beside a gap", {{0.6, 0.6, 0.6}, 2.5, 8.0, 35, 15}},
        {"equal dark patches beside a wide gap", {{0.05, 0.05, 0.05}, 4.0, 8.0, 35, 15}},
    };
    for (const auto& [what, row] : cases) {
        for (const bool withPositions : {true, false}) {
            SCOPED_TRACE(std::string(what) + (withPositions ? ", positions" : ", samples alone"));
            const std::vector<Spectrum> found = Recognised(row, withPositions);
            ASSERT_EQ(found.size(), row.reflectances.size());
            for (size_t i = 0; i < found.size(); ++i) {
                EXPECT_NEAR(found[i][20], row.reflectances[i], 1e-5) << "patch " << i;
            }
        }
    }
}

TEST(PatchRecognition, LivesWithNoise)
{
    std::vector<double> dark;
    for (int i = 0; i < 40; ++i) {
        dark.push_back(i % 3 == 0 ? 0.01 : i % 3 == 1 ? 0.03 : 0.02);
    }
    for (const double deviation : {0.001, 0.002, 0.005}) {
        for (const double pace : {4.0, 8.0}) {
            for (const bool withPositions : {true, false}) {
                SCOPED_TRACE(testing::Message() << deviation << " at " << pace << (withPositions ? ", positions" : ""));
                const std::vector<Spectrum> found = Recognised({dark, 0.0, pace, 35, 15}, withPositions, deviation);
                ASSERT_EQ(found.size(), dark.size());
                for (size_t i = 0; i < found.size(); ++i) {
                    EXPECT_NEAR(found[i][20], dark[i], 3 * deviation) << "patch " << i;
                }
            }
        }
    }
}

TEST(PatchRecognition, PaperGapsAndFewSamples)
{
    EXPECT_EQ(Recognised({{0.1, 0.2}, 10.0, 8.0, 35, 15}, true).size(), 3u) << "a gap as wide as a patch is one";
    EXPECT_EQ(Recognised({{0.1, 0.2}, 0.0, 8.0, 35, 6}, true).size(), 2u) << "at rest over an edge there is no patch";
    EXPECT_TRUE(Recognised({{0.85}, 0.0, 8.0, 35, 15}, true).empty());
    EXPECT_TRUE(Recognised({{0.85}, 0.0, 8.0, 35, 15}, false).empty());
    Spectrum dark;
    dark.fill(0.1f);
    std::vector<Spectrum> samples(20, dark);
    samples[10].fill(0.3f);
    EXPECT_EQ(PatchRecognition::Reduce(samples, {}, {}).size(), 1u);
    EXPECT_TRUE(PatchRecognition::Reduce({}, {}, {}).empty());
    EXPECT_TRUE(PatchRecognition::Reduce({dark}, {1, 2, 3}, {}).empty());
    EXPECT_TRUE(PatchRecognition::Reduce(samples, std::vector<uint16_t>(20, 0), {}).empty()) << "no travel, no patch";
}

}  // namespace
}  // namespace J4Bench
