// The oscillator's stretches of exact runs against the one-at-a-time recurrence, on the cases
// where taking steps in runs could go wrong: ties, stalls, binade crossings, wraps, subnormals.
#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <random>
#include <vector>

#include "effect/OscillatorSteps.h"

namespace {

constexpr float kTremoloLength = 18002.0f;
constexpr float kPannerLength = 36004.0f;

struct Steps {
    float phase;
    std::vector<uint32_t> indices; // after steps 1 .. n
};

Steps plainSteps(float phase, float inc, float length, int32_t steps)
{
    Steps result{phase, {}};
    for (int32_t i = 0; i < steps; ++i) {
        result.phase = result.phase + inc;
        if (result.phase >= length)
            result.phase = result.phase - length;
        result.indices.push_back(static_cast<uint32_t>(result.phase));
    }
    return result;
}

// Walks stretches as the engine does, collecting the index each frame reads after the first and
// the index left for the next frame.
Steps runSteps(float phase, float inc, float length, int32_t steps)
{
    constexpr uint32_t kStartIndex = 0xdeadbeef; // what the oscillator left for frame 0
    Steps result{phase, {}};
    uint32_t index = kStartIndex;
    for (int32_t done = 0; done < steps;) {
        const Stretch stretch = planStretch(result.phase, index, inc, length, steps - done);
        EXPECT_GE(stretch.frames, 1);
        EXPECT_LE(stretch.frames, steps - done);
        const IndexSteps& run = stretch.indices;
        const auto frameIndex = [&](int32_t j) {
            return (run.mantissa + static_cast<uint32_t>(j) * run.step) >> run.shift;
        };
        EXPECT_EQ(frameIndex(0), index) << "frame 0 of a stretch reads the oscillator's index";
        for (int32_t j = 1; j < stretch.frames; ++j)
            result.indices.push_back(frameIndex(j));
        result.phase = stretch.phaseAfter(stretch.frames);
        index = static_cast<uint32_t>(result.phase);
        result.indices.push_back(index);
        done += stretch.frames;
    }
    return result;
}

// Both ways from the same start; the phase is compared by its bits.
void expectSameSteps(float phase, float inc, float length, int32_t steps)
{
    const Steps plain = plainSteps(phase, inc, length, steps);
    const Steps runs = runSteps(phase, inc, length, steps);
    ASSERT_EQ(std::bit_cast<uint32_t>(runs.phase), std::bit_cast<uint32_t>(plain.phase))
        << "phase " << phase << " inc " << inc << " steps " << steps << ": got " << runs.phase
        << ", expected " << plain.phase;
    for (int32_t i = 0; i < steps; ++i)
        ASSERT_EQ(runs.indices[i], plain.indices[i])
            << "phase " << phase << " inc " << inc << " step " << i + 1;
}

float fromBits(uint32_t bits)
{
    return std::bit_cast<float>(bits);
}

// The spacing of the floats in the binade [2^e, 2^(e+1)).
float gridStep(int e)
{
    return std::ldexp(1.0f, e - 23);
}

} // namespace

TEST(PhaseSteps, TiesRoundToEvenFromOddAndEvenStarts)
{
    // inc = (q + 1/2) grid steps of the binade the phase starts in. From an odd start the first
    // step goes the other way than all later ones; a run that guessed its step from the first
    // would drift by one grid step per frame. (The panner's length lies above every start.)
    for (int e = -12; e <= 14; ++e) {
        const float u = gridStep(e);
        for (const float q : {0.0f, 1.0f, 2.0f, 3.0f, 6.0f, 101.0f, 4096.0f}) {
            const float inc = (q + 0.5f) * u;
            for (const uint32_t offset : {0u, 1u, 2u, 3u, 12345u, 0x7ffffeu, 0x7fffffu}) {
                const float start = std::ldexp(1.0f, e) + static_cast<float>(offset) * u;
                expectSameSteps(start, inc, kPannerLength, 700);
                if (HasFatalFailure())
                    return;
            }
        }
    }
}

TEST(PhaseSteps, TiesInTheBinadesThatHoldTheTableLengths)
{
    // The phase spends most of its time in the binades holding 8192 .. 36004, where the wrap test
    // and the binade's upper end meet.
    for (const float length : {kTremoloLength, kPannerLength}) {
        for (int e = 12; e <= 15; ++e) {
            const float u = gridStep(e);
            for (const float inc : {0.5f * u, 1.5f * u, 2.5f * u, 3584.5f * u, 1.75f, 0.875f}) {
                for (const float start : {std::ldexp(1.0f, e) + u, length - 3.0f * u,
                                          length - inc, 8191.99951171875f, 0.0f}) {
                    if (start < length)
                        expectSameSteps(start, inc, length, 3000);
                }
            }
        }
    }
}

TEST(PhaseSteps, StalledPhaseStaysPut)
{
    // Below half a grid step the phase cannot move; at exactly half it moves once from an odd
    // phase (the tie goes to the even neighbour) and then stays.
    const float u = gridStep(14); // the binade of 16384 .. 18002
    for (const float inc : {0.25f * u, 0.5f * u, 0.49999997f * u, 0.50000006f * u, 1e-30f,
                            fromBits(1)}) {
        for (const float start : {16384.0f, 16384.0f + u, 17000.0f + 3.0f * u}) {
            expectSameSteps(start, inc, kTremoloLength, 5000);
            const Steps runs = runSteps(start, inc, kTremoloLength, 5000);
            if (inc < 0.5f * u) {
                EXPECT_EQ(runs.phase, start) << "inc " << inc;
            }
        }
    }
}

TEST(PhaseSteps, WrapsAtEveryStepPosition)
{
    // Every phase on one plain trajectory towards the wrap is a start that wraps one step
    // earlier than the one before it.
    for (const float length : {kTremoloLength, kPannerLength}) {
        for (const float inc : {1.74999f, 0.1f, 10.0f, 3.3333333f}) {
            std::vector<float> trajectory{length - 300.0f * inc};
            while (trajectory.back() + inc < length)
                trajectory.push_back(trajectory.back() + inc);
            ASSERT_GE(trajectory.size(), 290u);
            for (const float start : trajectory) {
                for (const int32_t steps : {1, 2, 3, 4, 5, 8, 9, 64, 400})
                    expectSameSteps(start, inc, length, steps);
            }
        }
    }
}

TEST(PhaseSteps, LandingExactlyOnTheLengthWrapsToZero)
{
    // 18002 = 9001 * 2: with inc 2 from an even phase the phase reaches the length exactly.
    expectSameSteps(17990.0f, 2.0f, kTremoloLength, 20);
    const Steps runs = runSteps(17990.0f, 2.0f, kTremoloLength, 6);
    EXPECT_EQ(runs.phase, 0.0f);
    EXPECT_EQ(runs.indices[5], 0u);
}

TEST(PhaseSteps, SubnormalAndTinyIncrementsClimbThroughTheLowBinades)
{
    for (const float inc : {fromBits(1), fromBits(3), fromBits(0x7fffff), fromBits(0x800000),
                            fromBits(0x800001), 1e-40f, 1e-38f, 3e-38f}) {
        expectSameSteps(0.0f, inc, kTremoloLength, 4096);
        expectSameSteps(fromBits(0x7ffff0), inc, kPannerLength, 4096);
    }
}

TEST(PhaseSteps, LargeIncrementsThatLeaveEveryBinadeAtOnce)
{
    for (const float inc : {18000.0f, 17999.998f, 9001.0f, 9000.999f, 4500.5f, 16384.0f}) {
        for (const float start : {0.0f, 1.0f, 18001.998f, 9001.0f, 0.5f})
            expectSameSteps(start, inc, kTremoloLength, 1000);
    }
    for (const float inc : {36000.0f, 18002.0f, 32768.0f})
        expectSameSteps(0.0f, inc, kPannerLength, 1000);
}

TEST(PhaseSteps, RandomIncrementsAndStarts)
{
    std::mt19937 random(8);
    std::uniform_real_distribution<float> unit(0.0f, 1.0f);
    for (int trial = 0; trial < 3000; ++trial) {
        const float length = trial % 2 ? kPannerLength : kTremoloLength;
        // Increments over many magnitudes, from far below a grid step to the largest allowed.
        const float inc = std::min(std::ldexp(unit(random) + 0.5f, -30 + trial % 45), 18000.0f);
        const float start = unit(random) * length;
        expectSameSteps(start < length ? start : 0.0f, inc, length,
                        1 + static_cast<int32_t>(unit(random) * 2000.0f));
        if (HasFatalFailure())
            return;
    }
}

TEST(PhaseSteps, ARunLastsUntilItsBinadeEnds)
{
    // From 9000 with inc 1.75 the phase stays in [8192, 16384) for over 4000 steps: one plain
    // step, then one run for the rest of a 512-frame block.
    const Stretch stretch = planStretch(9000.0f, 9000, 1.75f, kTremoloLength, 512);
    EXPECT_EQ(stretch.frames, 512);
    // Near the top of the binade the run stops at the last phase below 16384.
    const Stretch last = planStretch(16370.0f, 16370, 1.75f, kTremoloLength, 512);
    EXPECT_EQ(last.frames, 7); // 16370 + 7 * 1.75 = 16382.25
    EXPECT_LT(last.phaseAfter(last.frames), 16384.0f);
}
