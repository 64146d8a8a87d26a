#include "tools/render/Envelope.h"

#include <algorithm>
#include <cmath>
#include <limits>

Envelope::Envelope(int stepFrames, int stepsPerWindow)
    : stepFrames(std::max(1, stepFrames)), stepsPerWindow(std::max(1, stepsPerWindow))
{
}

void Envelope::add(const float* left, const float* right, int frames)
{
    for (int i = 0; i < frames; ++i) {
        for (const float* channel : {left, right}) {
            if (!channel)
                continue;
            const double sample = channel[i];
            if (std::isfinite(sample)) {
                current.power += sample * sample;
                ++current.samples;
            }
        }
        if (++filled == stepFrames) {
            steps.push_back(current);
            current = Step();
            filled = 0;
        }
    }
}

void Envelope::finish()
{
    if (filled > 0) {
        steps.push_back(current);
        current = Step();
        filled = 0;
    }
    const auto count = static_cast<int64_t>(steps.size());
    const int64_t before = stepsPerWindow / 2;
    const int64_t after = stepsPerWindow - before;
    values.clear();
    for (int64_t i = 0; i < count; ++i) {
        double power = 0.0;
        int64_t samples = 0;
        for (int64_t j = std::max<int64_t>(0, i - before); j < std::min(count, i + after); ++j) {
            power += steps[static_cast<size_t>(j)].power;
            samples += steps[static_cast<size_t>(j)].samples;
        }
        const double mean = samples > 0 ? power / static_cast<double>(samples) : 0.0;
        values.push_back(mean > 0.0 ? static_cast<float>(10.0 * std::log10(mean))
                                    : -std::numeric_limits<float>::infinity());
    }
}
