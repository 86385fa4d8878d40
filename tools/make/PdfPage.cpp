#include "tools/make/PdfPage.h"

#include <algorithm>

#include "tools/make/PdfText.h"

namespace J4Tool {

namespace {

std::string Points(double millimetres) { return PdfText::Number(millimetres * PdfPage::PointsPerMillimetre); }

std::string Numbers(PdfPage::Colour::const_iterator begin, PdfPage::Colour::const_iterator end)
{
    std::string text;
    for (; begin != end; ++begin) {
        text += PdfText::Number(*begin) + " ";
    }
    return text;
}

}  // namespace

/// Counted from the lower left corner, as PDF does.
std::string PdfPage::Text(Point place) const { return Points(place.x) + " " + Points(size.y - place.y); }

void PdfPage::Select(const Colour& colour, bool stroke)
{
    const auto spots = colour.begin() + static_cast<std::ptrdiff_t>(std::min(colour.size(), ProcessInks));
    const auto isUsed = [](double value) { return value > 0.0; };
    if (colour.size() < ProcessInks) {
        content += Numbers(colour.begin(), colour.end()) + (stroke ? "RG\n" : "rg\n");
    } else if (std::none_of(spots, colour.end(), isUsed)) {
        content += Numbers(colour.begin(), spots) + (stroke ? "K\n" : "k\n");
    } else {
        const auto spot = std::find_if(spots, colour.end(), isUsed);
        const bool isAlone = std::count_if(colour.begin(), colour.end(), isUsed) == 1;
        content +=
            "/" + (isAlone ? SpotName(static_cast<size_t>(spot - spots)) : InksName) + (stroke ? " CS " : " cs ");
        content += (isAlone ? PdfText::Number(*spot) + " " : Numbers(colour.begin(), colour.end())) +
                   (stroke ? "SCN\n" : "scn\n");
    }
}

void PdfPage::Fill(Point centre, Point sides, const Colour& colour)
{
    Select(colour, false);
    content += Text({centre.x - 0.5 * sides.x, centre.y + 0.5 * sides.y}) + " " + Points(sides.x) + " " +
               Points(sides.y) + " re f\n";
}

void PdfPage::Line(Point from, Point to, double width, const Colour& colour)
{
    Select(colour, true);
    content += Points(width) + " w " + Text(from) + " m " + Text(to) + " l S\n";
}

double PdfPage::UsualWidth(const std::string& text, double height)
{
    constexpr double ofDigits = 0.556;  // heights of the font
    return ofDigits * height * static_cast<double>(text.size());
}

void PdfPage::Write(Point place, double height, const std::string& text, const Colour& colour, Align align, bool bold)
{
    const double width = UsualWidth(text, height);
    place.x -= align == Align::Left ? 0.0 : align == Align::Middle ? 0.5 * width : width;
    Select(colour, false);
    content += std::string("BT /") + (bold ? BoldFontName : FontName) + " " + Points(height) + " Tf " + Text(place) +
               " Td " + PdfText::Shown(text) + " Tj ET\n";
}

}  // namespace J4Tool
