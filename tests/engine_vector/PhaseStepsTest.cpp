// The oscillator's planned stretches against the one-at-a-time recurrence, on the cases where
// taking steps in runs could go wrong: ties, stalls, binade ends, wraps, subnormals.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <random>

#include "effect/OscillatorSteps.h"

namespace {

constexpr float kTremolo = 18002.0f;
constexpr float kPanner = 36004.0f;

// Walks the stretches as the engine does; every index a frame reads, and the phase's bits after
// each stretch, must be the plain loop's.
::testing::AssertionResult sameSteps(float start, float inc, float length, int32_t steps)
{
    float plain = start, phase = start;
    uint32_t index = 0xdeadbeef; // whatever the oscillator left for frame 0
    for (int32_t done = 0; done < steps;) {
        const Stretch s = planStretch(phase, index, inc, length, steps - done);
        if (s.frames < 1 || s.frames > steps - done)
            return ::testing::AssertionFailure() << "a stretch of " << s.frames << " frames";
        for (int32_t j = 0; j < s.frames; ++j, ++done) {
            const uint32_t read = (s.indices.mantissa + j * s.indices.step) >> s.indices.shift;
            if (read != (j == 0 ? index : static_cast<uint32_t>(plain)))
                return ::testing::AssertionFailure() << "frame " << done << " reads " << read;
            plain = plain + inc;
            if (plain >= length)
                plain = plain - length;
        }
        phase = s.phaseAfter(s.frames);
        index = static_cast<uint32_t>(phase);
        if (std::bit_cast<uint32_t>(phase) != std::bit_cast<uint32_t>(plain))
            return ::testing::AssertionFailure() << "after " << done << " steps: " << phase
                                                 << ", the plain loop " << plain;
    }
    return ::testing::AssertionSuccess();
}

void check(float start, float inc, float length, int32_t steps)
{
    if (::testing::Test::HasFailure()) // the first failing case says enough
        return;
    EXPECT_TRUE(sameSteps(start, inc, length, steps))
        << std::hexfloat << "start " << start << ", inc " << inc << ", length " << length
        << std::defaultfloat << ", " << steps << " steps";
}

} // namespace

TEST(PhaseSteps, TiesAndStallsFromOddAndEvenStarts)
{
    // inc a whole number of grid steps and a half: from an odd start the first step rounds the
    // other way than all later ones, so a run that guessed its step from the first would drift.
    for (int e = -12; e <= 14; ++e) {
        const float u = std::ldexp(1.0f, e - 23); // the spacing of the floats in [2^e, 2^(e+1))
        for (const float q : {0.0f, 1.0f, 2.0f, 3.0f, 6.0f, 101.0f, 4096.0f})
            for (const uint32_t offset : {0u, 1u, 2u, 3u, 12345u, 0x7ffffeu, 0x7fffffu})
                check(std::ldexp(1.0f, e) + static_cast<float>(offset) * u, (q + 0.5f) * u,
                      kPanner, 700);
    }
    // The binades holding the table lengths, where the wrap test and the binade's end meet; at
    // or below half a grid step the phase stalls.
    for (const float length : {kTremolo, kPanner})
        for (int e = 12; e <= 15; ++e) {
            const float u = std::ldexp(1.0f, e - 23), b = std::ldexp(1.0f, e);
            for (const float inc : {0.25f * u, 0.5f * u, 0.49999997f * u, 0.50000006f * u, 1.5f * u,
                                    2.5f * u, 3584.5f * u, 1.75f, 0.875f, 1e-30f, 1e-45f})
                for (const float start : {b, b + u, length - 3.0f * u, length - inc, 8191.9995f})
                    if (start < length)
                        check(start, inc, length, 3000);
        }
}

TEST(PhaseSteps, WrapsAtEveryStepPositionAndExtremeIncrements)
{
    // Each phase on a trajectory towards the length wraps one step earlier than the one before.
    for (const float length : {kTremolo, kPanner})
        for (const float inc : {1.74999f, 0.1f, 10.0f, 3.3333333f})
            for (float start = length - 300.0f * inc; start < length; start = start + inc)
                for (const int32_t steps : {1, 2, 3, 4, 5, 8, 9, 64, 400})
                    check(start, inc, length, steps);
    check(17990.0f, 2.0f, kTremolo, 20); // lands exactly on the length
    // Subnormal and tiny increments climbing through the low binades.
    for (const uint32_t bits : {1u, 3u, 0x7fffffu, 0x800000u, 0x800001u, 0x116c2u, 0x6ce3eeu}) {
        check(0.0f, std::bit_cast<float>(bits), kTremolo, 4096);
        check(std::bit_cast<float>(0x7ffff0u), std::bit_cast<float>(bits), kPanner, 4096);
    }
    // Increments that leave every binade at once.
    for (const float inc : {18000.0f, 17999.998f, 9001.0f, 9000.999f, 4500.5f, 16384.0f})
        for (const float start : {0.0f, 0.5f, 1.0f, 9001.0f, 18001.998f})
            check(start, inc, kTremolo, 1000);
    for (const float inc : {36000.0f, 18002.0f, 32768.0f})
        check(0.0f, inc, kPanner, 1000);
    // Increments of every magnitude, from far below a grid step to the largest a stage uses.
    std::mt19937 random(8);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int trial = 0; trial < 3000; ++trial) {
        const float length = trial % 2 ? kPanner : kTremolo;
        const float inc = std::min(std::ldexp(unit(random) + 0.5f, -30 + trial % 45), 18000.0f);
        const float start = std::min(unit(random) * length, std::nextafter(length, 0.0f));
        check(start, inc, length, 1 + static_cast<int32_t>(unit(random) * 2000.0f));
    }
}

TEST(PhaseSteps, ARunLastsUntilItsBinadeEnds)
{
    // Without this the cases above would also pass with one plain step per stretch. From 9000
    // with inc 1.75 the phase stays in [8192, 16384) for over 4000 steps.
    EXPECT_EQ(planStretch(9000.0f, 9000, 1.75f, kTremolo, 512).frames, 512);
    const Stretch last = planStretch(16370.0f, 16370, 1.75f, kTremolo, 512);
    EXPECT_EQ(last.frames, 7); // 16370 + 7 * 1.75 = 16382.25, the last phase below 16384
    EXPECT_EQ(last.phaseAfter(last.frames), 16382.25f);
}
