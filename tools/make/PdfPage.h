// One page of a PDF file while it is drawn: rectangles, lines and words in device colours.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "tools/Point.h"

namespace J4Tool {

class PdfPage {
public:
    /// R, G, B as DeviceRGB; C, M, Y, K as DeviceCMYK; where more follow, the document's spot inks: a single spot ink as its
    /// own Separation, a mixture as DeviceN. 0 to 1.
    using Colour = std::vector<double>;

    /// C, M, Y and K.
    static constexpr size_t ProcessInks = 4;

    /// Where a word stands from the place that is given.
    enum class Align { Left, Middle, Right };

    /// @param size  width and height, mm
    explicit PdfPage(Point size) : size(size) {}

    /// @param centre, sides  mm; places are from the upper left corner, y down
    void Fill(Point centre, Point sides, const Colour& colour);

    /// @param width  mm
    void Line(Point from, Point to, double width, const Colour& colour);

    /// A line of text in Helvetica.
    /// @param place   on the line on which the letters stand, mm
    /// @param height  of the font, mm
    /// @param text    UTF-8
    void Write(Point place, double height, const std::string& text, const Colour& colour, Align align = Align::Left,
               bool bold = false);

    /// How wide a line of text is taken to be, mm: digits are so wide, and capitals a little wider.
    static double UsualWidth(const std::string& text, double height);

    Point Size() const { return size; }

    /// What has been drawn, as a content stream.
    const std::string& Content() const { return content; }

    /// Names under which a page's resources have the fonts and colour spaces.
    static constexpr const char* FontName = "F1";
    static constexpr const char* BoldFontName = "F2";
    static constexpr const char* InksName = "Inks";
    static std::string SpotName(size_t spot) { return "Spot" + std::to_string(spot + 1); }

    static constexpr double PointsPerMillimetre = 72.0 / 25.4;

private:
    void Select(const Colour& colour, bool stroke);
    std::string Text(Point place) const;

    Point size;
    std::string content;
};

}  // namespace J4Tool
