// Counts the heap allocations of the whole process, those of the libraries included.
#pragma once

#include <atomic>

extern std::atomic<long> allocations;
