// The memory of the process: each allocation of the library may fail.
#include <cstdlib>
#include <new>

#include "tests/sweep/Fault.h"

void* operator new(std::size_t size)
{
    void* block =
        J4Test::Fault::inLibrary && J4Test::Fault::Strikes(J4Test::Seam::Memory) ? nullptr : std::malloc(size + 1);
    if (block == nullptr) {
        throw std::bad_alloc();
    }
    ++J4Test::Fault::blocks;
    return block;
}

void operator delete(void* block) noexcept
{
    J4Test::Fault::blocks -= block != nullptr ? 1 : 0;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept { operator delete(block); }
