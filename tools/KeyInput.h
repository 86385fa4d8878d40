// Keys as they are pressed, without Enter, from the terminal that standard input is. Each platform's folder defines it.
#pragma once

#include <memory>

namespace J4Tool {

class KeyInput {
public:
    enum class Key { None, Left, Right, Up, Down, Enter, End, Other };

    struct Press {
        Key key = Key::None;
        bool shift = false;  ///< with an arrow
    };

    /// The terminal gives single keys while the object lives, and does not show them. Standard input must be a terminal.
    KeyInput();
    ~KeyInput();
    KeyInput(const KeyInput&) = delete;
    KeyInput& operator=(const KeyInput&) = delete;

    /// Waits for a key. @return None when there was none for this long, End when there will be no more
    Press Wait(int milliseconds);

private:
    struct Mode;
    std::unique_ptr<Mode> before;
};

}  // namespace J4Tool
