#include "tests/tools/ToolRun.h"

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "tools/Platform.h"

namespace J4Tool {

namespace {

std::string WithPlainLineEnds(std::string text)
{
    std::erase(text, '\r');
    return text;
}

}  // namespace

std::string ContentOf(const std::string& fileName)
{
    std::ifstream input(fileName, std::ios::binary);
    std::ostringstream content;
    content << input.rdbuf();
    return content.str();
}

ToolRun::ToolRun(const std::string& arguments)
{
    const std::filesystem::path program = Platform::ProgramFolder() / "j4tavla";
    const int result = std::system((program.string() + " " + arguments + " >tool_out.txt 2>tool_err.txt").c_str());
    exitCode = result > 0xff ? result >> 8 : result;  // of a shell the code stands above the signal
    output = WithPlainLineEnds(ContentOf("tool_out.txt"));
    errors = WithPlainLineEnds(ContentOf("tool_err.txt"));
}

}  // namespace J4Tool
