#include "tools/report/TrendData.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "chart/colour/ColourDifference.h"
#include "tools/DateText.h"
#include "tools/Plural.h"
#include "tools/judge/Judgement.h"
#include "tools/judge/JudgementText.h"
#include "tools/report/InkRamp.h"

namespace J4Tool {

namespace {

using J4Chart::Chart;

/// What is looked at whatever is tolerated: rules that everything holds.
Tolerances UsualFigures()
{
    constexpr double any = std::numeric_limits<double>::infinity();
    Tolerances figures;
    figures.subset = true;
    const auto add = [&](const char* name, const char* part, Tolerances::Quantity quantity, auto... statistics) {
        Tolerances::Rule& rule = figures.rules.emplace_back();
        rule.name = name;
        rule.patches = *PatchGroup::OfPart(part);
        rule.quantity = quantity;
        rule.optional = true;
        ((rule.limits[static_cast<size_t>(statistics)] = any), ...);
    };
    using Quantity = Tolerances::Quantity;
    using Statistic = Tolerances::Statistic;
    add("all patches", "all", Quantity::Difference, Statistic::Mean, Statistic::Percentile95, Statistic::Maximum);
    add("paper", "paper", Quantity::Difference, Statistic::Maximum);
    add("primaries", "primaries", Quantity::Difference, Statistic::Maximum);
    add("grey balance", "greys", Quantity::Grey, Statistic::Mean);
    return figures;
}

std::vector<double> NominalOf(const J4Chart::ToneCurve& curve)
{
    std::vector<double> nominal;
    for (const J4Chart::ToneCurve::Point& point : curve.points) {
        nominal.push_back(point.nominal);
    }
    return nominal;
}

std::vector<std::optional<double>> IncreasesAt(const std::vector<double>& nominal, const J4Chart::ToneCurve& curve)
{
    std::vector<std::optional<double>> increases;
    for (const double value : nominal) {
        const auto point = std::find_if(curve.points.begin(), curve.points.end(),
                                        [value](const auto& one) { return one.nominal == value; });
        increases.push_back(point == curve.points.end() ? std::nullopt : std::optional(point->Increase()));
    }
    return increases;
}

}  // namespace

TrendData::TrendData(const MeasurementSeries& series, const ColourFile& reference, const Tolerances* tolerances,
                     size_t baseline)
    : referenceName(reference.name),
      patchCount(series.Patches().size()),
      baseline(std::min(baseline, series.Measurements().size()))
{
    std::vector<const Chart*> charts;
    for (const size_t index : TakeMeasurements(series)) {
        charts.push_back(&series.Measurements()[index].chart);
    }
    if (tolerances != nullptr) {
        TakeCurves(charts, reference.chart, *tolerances, true);
        for (size_t i = 0; i < charts.size(); ++i) {
            measurements[i].verdict = VerdictText(Judgement(*tolerances, *charts[i], reference.chart).Overall());
        }
    }
    TakeCurves(charts, reference.chart, UsualFigures(), false);
    TellLimitsOfNoWidth();
    TakeWorst(charts, reference.chart);
    TakeRamps(charts, reference.chart);
    if (const std::string notice = series.Notice(); !notice.empty()) {
        notices.push_back(notice);
    }
    constexpr size_t fewest = 5;
    if (this->baseline < fewest) {
        notices.push_back("The control limits are of " + Plural(this->baseline, "measurement") +
                          " only: they are rough.");
    }
}

std::vector<size_t> TrendData::TakeMeasurements(const MeasurementSeries& series)
{
    std::vector<Measurement> given;
    const Measurement* undated = nullptr;
    for (const MeasurementSeries::Measurement& measurement : series.Measurements()) {
        const std::string date = measurement.chart.Condition("CREATED");
        given.push_back({measurement.name, date, ParseDate(date), ""});
    }
    for (const Measurement& measurement : given) {
        undated = undated == nullptr && !measurement.time ? &measurement : undated;
    }
    std::vector<size_t> order(given.size());
    std::iota(order.begin(), order.end(), size_t{0});
    dated = undated == nullptr;
    if (dated) {
        std::stable_sort(order.begin(), order.end(),
                         [&](size_t first, size_t second) { return *given[first].time < *given[second].time; });
    } else {
        notices.push_back("The measurements are in the order in which they were given: " + undated->name +
                          (undated->date.empty()
                               ? " tells no date (CREATED)."
                               : " tells a date that can't be read (CREATED \"" + undated->date + "\")."));
    }
    for (const size_t index : order) {
        measurements.push_back(given[index]);
    }
    return order;
}

void TrendData::TakeCurves(const std::vector<const Chart*>& charts, const Chart& reference, const Tolerances& rules,
                           bool haveLimits)
{
    std::vector<Curve> found;
    std::vector<std::string> reasons;
    std::vector<size_t> notJudged;
    for (const Chart* chart : charts) {
        const Judgement judgement(rules, *chart, reference);
        found.resize(judgement.Lines().size());
        reasons.resize(found.size());
        notJudged.resize(found.size());
        for (size_t i = 0; i < found.size(); ++i) {
            const Judgement::Line& line = judgement.Lines()[i];
            found[i].name = line.rule.name;
            found[i].what = line.What();
            found[i].patches = line.patches;
            found[i].limit = haveLimits ? std::optional(line.limit) : std::nullopt;
            found[i].limitText = haveLimits ? line.LimitText() : "";
            found[i].lastText = line.ValueText();
            if (haveLimits && line.verdict == Judgement::Verdict::NotJudged) {
                reasons[i] = line.reason;
                ++notJudged[i];
            }
            found[i].values.push_back(line.value);
        }
    }
    for (size_t i = 0; i < found.size(); ++i) {
        // All limits of a rule have the same reason.
        if (notJudged[i] > 0 && (i == 0 || notJudged[i - 1] == 0 || found[i - 1].name != found[i].name)) {
            notices.push_back(found[i].name + ": not judged in " + std::to_string(notJudged[i]) + " of " +
                              Plural(charts.size(), "measurement") + ", " + reasons[i] + ".");
        }
    }
    for (Curve& curve : found) {
        const bool isKnown =
            std::any_of(curve.values.begin(), curve.values.end(), [](const auto& value) { return value; });
        const bool isThere = std::any_of(curves.begin(), curves.end(), [&](const Curve& other) {
            return other.what == curve.what && other.patches == curve.patches && other.values == curve.values;
        });
        if (haveLimits || (isKnown && !isThere)) {
            FindOutside(curve);
            curves.push_back(std::move(curve));
        }
    }
}

void TrendData::FindOutside(Curve& curve) const
{
    std::vector<double> first;
    for (size_t i = 0; i < baseline; ++i) {
        if (curve.values[i]) {
            first.push_back(*curve.values[i]);
        }
    }
    curve.control = ControlLimits::Of(first);
    if (!curve.control) {
        return;
    }
    curve.control->lower = std::max(0.0, curve.control->lower);
    for (size_t i = 0; i < curve.values.size(); ++i) {
        if (curve.values[i] && !curve.control->Has(*curve.values[i])) {
            curve.outside.push_back(i);
        }
    }
}

void TrendData::TellLimitsOfNoWidth()
{
    const auto count = static_cast<size_t>(std::count_if(curves.begin(), curves.end(), [](const Curve& curve) {
        return curve.control && curve.control->IsOfNoWidth();
    }));
    if (count > 0) {
        notices.push_back("Control limits of no width: " + Plural(count, "figure") +
                          " without any change in the measurements that the limits are of.");
    }
}

void TrendData::TakeWorst(const std::vector<const Chart*>& charts, const Chart& reference)
{
    constexpr size_t shown = 12;
    const PatchMatch match = MatchPatches(*charts.front(), reference);
    std::vector<std::pair<double, size_t>> largest;
    for (size_t i = 0; i < match.size(); ++i) {
        double difference = 0.0;
        for (const Chart* chart : charts) {
            difference = !match[i] ? -1.0
                                   : std::max(difference,
                                              J4Chart::ColourDifference::Ciede2000(
                                                  *reference.patches[*match[i]].Colour(), *chart->patches[i].Colour()));
        }
        if (match[i]) {
            largest.emplace_back(difference, i);
        }
    }
    std::stable_sort(largest.begin(), largest.end(),
                     [](const auto& first, const auto& second) { return first.first > second.first; });
    largest.resize(std::min(shown, largest.size()));
    for (const auto& [difference, patch] : largest) {
        const J4Chart::Colorimetry::Triple wanted = *reference.patches[*match[patch]].Colour();
        PatchCurve curve = {charts.front()->patches[patch].name,
                            J4Chart::ScreenColourOf(wanted),
                            J4Chart::ScreenColourOf(*charts.back()->patches[patch].Colour()),
                            {}};
        for (const Chart* chart : charts) {
            curve.values.push_back(J4Chart::ColourDifference::Ciede2000(wanted, *chart->patches[patch].Colour()));
        }
        worst.push_back(std::move(curve));
    }
}

void TrendData::TakeRamps(const std::vector<const Chart*>& charts, const Chart& reference)
{
    for (size_t k = 0; k < charts.size(); ++k) {
        for (const InkRamp& ramp : InkRamp::Find(*charts[k], &reference, MatchPatches(*charts[k], reference))) {
            auto tones = std::find_if(ramps.begin(), ramps.end(),
                                      [&](const Tones& one) { return one.ink == ramp.measured.ink; });
            if (tones == ramps.end()) {
                ramps.push_back({ramp.measured.ink, ramp.measured.light, true, NominalOf(ramp.measured), {}, {}});
                tones = ramps.end() - 1;
            }
            tones->increases.resize(charts.size(), std::vector<std::optional<double>>(tones->nominal.size()));
            tones->increases[k] = IncreasesAt(tones->nominal, ramp.measured);
            tones->sameLight = tones->sameLight && tones->light == ramp.measured.light;
            tones->light = ramp.measured.light;
            if (ramp.reference) {
                tones->reference = IncreasesAt(tones->nominal, *ramp.reference);
            }
        }
    }
}

}  // namespace J4Tool
