// Which chart a command works on and where it lies: the options that all such commands share, and the layout that they
// describe.
#pragma once

#include <array>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tools/ChartLayout.h"
#include "tools/commands/Commands.h"

namespace J4Tool {

struct ChartArguments {
    std::string layout;
    size_t rows = 0;
    size_t columns = 0;
    std::vector<double> size;
    std::vector<double> gap;
    std::vector<double> start;
    std::vector<double> corners;
    std::optional<size_t> page;
    bool cornersByHand = false;
    int speed = 0;  ///< mm/s; 0: as the patches allow

    void AddTo(CLI::App& command);

    /// One file may be both: what is printed on the virtual table's chart and where it lies.
    /// @throws ToolError where there is no layout at all
    void ShareWithBench(ToolContext& context);

    bool PlacedByCorners() const { return cornersByHand || !corners.empty(); }

    /// Whether anything tells how large patches are.
    bool KnowsSizes(const ChartLayout& read) const { return !PlacedByCorners() || !size.empty() || read.HasSizes(); }

    /// Reads the layout, not yet placed by corners.
    /// @throws ToolError
    ChartLayout Load(const Units& units) const;

    /// Places a layout by its corners, where that was asked for; by hand at a table that is connected.
    /// @throws ToolError
    void PlaceCorners(ChartLayout& read, Session& session, const Units& units) const;
};

/// An option of two numbers, "X,Y".
CLI::Option* AddPair(CLI::App& command, const std::string& name, std::vector<double>& target, const std::string& text);

/// What such an option was given, mm; nothing where it was not.
std::optional<Point> PairOf(const Units& units, const std::vector<double>& numbers);

/// Refuses what is no finite number.
CLI::Validator FiniteNumber();

/// Refuses options of the library that a command which measures a chart sets itself, or that would make its coordinates
/// mean something else.
/// @throws ToolError
void RefuseOptionsOfScans(const ToolContext& context, const std::string& command);

}  // namespace J4Tool
