// Draws the pages of a chart.
#pragma once

#include <string>
#include <vector>

#include "tools/make/ColourList.h"
#include "tools/make/PageLayout.h"
#include "tools/make/PdfDocument.h"

namespace J4Tool {

class PagePainter {
public:
    /// What is printed besides the patches and lies nearest to them: the marks as they are, each name of a row or a
    /// column as one thick line. On the page, mm.
    struct Stroke {
        Point from;
        Point to;
        double width = 0.0;
    };

    static std::vector<Stroke> Strokes(const PageLayout& pages);

    /// @param order  for each place the index of its colour
    PagePainter(const ColourList& list, const PageLayout& pages, const std::vector<size_t>& order);

    /// Every page of the chart.
    /// @param paper  its name, "A4 landscape"
    /// @param date   for people
    void Draw(PdfDocument& document, const std::string& title, const std::string& paper, const std::string& date) const;

private:
    void DrawNames(PdfPage& page, size_t number) const;
    std::string Hint(const std::string& paper) const;

    const ColourList& list;
    const PageLayout& pages;
    const std::vector<size_t>& order;
    PdfPage::Colour black;
};

}  // namespace J4Tool
