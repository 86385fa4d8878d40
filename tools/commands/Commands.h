// The commands of the tool. Each function adds one command, or a few of a kind, to the program's arguments; the
// command runs while the arguments are read.
#pragma once

#include <CLI/CLI.hpp>

#include "tools/ToolContext.h"

namespace J4Tool {

void AddInfoCommand(CLI::App& app, ToolContext& context);
void AddChartCommand(CLI::App& app, ToolContext& context);
void AddJoinCommand(CLI::App& app, ToolContext& context);
void AddAlignCommand(CLI::App& app, ToolContext& context);
void AddScanCommand(CLI::App& app, ToolContext& context);
void AddSpotCommand(CLI::App& app, ToolContext& context);
/// move, home, position, calibrate.
void AddMotionCommands(CLI::App& app, ToolContext& context);
/// get, set.
void AddOptionCommands(CLI::App& app, ToolContext& context);
void AddWhitebaseCommand(CLI::App& app, ToolContext& context);
void AddRescueCommand(CLI::App& app, ToolContext& context);
void AddConvertCommand(CLI::App& app, ToolContext& context);
void AddReportCommand(CLI::App& app, ToolContext& context);
/// average, compare.
void AddSeriesCommands(CLI::App& app, ToolContext& context);
void AddTrendCommand(CLI::App& app, ToolContext& context);
void AddTraceCommand(CLI::App& app, ToolContext& context);
void AddJudgeCommand(CLI::App& app, ToolContext& context);

}  // namespace J4Tool
