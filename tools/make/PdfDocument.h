// A PDF file of pages in device colours. What is the same goes in, the same bytes come out.
#pragma once

#include <ctime>
#include <deque>
#include <string>
#include <vector>

#include "tools/make/ColourList.h"
#include "tools/make/PdfPage.h"

namespace J4Tool {

class PdfDocument {
public:
    struct About {
        std::string title;        ///< UTF-8
        std::string creator;      ///< the program
        std::time_t created = 0;  ///< seconds since 1970
    };

    /// @param spots  inks beside cyan, magenta, yellow and black
    PdfDocument(About about, std::vector<SpotInk> spots);

    /// @param size  width and height, mm
    PdfPage& AddPage(Point size) { return pages.emplace_back(size); }

    /// The whole file.
    std::string Text() const;

private:
    std::string Resources() const;
    std::string AllInks() const;

    About about;
    std::vector<SpotInk> spots;
    std::deque<PdfPage> pages;
};

}  // namespace J4Tool
