// Ctrl-C as a question instead of an end: while an object lives, the key only sets a flag that the work asks for
// between its steps.
#pragma once

namespace J4Tool {

class Interrupt {
public:
    Interrupt();
    ~Interrupt();
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    bool Requested() const;

private:
    using Handler = void (*)(int);
    Handler previousInterrupt;
    Handler previousTermination;
};

}  // namespace J4Tool
