// Tolerances from their text to the verdict on a chart.
#include "tools/judge/Judgement.h"

#include <gmock/gmock.h>

#include <sstream>
#include <utility>

#include "tests/support/ChartText.h"
#include "tests/support/Thrown.h"
#include "tools/ColourFile.h"
#include "tools/ToolError.h"
#include "tools/judge/ToleranceFile.h"

namespace J4Tool {
namespace {

using Verdict = Judgement::Verdict;

J4Chart::Chart ChartOf(const std::string& fields, const std::string& rows)
{
    std::istringstream input(J4Test::CgatsText(fields, rows));
    return ColourFile::Read("chart", J4Chart::CgatsFile::Read(input)).chart;
}

const std::string lab = " LAB_L LAB_A LAB_B";
const std::string inkFields = "SAMPLE_NAME CMYK_C CMYK_M CMYK_Y CMYK_K" + lab;

const std::string inkRows =
    "paper1 0 0 0 0 95 1 -4\npaper2 0 0 0 0 95 1 -4\nC 100 0 0 0 56 -36 -44\nM 0 100 0 0 48 75 -4\n"
    "Y 0 0 100 0 89 -4 92\nK 0 0 0 100 16 0 0\nMY 0 100 100 0 48 68 47\nMK 0 100 0 100 12 10 0\n"
    "C50 50 0 0 0 74 -18 -24\ngrey 50 40 40 0 58 0 -1\nbrown 50 50 50 0 52 6 8\ngreyK 50 40 40 10 50 0 0\n"
    "\"brand red\" 10 95 80 0 47 66 40\n";

Tolerances TolerancesOf(const std::string& text) { return ToleranceFile::Read(text, "t.toml"); }

std::string RuleFor(const std::string& patches)
{
    return "[[rule]]\nname = 'r'\nmaximum = 1\npatches = " + patches + "\n";
}

TEST(ToleranceFile, RefusesWhatItDoesNotKnowWithItsLine)
{
    const std::string rule = "[[rule]]\nname = 'r'\n";
    const std::pair<std::string, const char*> cases[] = {
        {"", "t.toml: there is no rule"},
        {"title = 'a'\nrule = 3", "t.toml: line 2: 'rule' is not a list"},
        {"title = \"a", "t.toml: line 1: "},
        {"titel = 'a'\n" + rule + "maximum = 1", "line 1: 'titel' is not known here; there may be title, source"},
        {rule + "maximum = 1\nmaximum = 2", "line 4: "},
        {rule + "maximun = 1", "line 3: 'maximun' is not known here"},
        {rule, "line 1: the rule 'r' has no limit: mean, percentile95, maximum"},
        {"\n[[rule]]\nmaximum = 1", "line 2: the rule has no name"},
        {"[[rule]]\nname = \"a\\nb\"\nmaximum = 1", "line 2: 'name' has a line break"},
        {rule + "maximum = -1", "line 3: 'maximum' is not a number from 0 to 1000"},
        {rule + "maximum = nan", "line 3: 'maximum' is not a number"},
        {rule + "maximum = '3'", "line 3: 'maximum' is not a number"},
        {rule + "maximum = 1\noptional = 1", "line 4: 'optional' is neither true nor false"},
        {rule + "maximum = 1\nformula = 'CIE2000'", "line 4: 'CIE2000' is no formula; there are CIEDE2000, CIE 1976"},
        {rule + "maximum = 1\nof = 'hue'\nformula = 'CIE 1994'", "line 5: a formula is for differences, not for 'hue'"},
        {rule + "maximum = 1\nof = 'tint'", "line 4: 'tint' is not known here; there may be difference, lightness"},
        {rule + "maximum = 1\n" + rule + "mean = 1", "line 4: there is a rule 'r' already"},
        {RuleFor("'solids'"), "line 4: there is no group 'solids'"},
        {RuleFor("{}"), "line 4: a group needs 'names' or 'device'"},
        {RuleFor("{names = []}"), "line 4: the list is empty"},
        {RuleFor("{names = 'a', device = 5}"), "line 4: 'device' is not a table"},
        {RuleFor("{device = {C = [60, 40]}}"), "line 4: the lowest value of 'C' is above the highest"},
        {RuleFor("{device = {C = [1, 2, 3]}}"), "line 4: 'C' has 3 values instead of one"},
        {RuleFor("{device = {C = 'full'}}"), "line 4: 'C' is not a number from 0 to 255"},
        {RuleFor("{device = {}}"), "line 4: 'device' names no ink"},
        {"[group.paper]\nnames = 'p*'\n" + RuleFor("'paper'"), "line 1: the group 'paper' is there without being told"},
        {"[group.a]\nname = 'p*'\n" + RuleFor("'a'"), "line 2: 'name' is not known here"},
    };
    for (const auto& [text, complaint] : cases) {
        SCOPED_TRACE(text);
        try {
            TolerancesOf(text);
            ADD_FAILURE() << "not refused";
        } catch (const ToolError& error) {
            EXPECT_EQ(error.code, ExitCode::File);
            EXPECT_THAT(error.what(), testing::HasSubstr(complaint));
        }
    }
    EXPECT_THROW(ToleranceFile::Load("no such file.toml"), ToolError);
}

TEST(Judgement, PatchesOfARuleByPartNameAndDeviceValue)
{
    const std::string lights = "SAMPLE_NAME RGB_R RGB_G RGB_B" + lab;
    const std::string lightRows =
        "white 255 255 255 95 0 0\nred 255 0 0 50 70 50\nyellow 255 255 0 90 0 90\nblack 0 0 0 10 0 0\n"
        "grey 128 128 128 50 0 0\ntint 128 128 120 50 0 3\n";
    struct Case {
        std::string patches, fields, rows;
        std::vector<std::string> found;
        Verdict verdict = Verdict::Pass;
    };
    const Verdict none = Verdict::NotJudged;
    const Case cases[] = {
        {"'paper'", inkFields, inkRows, {"paper1", "paper2"}},
        {"'primaries'", inkFields, inkRows, {"C", "M", "Y", "K"}},
        {"'secondaries'", inkFields, inkRows, {"MY"}, none},
        {"'greys'", inkFields, inkRows, {"grey"}},
        {"'paper'", lights, lightRows, {"white"}},
        {"'primaries'", lights, lightRows, {"red"}, none},
        {"'secondaries'", lights, lightRows, {"yellow"}, none},
        {"'greys'", lights, lightRows, {"grey"}},
        {"{names = '?rey*'}", inkFields, inkRows, {"grey", "greyK"}},
        {"{names = ['brand *', '*1']}", inkFields, inkRows, {"paper1", "brand red"}},
        {"{names = ['brand *', 'logo']}", inkFields, inkRows, {"brand red"}, none},
        {"{names = '*a*a*'}", inkFields, inkRows, {}, none},
        {"{names = '*p*r1'}", inkFields, inkRows, {"paper1"}},
        {"{device = {C = [40, 60], others = 0}}", inkFields, inkRows, {"C50"}},
        {"{device = [{CMYK_K = 10}, {K = 100, others = 0}]}", inkFields, inkRows, {"K", "greyK"}},
        {"{names = 'g*', device = {K = 0}}", inkFields, inkRows, {"grey"}},
        {"{device = {others = [0, 50]}}", inkFields, inkRows, {"paper1", "paper2", "C50", "grey", "brown", "greyK"}},
        {"{device = [{C = 100, others = 0}, {O = 100}]}", inkFields, inkRows, {"C"}, none},
        {"{device = {O = 0}}", inkFields, inkRows, {}, none},
        {"{device = {C = 100, others = 0}}", inkFields, "a 255 0 0 0 56 -36 -44\nb 100 0 0 0 56 -36 -44\n", {"a"}},
        {"{device = {R = 128, G = 128}}", lights, lightRows, {"grey", "tint"}},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.patches);
        const J4Chart::Chart chart = ChartOf(test.fields, test.rows);
        const Judgement judgement(TolerancesOf(RuleFor(test.patches)), chart, chart);
        std::vector<std::string> found;
        for (const Judgement::PatchValue& patch : judgement.Lines()[0].behind) {
            found.push_back(patch.name);
        }
        EXPECT_EQ(found, test.found);
        EXPECT_EQ(judgement.Lines()[0].patches, test.found.size());
        EXPECT_EQ(judgement.Overall(), test.verdict);
    }
}

TEST(Judgement, ValuesAndVerdicts)
{
    const J4Chart::Chart reference = ChartOf(inkFields, inkRows);
    const std::string names = "SAMPLE_NAME" + lab;
    // Lightness, a* and b* of C, M and Y are off by 3, 4 and 12, one each.
    const std::string measuredRows = "C 59 -36 -44\nM 48 79 -4\nY 89 -4 80\npaper1 95 1 -4\n";
    struct Case {
        const char* what;
        std::string rule;
        Verdict verdict;
        double value;
        std::string patch;  ///< the worst
    };
    const Case cases[] = {
        {"mean of three by device values of the reference",
         "patches = {device = {K = 0, C = [0, 100]}, names = '?'}\n"
         "mean = 6.4\nformula = 'CIE 1976'",
         Verdict::Pass, 19.0 / 3.0, "Y"},
        {"within its limit, but one patch is missing", "patches = {names = '?'}\nmaximum = 12\nformula = 'CIE 1976'",
         Verdict::NotJudged, 12.0, "Y"},
        {"beyond, whatever is missing", "patches = {names = '?'}\nmaximum = 11.9\nformula = 'CIE 1976'", Verdict::Fail,
         12.0, "Y"},
        {"lightness", "patches = {names = 'C'}\nof = 'lightness'\nmaximum = 3", Verdict::Pass, 3.0, "C"},
        {"chroma", "patches = {names = 'Y'}\nof = 'chroma'\nmaximum = 12", Verdict::Pass, 11.98698, "Y"},
        {"hue", "patches = {names = 'Y'}\nof = 'hue'\nmaximum = 0.5", Verdict::Fail, 0.55889, "Y"},
        {"grey", "patches = {names = 'M'}\nof = 'grey'\nmaximum = 4", Verdict::Pass, 4.0, "M"},
        {"not measured", "patches = 'secondaries'\nmaximum = 4", Verdict::NotJudged, -1.0, ""},
        {"one of two not measured", "patches = 'paper'\nmean = 4\noptional = true", Verdict::NotJudged, 0.0, "paper1"},
        {"on no chart", "patches = {names = 'x'}\nmean = 4", Verdict::NotJudged, -1.0, ""},
        {"on no chart, and needs not be", "patches = {names = 'x'}\nmean = 4\noptional = true", Verdict::LeftOut, -1.0,
         ""},
    };
    for (const Case& test : cases) {
        SCOPED_TRACE(test.what);
        // The reference lacks K, so that the first rule finds all of its patches measured.
        const bool isWhole = test.rule.find("K = 0") != std::string::npos;
        const Judgement judgement(
            TolerancesOf("[[rule]]\nname = 'r'\n" + test.rule), ChartOf(names, measuredRows),
            isWhole ? ChartOf(inkFields, J4Test::Replaced(inkRows, "K 0 0 0 100 16 0 0\n", "")) : reference);
        const Judgement::Line& line = judgement.Lines()[0];
        EXPECT_EQ(line.verdict, test.verdict) << line.reason;
        EXPECT_EQ(line.value.has_value(), test.value >= 0.0);
        EXPECT_NEAR(line.value.value_or(-1.0), test.value, 0.0001);
        EXPECT_EQ(line.behind.empty() ? "" : line.behind[0].name, test.patch);
        EXPECT_EQ(judgement.Overall(), test.verdict == Verdict::LeftOut ? Verdict::NotJudged : test.verdict);
        EXPECT_EQ(line.reason.empty(), test.verdict == Verdict::Pass || std::string(test.what) == "hue");
    }
}

TEST(Judgement, OnlyByAReferenceOfTheSameChart)
{
    const Tolerances tolerances = TolerancesOf(RuleFor("'all'"));
    const std::string ids = "SAMPLE_ID RGB_R" + lab;
    const std::pair<J4Chart::Chart, const char*> references[] = {
        {ChartOf(inkFields, "C 100 40 0 0 56 -36 -44\n"), "patch 'C' has CMYK_M 0 in the measured file (line"},
        {ChartOf("SAMPLE_ID CMYK_C" + lab, "7 0.39 56 -36 -44\n8 1 56 -36 -44\n"), "patch 'C' has CMYK_C 100"},
        {ChartOf(ids, "7 255 56 -36 -44\n"), "has other inks or lights"},
    };
    const J4Chart::Chart measured = ChartOf("SAMPLE_ID " + inkFields, "7 C 100 0 0 0 56 -36 -44\n");
    for (const auto& [reference, complaint] : references) {
        SCOPED_TRACE(complaint);
        EXPECT_THAT(J4Test::Thrown([&, &other = reference] { Judgement(tolerances, measured, other); }),
                    testing::HasSubstr(complaint));
    }
    const J4Chart::Chart scaled = ChartOf("SAMPLE_ID CMYK_C CMYK_M" + lab, "7 1 0.004 56 -36 -44\n");
    EXPECT_EQ(Judgement(tolerances, measured, scaled).Overall(), Verdict::Pass) << "other scale, rounding";
}

TEST(Judgement, MeasuredInPartOnlyWhereTheFileAllowsIt)
{
    const std::string text = "[[rule]]\nname = 'r'\nmaximum = 1\n[[rule]]\nname = 's'\nmaximum = 1.003\nmean = 1";
    const J4Chart::Chart reference = ChartOf("SAMPLE_NAME" + lab, "a 50 0 0\nb 50 0 0\n");
    const J4Chart::Chart measured = ChartOf("SAMPLE_NAME" + lab, "a 51.003 0 0\nx 50 0 0\n");
    const Judgement part(TolerancesOf("subset = true\nformula = 'CIE 1976'\n" + text), measured, reference);
    EXPECT_EQ(part.Overall(), Verdict::Fail);
    EXPECT_EQ(part.Words(), "fail: 2 of 3 limits not held");
    EXPECT_EQ(part.CoverageWords(), "Rules cover 1 of 2 patches.");
    const Judgement whole(TolerancesOf(text), measured, reference);
    EXPECT_EQ(whole.Lines()[2].reason, "1 patch without a reference");
    EXPECT_EQ(whole.Lines()[2].verdict, Verdict::NotJudged);
}

TEST(Judgement, FiguresLookAsTheirVerdict)
{
    const J4Chart::Chart reference = ChartOf("SAMPLE_NAME" + lab, "a 50 0 0\n");
    const std::array<std::string, 3> cases[] = {
        {"1", "51.003", "1.00 1.003"},      {"2.9985", "52.998", "2.9985 2.998"}, {"3", "52.9985", "3.00 3.00"},
        {"1e-7", "50.1", "0.0000001 0.10"}, {"1e-7", "50", "0.0000001 0.00"},     {"0.25", "51", "0.25 1.00"},
    };
    for (const auto& [limit, lightness, texts] : cases) {
        SCOPED_TRACE(limit + " " + lightness);
        const Judgement judgement(TolerancesOf("[[rule]]\nname = 'r'\nof = 'lightness'\nmaximum = " + limit),
                                  ChartOf("SAMPLE_NAME" + lab, "a " + lightness + " 0 0\n"), reference);
        EXPECT_EQ(judgement.Lines()[0].LimitText() + " " + judgement.Lines()[0].ValueText(), texts);
    }
}

TEST(ToleranceFile, ThoseThatAreShippedJudgeAndTheOneToFillInDoesNot)
{
    const std::string folder = TOLERANCES;
    const J4Chart::Chart chart = ChartOf(inkFields, inkRows);
    for (const char* name : {"iso12647-2", "iso12647-7", "iso12647-8"}) {
        const Tolerances tolerances = ToleranceFile::Load(folder + "/" + name + ".toml");
        EXPECT_EQ(Judgement(tolerances, chart, chart).Overall(), Verdict::Pass) << name;
        for (const Tolerances::Rule& rule : tolerances.rules) {
            EXPECT_THAT(rule.source, testing::StartsWith("ISO 12647-")) << name << " " << rule.name;
        }
    }
    EXPECT_THROW(ToleranceFile::Load(folder + "/own.toml"), ToolError);
}

}  // namespace
}  // namespace J4Tool
