// libFuzzer's entries: the environment variable J4_FUZZ_TARGET names what is fed.
#include "fuzz/Targets.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size)
{
    static const J4Fuzz::Target target = [] {
        const char* const name = std::getenv("J4_FUZZ_TARGET");
        return J4Fuzz::Targets.at(name == nullptr ? "" : name);
    }();
    target(data, size);
    return 0;
}
