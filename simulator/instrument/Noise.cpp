#include "simulator/instrument/Noise.h"

#include <cmath>

namespace J4Bench {

void Noise::SetSeed(uint32_t value)
{
    seed = value;
    generator.seed(seed);
}

void Noise::AddTo(Spectrum& light, int samples)
{
    if (deviation > 0.0) {
        const double remaining = deviation / std::sqrt(static_cast<double>(samples));
        for (float& value : light) {
            value = static_cast<float>(value + remaining * NormalDeviate());
        }
    }
}

double Noise::NormalDeviate()
{
    constexpr double steps = 4294967296.0;  // of the generator
    const double radius = (static_cast<double>(generator()) + 1.0) / steps;
    const double angle = static_cast<double>(generator()) / steps;
    return std::sqrt(-2.0 * std::log(radius)) * std::cos(6.283185307179586 * angle);
}

}  // namespace J4Bench
