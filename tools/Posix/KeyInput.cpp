#include "tools/KeyInput.h"

#include <termios.h>
#include <unistd.h>

#include <string>

#include "tools/Platform.h"

namespace J4Tool {

struct KeyInput::Mode {
    termios settings{};
};

namespace {

/// @return nothing when there was no byte for this long; 0 at the end of the input
int NextByte(int milliseconds)
{
    if (!Platform::WaitForInput(milliseconds)) {
        return -1;
    }
    unsigned char byte = 0;
    return read(STDIN_FILENO, &byte, 1) == 1 ? byte : 0;
}

}  // namespace

KeyInput::KeyInput() : before(std::make_unique<Mode>())
{
    tcgetattr(STDIN_FILENO, &before->settings);
    termios single = before->settings;
    single.c_lflag &= ~static_cast<tcflag_t>(ICANON | ECHO);  // Ctrl-C stays what it is
    single.c_cc[VMIN] = 1;
    single.c_cc[VTIME] = 0;
    tcsetattr(STDIN_FILENO, TCSANOW, &single);
}

KeyInput::~KeyInput() { tcsetattr(STDIN_FILENO, TCSANOW, &before->settings); }

KeyInput::Press KeyInput::Wait(int milliseconds)
{
    constexpr int rest = 50;  // ms, in which the rest of an arrow key comes
    const int first = NextByte(milliseconds);
    switch (first) {
    case -1:
        return {};
    case 0:
    case 4:  // Ctrl-D
        return {Key::End, false};
    case '\r':
    case '\n':
        return {Key::Enter, false};
    case 0x1b:
        break;
    default:
        return {Key::Other, false};
    }
    // An arrow is ESC [ A or ESC O A; with Shift, ESC [ 1 ; 2 A.
    std::string sequence;
    for (int byte = NextByte(rest); byte > 0; byte = NextByte(rest)) {
        sequence += static_cast<char>(byte);
        if (sequence.size() > 1 && byte >= '@') {
            break;
        }
    }
    const bool shift = sequence.find(";2") != std::string::npos;
    switch (sequence.size() > 1 ? sequence.back() : ' ') {
    case 'A':
        return {Key::Up, shift};
    case 'B':
        return {Key::Down, shift};
    case 'C':
        return {Key::Right, shift};
    case 'D':
        return {Key::Left, shift};
    default:
        return {Key::Other, false};
    }
}

}  // namespace J4Tool
