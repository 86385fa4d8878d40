// What is fed with arbitrary input, by name. Each returns for whatever it gets; it ends the process where a promise is
// broken, and the sanitizers where memory or arithmetic is.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <map>
#include <string>

namespace J4Fuzz {

using Target = void (*)(const uint8_t* data, size_t size);

void ChartFile(const uint8_t* data, size_t size);       ///< layouts, measurements, what lies on the virtual bed
void Colours(const uint8_t* data, size_t size);         ///< lists of colours that become charts
void Report(const uint8_t* data, size_t size);          ///< a report of a measured file, with itself as reference
void Tolerances(const uint8_t* data, size_t size);      ///< a file of tolerances, by which a chart is judged
void Trace(const uint8_t* data, size_t size);           ///< a trace of the virtual table, or a capture of a real one
void Block(const uint8_t* data, size_t size);           ///< the table's configuration
void Wire(const uint8_t* data, size_t size);            ///< what the table's USB device answers
void Options(const uint8_t* data, size_t size);         ///< keys and values from the application
void LibraryAnswers(const uint8_t* data, size_t size);  ///< what the instrument's library answers

inline const std::map<std::string, Target> Targets = {
    {"chart", ChartFile}, {"colours", Colours}, {"report", Report},   {"tolerances", Tolerances}, {"trace", Trace},
    {"block", Block},     {"wire", Wire},       {"options", Options}, {"library", LibraryAnswers}};

inline void Require(bool holds, const std::string& promise)
{
    if (!holds) {
        std::fprintf(stderr, "broken: %s\n", promise.c_str());
        std::abort();
    }
}

}  // namespace J4Fuzz
