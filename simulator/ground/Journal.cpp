#include "simulator/ground/Journal.h"

#include <utility>

namespace J4Bench {

void Journal::Add(const std::string& line)
{
    if (enabled) {
        lines += line;
        lines += '\n';
    }
}

std::string Journal::Take() { return std::exchange(lines, {}); }

}  // namespace J4Bench
