// The layout of a chart as the scan reads it: names, device values, pages, and places on the bed.
#pragma once

#include <string>
#include <vector>

#include "chart/cgats/CgatsTable.h"
#include "tools/make/ColourList.h"
#include "tools/make/PageLayout.h"

namespace J4Tool {

class LayoutTable {
public:
    /// Keywords that every file of a chart has, for instance its title.
    using Keywords = std::vector<J4Chart::CgatsTable::Keyword>;

    /// @param order  for each place the index of its colour
    LayoutTable(const ColourList& list, const PageLayout& pages, const std::vector<size_t>& order,
                const Keywords& keywords);

    /// What the list tells of its colours is carried over, SAMPLE_ID too; where the list has none it counts the places.
    const J4Chart::CgatsTable& Layout() const { return layout; }

    /// Fields of the list that are neither printed nor known as colours or places.
    const std::vector<std::string>& Carried() const { return carried; }

    /// The layout as PrintModel prints it, for the virtual table: with spectra and paper, with marks and names as strokes.
    J4Chart::CgatsTable SimulatedPrint() const;

private:
    std::vector<std::string> PlaceOf(size_t place) const;

    const ColourList& list;
    const PageLayout& pages;
    const std::vector<size_t>& order;
    J4Chart::CgatsTable layout;
    std::vector<std::string> carried;
};

}  // namespace J4Tool
