#include "tools/report/ReportPage.h"

#include <gtest/gtest.h>

#include "tests/report/SourceOf.h"

namespace J4Tool {
namespace {

size_t CountOf(const std::string& text, const std::string& part)
{
    size_t count = 0;
    for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) {
        ++count;
    }
    return count;
}

TEST(ReportPage, NamesStayTextsWhateverTheyHold)
{
    const std::string rows =
        "\"</script><script>alert(1)</script>\" 50 0 0\n\"<!--<script>\" 50 0 0\n\"{{script}}&amp;\" 50 0 0\n";
    const std::string plain = "A1 50 0 0\nA2 50 0 0\nA3 50 0 0\n";
    ColourFile evil = SourceOf("SAMPLE_NAME LAB_L LAB_A LAB_B", rows, "ORIGINATOR \"<b>&'\"\n");
    evil.name = "<i>&amp;.cgats";
    const std::string page = MakeReportPage(ReportData(evil));
    const std::string plainPage = MakeReportPage(ReportData(SourceOf("SAMPLE_NAME LAB_L LAB_A LAB_B", plain)));
    for (const char* part : {"<script", "</script", "<!--", "<b>", "<i>"}) {
        EXPECT_EQ(CountOf(page, part), CountOf(plainPage, part)) << part;
    }
    EXPECT_NE(page.find("<title>Colour report: &lt;i>&amp;amp;.cgats</title>"), std::string::npos);
    // What looks like a mark of the template is a name all the same.
    EXPECT_EQ(CountOf(page, "{{"), 1u);
}

TEST(ReportPage, NeedsNothingButItself)
{
    const std::string page = MakeReportPage(ReportData(SourceOf("SAMPLE_NAME LAB_L LAB_A LAB_B", "A1 50 0 0\n")));
    for (const char* part : {" src=", "@import", "url(", "fetch(", "XMLHttpRequest", "{{"}) {
        EXPECT_EQ(CountOf(page, part), 0u) << part;
    }
    EXPECT_EQ(CountOf(page, "<link"), CountOf(page, "href=\"data:,\""));
    EXPECT_EQ(CountOf(page, "default-src 'none'"), 1u);
    EXPECT_EQ(CountOf(page, "Permission is hereby granted"), 1u) << "the plotting library's licence goes with it";
}

}  // namespace
}  // namespace J4Tool
