// Marks what the bench's shared library shows to the faces that link it.
#pragma once

#if !defined(_WIN32)
#define J4BENCH_API __attribute__((visibility("default")))
#elif defined(J4BENCH_BUILDING)
#define J4BENCH_API __declspec(dllexport)
#else
#define J4BENCH_API __declspec(dllimport)
#endif
