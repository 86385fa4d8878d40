#include "tools/judge/JudgementText.h"

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "Utilities/Tools/Utf8.h"
#include "tools/Terminal.h"
#include "tools/ToolError.h"

namespace J4Tool {

namespace Utf8 = Kestrelon::Utilities::Tools::Utf8;

namespace {

using Row = std::array<std::string, 7>;
const Row Heads = {"rule", "patches", "what", "limit", "value", "", "worst patches"};
constexpr std::array<bool, std::tuple_size_v<Row>> IsNumber = {false, true, false, true, true, false, false};

std::string Behind(const Judgement::Line& line)
{
    constexpr size_t shown = 3;
    std::string text = line.reason;
    for (size_t i = 0; i < std::min(shown, line.behind.size()); ++i) {
        text += (text.empty() ? "" : i == 0 ? "; " : ", ") + line.behind[i].name;
    }
    return text;
}

}  // namespace

const char* VerdictText(Judgement::Verdict verdict)
{
    constexpr std::array<const char*, 4> texts = {"pass", "fail", "not judged", "left out"};
    return texts[static_cast<size_t>(verdict)];
}

void PrintJudgement(const Judgement& judgement, std::FILE* stream)
{
    std::vector<Row> rows = {Heads};
    for (const Judgement::Line& line : judgement.Lines()) {
        rows.push_back({line.rule.name, std::to_string(line.patches), line.What(), line.LimitText(), line.ValueText(),
                        VerdictText(line.verdict), Behind(line)});
    }
    std::array<size_t, std::tuple_size_v<Row>> widths{};
    for (const Row& row : rows) {
        for (size_t column = 0; column < row.size(); ++column) {
            widths[column] = std::max(widths[column], Utf8::Count(row[column]));
        }
    }
    if (!judgement.Title().empty()) {
        Print(stream, "%s\n", judgement.Title().c_str());
    }
    for (const Row& row : rows) {
        std::string text;
        for (size_t column = 0; column < row.size(); ++column) {
            const std::string blanks(widths[column] - Utf8::Count(row[column]), ' ');
            text += (column > 0 ? "  " : "") + (IsNumber[column] ? blanks + row[column] : row[column] + blanks);
        }
        text.erase(text.find_last_not_of(' ') + 1);
        Print(stream, "%s\n", text.c_str());
    }
    Print(stream, "%s\n%s\n", judgement.Words().c_str(), judgement.CoverageWords().c_str());
    std::fflush(stream);  // what stands on standard error comes behind it
}

Json JudgementJson(const Judgement& judgement)
{
    Json lines = Json::array();
    for (const Judgement::Line& line : judgement.Lines()) {
        Json behind = Json::array();
        for (const Judgement::PatchValue& patch : line.behind) {
            behind.push_back({{"patch", patch.name}, {"value", patch.value}});
        }
        lines.push_back({{"rule", line.rule.name},
                         {"source", line.rule.source},
                         {"of", line.rule.QuantityText()},
                         {"statistic", Tolerances::StatisticNames[static_cast<size_t>(line.statistic)]},
                         {"patches", line.patches},
                         {"limit", line.limit},
                         {"value", line.value ? Json(*line.value) : Json(nullptr)},
                         {"verdict", VerdictText(line.verdict)},
                         {"reason", line.reason},
                         {"worst", behind}});
    }
    return {{"title", judgement.Title()},
            {"source", judgement.Source()},
            {"verdict", VerdictText(judgement.Overall())},
            {"patches", judgement.Patches()},
            {"covered", judgement.Covered()},
            {"limits", lines}};
}

void RequirePass(const Judgement& judgement)
{
    if (judgement.Overall() == Judgement::Verdict::Fail) {
        throw ToolError(ExitCode::Tolerance, "the chart does not hold its tolerances");
    }
    if (judgement.Overall() != Judgement::Verdict::Pass) {
        throw ToolError(ExitCode::Tolerance, "the chart could not be judged by all of its tolerances",
                        "A rule needs its patches in both files; one that this chart may lack has 'optional = true' in "
                        "the file of tolerances.");
    }
}

}  // namespace J4Tool
