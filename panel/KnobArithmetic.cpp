#include "panel/KnobArithmetic.h"

#include <algorithm>
#include <cmath>

#include "common/truncate.h"

namespace knob {

float angleForStep(int32_t step, int32_t count)
{
    if (count < 2)
        return kStartAngle;
    return static_cast<float>(step * (-270.0 / (count - 1)) + 225.0);
}

int32_t stepForAngle(float angle, int32_t count)
{
    if (count < 2)
        return 0;
    const float fromStart = kStartAngle - angle;
    return truncateToInt32((count - 1) * (static_cast<double>(fromStart) / 270.0));
}

float dragAngle(int32_t startAngle, int32_t pressY, int32_t pointerY)
{
    // In 64 bits: a pointer far outside the window must not overflow.
    const int64_t raw = int64_t{startAngle} + pressY - pointerY;
    const float angle = static_cast<float>(raw);
    return std::max(kEndAngle, std::min(kStartAngle, angle));
}

int32_t dragStartForStep(int32_t step, int32_t count)
{
    return truncateToInt32(std::floor(angleForStep(step, count)));
}

int32_t frameForStep(int32_t step)
{
    const double frame = std::clamp(step * 1.27, 0.0, kFilmstripFrames - 1.0);
    return static_cast<int32_t>(frame);
}

float valueForStep(int32_t step)
{
    if (step == 99)
        step = 100;
    return static_cast<float>(step) / 100.0f;
}

int32_t stepForValue(float value)
{
    const float product = value * 100.0f;
    return truncateToInt32(product);
}

int32_t initialStepForValue(float value)
{
    return truncateToInt32(100.0 * static_cast<double>(value));
}

} // namespace knob
