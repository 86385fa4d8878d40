// The files of the pages, built into the program.
#pragma once

#include <string_view>

namespace J4Tool {

extern const std::string_view pageTemplate;
extern const std::string_view pageStyle;
extern const std::string_view pageScript;
extern const std::string_view reportBody;
extern const std::string_view reportScript;
extern const std::string_view trendBody;
extern const std::string_view trendStyle;
extern const std::string_view trendScript;
extern const std::string_view traceBody;
extern const std::string_view traceStyle;
extern const std::string_view traceScript;
extern const std::string_view plotStyle;
extern const std::string_view plotScript;
extern const std::string_view plotLicence;

}  // namespace J4Tool
