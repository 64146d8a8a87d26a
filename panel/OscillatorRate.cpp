#include "panel/OscillatorRate.h"

#include <cmath>
#include <limits>

double cyclesPerSecond(float increment, uint32_t tableLength, double sampleRate)
{
    if (!(increment > 0.0f) || !(sampleRate > 0.0) || tableLength == 0)
        return 0.0;
    const auto length = static_cast<float>(tableLength);
    // Frames the phase spends crossing each binade [b, 2b) of the table, from b = the smallest
    // normal float up. Below it (and in any binade one step crosses at once) the step is the
    // increment; the error of counting fractions of frames is far below a readout's digits.
    double frames = std::numeric_limits<float>::min() / double{increment};
    for (float b = std::numeric_limits<float>::min(); b < length; b *= 2.0f) {
        const float top = std::fmin(2.0f * b, length);
        // The sum from b, which is settled (its last mantissa bit is even), rounds as every
        // settled phase's does: b + k grid steps.
        const float step = b + increment >= 2.0f * b ? increment : (b + increment) - b;
        if (step == 0.0f)
            return 0.0;
        frames += (double{top} - b) / step;
    }
    return sampleRate / frames;
}
