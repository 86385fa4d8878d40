#include "tools/Interrupt.h"

#include <csignal>

namespace J4Tool {

namespace {

volatile std::sig_atomic_t requested = 0;

void OnSignal(int signal)
{
    requested = 1;
    std::signal(signal, OnSignal);  // some systems forget the handler once it was called
}

}  // namespace

Interrupt::Interrupt()
{
    requested = 0;
    previousInterrupt = std::signal(SIGINT, OnSignal);
    previousTermination = std::signal(SIGTERM, OnSignal);
}

Interrupt::~Interrupt()
{
    std::signal(SIGINT, previousInterrupt);
    std::signal(SIGTERM, previousTermination);
}

bool Interrupt::Requested() const { return requested != 0; }

}  // namespace J4Tool
