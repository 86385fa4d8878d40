#include "tools/trace/TracePage.h"

#include <map>
#include <nlohmann/json.hpp>
#include <utility>

#include "Utilities/Tools/FilePath.h"
#include "tools/Json.h"
#include "tools/report/HtmlPage.h"
#include "tools/report/ReportFiles.h"
#include "tools/trace/ArmWay.h"
#include "tools/trace/Dialogue.h"

namespace J4Tool {

namespace {

Json PlaceObject(const std::optional<Point>& place) { return place ? Json{place->x, place->y} : Json(nullptr); }

Json MotionObject(const ArmMotion& motion)
{
    constexpr const char* kinds[] = {"move", "scan", "home"};
    Json object = {{"kind", kinds[static_cast<size_t>(motion.kind)]},
                   {"begin", motion.begin},
                   {"end", motion.stop},
                   {"ramp", motion.acceleration},
                   {"from", PlaceObject(motion.start)},
                   {"to", PlaceObject(motion.end)},
                   {"speed", motion.speed}};
    if (motion.isVisor) {
        object["visor"] = true;
    }
    if (motion.error != 0) {
        object["error"] = motion.error;
    }
    if (motion.isUnfinished) {
        object["unfinished"] = true;
    }
    return object;
}

}  // namespace

TracePage::TracePage(const std::string& fileName, bool isWhole)
{
    Json lines = Json::array();
    Json samples = Json::array();
    std::map<std::string, ArmWay> ways;
    int64_t end = 0;
    Dialogue dialogue(
        [&](const DialogueLine& line) {
            // Short keys: there are many.
            Json object = {{"t", line.time}, {"d", line.depth}, {"x", line.text}};
            if (line.isFailure) {
                object["f"] = 1;
                ++failures;
            }
            lines.push_back(std::move(object));
        },
        isWhole);
    cut = ReadTrace(fileName, [&](const TraceEvent& event) {
        ++events;
        end = std::max(end, event.time);
        dialogue.Add(event);
        if (event.entry.kind == Kind::Samples) {
            samples.push_back({event.entry.begin, event.time, event.entry.count});
        } else if (!event.entry.table.empty()) {
            ways[event.entry.table].Add(event);
        }
    });
    dialogue.End();
    Json tables = Json::array();
    for (auto& [name, way] : ways) {
        way.End();
        Json objects = Json::array();
        for (const ArmMotion& motion : way.Motions()) {
            objects.push_back(MotionObject(motion));
            ++motions;
            scans += motion.kind == ArmMotion::Kind::Scan;
        }
        tables.push_back({{"name", name}, {"motions", std::move(objects)}});
    }
    using Kestrelon::Utilities::Tools::NameOf;
    using Kestrelon::Utilities::Tools::PathOf;
    const std::string name = NameOf(PathOf(fileName).filename());
    const Json data = {
        {"program", HtmlPage::Program()},   {"file", name}, {"end", end},    {"tables", tables}, {"samples", samples},
        {"failuresRemark", FailuresRemark}, {"cut", cut},   {"lines", lines}};
    text = HtmlPage{"Trace: " + name, traceBody, traceStyle, JsonText(data), traceScript}.Text();
}

}  // namespace J4Tool
