#include "panel/FineKnobArithmetic.h"

#include <algorithm>
#include <cmath>

#include "panel/KnobArithmetic.h"

namespace knob {

namespace {

constexpr int32_t kThousandths = 1000;
constexpr int32_t kStepThousandths = 10; // a plain step, 0.01

int32_t limited(int64_t thousandths)
{
    return static_cast<int32_t>(std::clamp<int64_t>(thousandths, 0, kThousandths));
}

} // namespace

int32_t thousandthsForValue(float value)
{
    if (std::isnan(value))
        return 0;
    return limited(std::llround(std::clamp(double{value}, 0.0, 1.0) * kThousandths));
}

float valueForThousandths(int32_t thousandths)
{
    return static_cast<float>(thousandths) / static_cast<float>(kThousandths);
}

float wheelValue(float value, int32_t notches, bool fine)
{
    const int64_t unit = fine ? 1 : kStepThousandths;
    int64_t t = thousandthsForValue(value);
    for (; notches > 0 && t < kThousandths; --notches)
        t = (t / unit + 1) * unit;
    for (; notches < 0 && t > 0; ++notches)
        t = ((t + unit - 1) / unit - 1) * unit;
    return valueForThousandths(limited(t));
}

float fineDragValue(float valueAtPress, int32_t rise)
{
    // The plain drag's 99 steps over 270 points, as thousandths.
    const auto moved = static_cast<int64_t>(std::trunc(rise * 99.0 / 270.0));
    return valueForThousandths(limited(thousandthsForValue(valueAtPress) + moved));
}

int32_t frameForValue(float value)
{
    if (std::isnan(value))
        return 0;
    const double place = std::clamp(double{value}, 0.0, 1.0);
    return static_cast<int32_t>(std::lround(place * (kFilmstripFrames - 1)));
}

} // namespace knob
