#include "tools/KeyInput.h"

#include <windows.h>

namespace J4Tool {

struct KeyInput::Mode {
    DWORD console = 0;
};

namespace {

HANDLE Input() { return GetStdHandle(STD_INPUT_HANDLE); }

}  // namespace

KeyInput::KeyInput() : before(std::make_unique<Mode>())
{
    GetConsoleMode(Input(), &before->console);
    SetConsoleMode(Input(), ENABLE_PROCESSED_INPUT);
}

KeyInput::~KeyInput() { SetConsoleMode(Input(), before->console); }

KeyInput::Press KeyInput::Wait(int milliseconds)
{
    const ULONGLONG end = GetTickCount64() + static_cast<ULONGLONG>(milliseconds);
    for (;;) {
        const ULONGLONG now = GetTickCount64();
        if (WaitForSingleObject(Input(), now < end ? static_cast<DWORD>(end - now) : 0) != WAIT_OBJECT_0) {
            return {};
        }
        INPUT_RECORD record{};
        DWORD count = 0;
        if (ReadConsoleInputW(Input(), &record, 1, &count) == 0 || count == 0) {
            return {Key::End, false};
        }
        if (record.EventType != KEY_EVENT || record.Event.KeyEvent.bKeyDown == 0) {
            continue;
        }
        const KEY_EVENT_RECORD& key = record.Event.KeyEvent;
        const bool shift = (key.dwControlKeyState & SHIFT_PRESSED) != 0;
        switch (key.wVirtualKeyCode) {
        case VK_UP:
            return {Key::Up, shift};
        case VK_DOWN:
            return {Key::Down, shift};
        case VK_LEFT:
            return {Key::Left, shift};
        case VK_RIGHT:
            return {Key::Right, shift};
        case VK_RETURN:
            return {Key::Enter, false};
        case VK_SHIFT:
        case VK_CONTROL:
        case VK_MENU:
            continue;
        default:
            return {Key::Other, false};
        }
    }
}

}  // namespace J4Tool
