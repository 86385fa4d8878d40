#include "tools/Question.h"

#include <cstdio>
#include <iostream>

#include "tools/Interrupt.h"
#include "tools/Platform.h"
#include "tools/Terminal.h"

namespace J4Tool {

namespace {

bool ReadLine(const std::string& prompt, std::string& line)
{
    if (!Platform::IsTerminal(stdin)) {
        return false;
    }
    Print(stderr, "%s", prompt.c_str());
    std::fflush(stderr);
    constexpr int glance = 100;  // ms; a request to end the program does not end the reading of a line
    while (!Platform::WaitForInput(glance)) {
        Interrupt::Check();
    }
    const bool wasRead = static_cast<bool>(std::getline(std::cin, line));
    Interrupt::Check();
    return wasRead;
}

}  // namespace

bool AskYesNo(const std::string& question)
{
    std::string line;
    return ReadLine(question + " [yes/no] ", line) && (line == "y" || line == "yes");
}

std::string AskText(const std::string& question)
{
    std::string line;
    return ReadLine(question + " ", line) ? line : std::string();
}

}  // namespace J4Tool
