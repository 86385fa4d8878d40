#include "tools/make/PagePainter.h"

#include <algorithm>
#include <cmath>

#include "chart/cgats/CgatsFields.h"
#include "tools/make/PdfText.h"

namespace J4Tool {

namespace {

// Lengths of what is printed beside the patches, mm.
constexpr double NameHeight = 3.0;
constexpr double TitleHeight = 4.2;
constexpr double SmallHeight = 2.6;
constexpr double LineWidth = 0.25;
constexpr double Edge = 6.0;       // bare for printers
constexpr double RowNames = 10.0;  // where they end
constexpr double ColumnNames = 18.5;
constexpr double TitleLine = 9.5;

std::string Rounded(double millimetres) { return J4Chart::NumberText(std::round(millimetres * 100.0) / 100.0); }

}  // namespace

std::vector<PagePainter::Stroke> PagePainter::Strokes(const PageLayout& pages)
{
    constexpr double reach = PageLayout::MarkReach;
    std::vector<Stroke> strokes;
    for (const Point& mark : pages.Marks()) {
        strokes.push_back({{mark.x - reach, mark.y}, {mark.x + reach, mark.y}, LineWidth});
        strokes.push_back({{mark.x, mark.y - reach}, {mark.x, mark.y + reach}, LineWidth});
    }
    constexpr double pen = 0.5;
    for (const double y : pages.RowMiddles(1)) {
        strokes.push_back({{RowNames - NameHeight, y}, {RowNames, y}, pen});
    }
    for (const double x : pages.ColumnMiddles()) {
        strokes.push_back({{x, ColumnNames - NameHeight}, {x, ColumnNames}, pen});
    }
    return strokes;
}

PagePainter::PagePainter(const ColourList& list, const PageLayout& pages, const std::vector<size_t>& order)
    : list(list),
      pages(pages),
      order(order),
      black(list.IsRgb() ? PdfPage::Colour(3, 0.0) : PdfPage::Colour{0, 0, 0, 1})
{}

void PagePainter::Draw(PdfDocument& document, const std::string& title, const std::string& paper,
                       const std::string& date) const
{
    const Point size = pages.Chosen().paper;
    std::vector<PdfPage*> drawn;
    for (size_t number = 1; number <= pages.Pages(); ++number) {
        PdfPage& page = document.AddPage(size);
        drawn.push_back(&page);
        const std::string count = "page " + std::to_string(number) + " of " + std::to_string(pages.Pages());
        const double room = size.x - 2.0 * Edge - PdfPage::UsualWidth(count + ", " + date, SmallHeight) - NameHeight;
        page.Write({Edge, TitleLine}, TitleHeight, PdfText::Fitting(title, room / TitleHeight), black,
                   PdfPage::Align::Left, true);
        page.Write({size.x - Edge, TitleLine}, SmallHeight, count + ", " + date, black, PdfPage::Align::Right);
        const std::string hint = Hint(paper);
        const double fitting = std::min(SmallHeight, (size.x - 2.0 * Edge) / PdfText::Width(hint));
        page.Write({Edge, size.y - Edge}, fitting, hint, black);
        DrawNames(page, number);
        for (size_t mark = 0; mark < pages.Marks().size(); ++mark) {
            const Point at = pages.Marks()[mark];
            constexpr double reach = PageLayout::MarkReach;
            page.Line({at.x - reach, at.y}, {at.x + reach, at.y}, LineWidth, black);
            page.Line({at.x, at.y - reach}, {at.x, at.y + reach}, LineWidth, black);
            const double side = mark == 1 ? -1.0 : 1.0;
            page.Write({at.x + side, at.y - 1.0}, SmallHeight, std::to_string(mark + 1), black,
                       mark == 1 ? PdfPage::Align::Right : PdfPage::Align::Left);
        }
    }
    for (size_t place = 0; place < order.size(); ++place) {
        const PageLayout::Cell cell = pages.CellOf(place);
        drawn[cell.page - 1]->Fill(cell.centre, pages.Chosen().patch, list.Colours()[order[place]].values);
    }
}

void PagePainter::DrawNames(PdfPage& page, size_t number) const
{
    constexpr double toTheMiddle = 0.36;  // of the letters, from the line on which they stand
    const size_t firstRow = (number - 1) * pages.RowMiddles(1).size();
    const std::vector<double> rows = pages.RowMiddles(number);
    for (size_t row = 0; row < rows.size(); ++row) {
        page.Write({RowNames, rows[row] + toTheMiddle * NameHeight}, NameHeight, PageLayout::RowName(firstRow + row),
                   black, PdfPage::Align::Right);
    }
    const std::vector<double> columns = pages.ColumnMiddles();
    for (size_t column = 0; column < columns.size(); ++column) {
        page.Write({columns[column], ColumnNames}, NameHeight, std::to_string(column + 1), black,
                   PdfPage::Align::Middle);
    }
}

std::string PagePainter::Hint(const std::string& paper) const
{
    const Point patch = pages.Chosen().patch;
    const Point corner = pages.OnBed({});
    const double across = pages.Marks()[1].x - pages.Marks()[0].x;
    return paper + ", patches " + Rounded(patch.x) + " \xc3\x97 " + Rounded(patch.y) +
           " mm. Print at 100 % without colour management: 1 to 2 measures " + Rounded(across) +
           " mm. This page's upper left corner lies at x " + Rounded(corner.x) + ", y " + Rounded(corner.y) + " mm.";
}

}  // namespace J4Tool
