#include "tools/make/PdfDocument.h"

#include <cstdio>
#include <utility>

#include "tools/DateText.h"
#include "tools/make/PdfText.h"

namespace J4Tool {

namespace {

using PdfText::Number;

// Objects in the order in which they stand in the file; those of the pages follow, two for each.
enum Object { Catalog = 1, PageTree, Information, Font, BoldFont, Inks, FirstPage };

std::string Reference(size_t object) { return std::to_string(object) + " 0 R"; }

std::string Stream(const std::string& entries, const std::string& content)
{
    return "<< " + entries + "/Length " + std::to_string(content.size()) + " >>\nstream\n" + content + "\nendstream";
}

std::string FontOf(const std::string& name)
{
    return "<< /Type /Font /Subtype /Type1 /BaseFont /" + name + " /Encoding /WinAnsiEncoding >>";
}

/// The file with its table of objects.
std::string FileText(const std::vector<std::string>& objects)
{
    std::string text = "%PDF-1.6\n%\xe2\xe3\xcf\xd3\n";
    std::string table;
    for (size_t i = 0; i < objects.size(); ++i) {
        char entry[32];
        std::snprintf(entry, sizeof entry, "%010zu 00000 n \n", text.size());
        table += entry;
        text += std::to_string(i + 1) + " 0 obj\n" + objects[i] + "\nendobj\n";
    }
    const std::string count = std::to_string(objects.size() + 1);
    const std::string begin = std::to_string(text.size());
    return text + "xref\n0 " + count + "\n0000000000 65535 f \n" + table + "trailer\n<< /Size " + count + " /Root " +
           Reference(Catalog) + " /Info " + Reference(Information) + " >>\nstartxref\n" + begin + "\n%%EOF\n";
}

}  // namespace

PdfDocument::PdfDocument(About about, std::vector<SpotInk> spots) : about(std::move(about)), spots(std::move(spots)) {}

/// A function from all inks to C, M, Y and K, for who has no spot inks: what each stands for is added up.
std::string PdfDocument::AllInks() const
{
    const size_t inks = PdfPage::ProcessInks + spots.size();
    std::string code = "{";
    for (size_t out = 0; out < PdfPage::ProcessInks; ++out) {
        // On the stack are the inks and the results so far; "index" counts from its top.
        const auto copy = [&](size_t ink, size_t above) {
            return std::to_string(inks + out + above - 1 - ink) + " index ";
        };
        code += " " + copy(out, 0);
        for (size_t spot = 0; spot < spots.size(); ++spot) {
            code += copy(PdfPage::ProcessInks + spot, 1) + Number(spots[spot].cmyk[out]) + " mul add ";
        }
        code += "dup 1 gt {pop 1} if\n";
    }
    code += " " + std::to_string(inks + PdfPage::ProcessInks) + " " + std::to_string(PdfPage::ProcessInks) + " roll";
    std::string domain;
    for (size_t ink = 0; ink < inks; ++ink) {
        code += " pop";
        domain += "0 1 ";
    }
    return Stream("/FunctionType 4 /Domain [" + domain + "] /Range [0 1 0 1 0 1 0 1] ", code + " }");
}

std::string PdfDocument::Resources() const
{
    std::string text = std::string("<< /Font << /") + PdfPage::FontName + " " + Reference(Font) + " /" +
                       PdfPage::BoldFontName + " " + Reference(BoldFont) + " >>";
    if (!spots.empty()) {
        std::string names;
        text += " /ColorSpace <<";
        for (size_t i = 0; i < spots.size(); ++i) {
            const SpotInk& spot = spots[i];
            std::string solid;
            for (const double value : spot.cmyk) {
                solid += Number(value) + " ";
            }
            text += " /" + PdfPage::SpotName(i) + " [/Separation " + PdfText::Name(spot.name) +
                    " /DeviceCMYK << /FunctionType 2 /Domain [0 1] /C0 [0 0 0 0] /C1 [" + solid + "] /N 1 >>]";
            names += " " + PdfText::Name(spot.name);
        }
        text += std::string(" /") + PdfPage::InksName + " [/DeviceN [/Cyan /Magenta /Yellow /Black" + names +
                "] /DeviceCMYK " + Reference(Inks) + "] >>";
    }
    return text + " >>";
}

std::string PdfDocument::Text() const
{
    std::string kids;
    for (size_t i = 0; i < pages.size(); ++i) {
        kids += Reference(FirstPage + 2 * i) + " ";
    }
    std::vector<std::string> objects = {
        "<< /Type /Catalog /Pages " + Reference(PageTree) + " /ViewerPreferences << /PrintScaling /None >> >>",
        "<< /Type /Pages /Count " + std::to_string(pages.size()) + " /Kids [" + kids + "] >>",
        "<< /Title " + PdfText::About(about.title) + " /Creator " + PdfText::About(about.creator) +
            " /CreationDate (D:" + DateForPdf(about.created) + ") >>",
        FontOf("Helvetica"),
        FontOf("Helvetica-Bold"),
        spots.empty() ? "null" : AllInks()};
    for (const PdfPage& page : pages) {
        objects.push_back("<< /Type /Page /Parent " + Reference(PageTree) + " /MediaBox [0 0 " +
                          Number(page.Size().x * PdfPage::PointsPerMillimetre) + " " +
                          Number(page.Size().y * PdfPage::PointsPerMillimetre) + "] /Resources " + Resources() +
                          " /Contents " + Reference(objects.size() + 2) + " >>");
        objects.push_back(Stream("", page.Content()));
    }
    return FileText(objects);
}

}  // namespace J4Tool
