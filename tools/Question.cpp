#include "tools/Question.h"

#include <cstdio>
#include <iostream>

#include "tools/Platform.h"

namespace J4Tool {

namespace {

bool ReadLine(const std::string& prompt, std::string& line)
{
    if (!Platform::IsTerminal(stdin)) {
        return false;
    }
    std::fputs(prompt.c_str(), stderr);
    std::fflush(stderr);
    return static_cast<bool>(std::getline(std::cin, line));
}

}  // namespace

bool AskYesNo(const std::string& question)
{
    std::string line;
    return ReadLine(question + " [yes/no] ", line) && (line == "y" || line == "yes");
}

}  // namespace J4Tool
