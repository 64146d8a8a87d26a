// The knob's numbers at both ends, at the boundaries, and for values no control should produce.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "panel/KnobArithmetic.h"

namespace {

using namespace knob;
constexpr int32_t kMin = std::numeric_limits<int32_t>::min();
constexpr int32_t kMax = std::numeric_limits<int32_t>::max();

TEST(KnobArithmetic, StepsFramesAndValuesMeetAtTheEndsAndBoundaries)
{
    const std::pair<int32_t, int32_t> stepsAndFrames[] = {
        {0, 0}, {1, 1}, {10, 12}, {98, 124}, {99, 125}, {100, 127},
        {-1, 0}, {101, 127}, {kMin, 0}, {kMax, 127}}; // any step stays inside the filmstrip
    for (const auto& [step, frame] : stepsAndFrames)
        EXPECT_EQ(frameForStep(step), frame) << step;
    const std::pair<int32_t, float> stepsAndValues[] = {
        {0, 0.0f}, {1, 0.01f}, {12, 0.12f}, {98, 0.98f}, {99, 1.0f}, {100, 1.0f}};
    for (const auto& [step, value] : stepsAndValues)
        EXPECT_EQ(valueForStep(step), value) << step;
    // A host's update is multiplied in single precision, the value read at building in double.
    const std::pair<float, int32_t> updates[] = {{0.57f, 57}, {0.29f, 29}, {0.01f, 1},
                                                 {1.0f, 100}, {-0.005f, 0}};
    for (const auto& [value, step] : updates)
        EXPECT_EQ(stepForValue(value), step) << value;
    EXPECT_EQ(initialStepForValue(0.57f), 56);
    EXPECT_EQ(initialStepForValue(0.01f), 0);
    EXPECT_EQ(stepForValue(std::nanf("")), kMin); // which the filmstrip clamps to frame 0
}

TEST(KnobArithmetic, DragsStartFromTheShownStepAndFallFrom225ToMinus45ADegreeAPoint)
{
    EXPECT_EQ(angleForStep(0, 100), 225.0f);
    EXPECT_EQ(angleForStep(99, 100), -45.0f);
    EXPECT_EQ(angleForStep(7, 1), 225.0f); // a travel of one step has nowhere to go
    // The worked examples, truncated: 51.7 and 51.33 both read 51.
    const std::pair<float, int32_t> anglesAndSteps[] = {
        {84, 51}, {85, 51}, {222, 1}, {223, 0}, {225, 0}, {-45, 99}};
    for (const auto& [angle, step] : anglesAndSteps)
        EXPECT_EQ(stepForAngle(angle, 100), step) << angle;
    EXPECT_EQ(stepForAngle(-45.0f, 0), 0);

    for (int32_t step = 0; step < 100; ++step)
        EXPECT_EQ(stepForAngle(static_cast<float>(dragStartForStep(step, 100)), 100), step) << step;
    EXPECT_EQ(dragStartForStep(90, 100), -21); // -20.45 truncated to -20 would show step 89
    // From step 0, two points up show nothing and the third reaches step 1: 2.7 points a step.
    EXPECT_EQ(stepForAngle(dragAngle(225, 0, 2), 100), 0);
    EXPECT_EQ(stepForAngle(dragAngle(225, 0, 3), 100), 1);
    EXPECT_EQ(dragAngle(225, 0, -10), 225.0f);
    EXPECT_EQ(dragAngle(0, 0, 46), -45.0f);
    EXPECT_EQ(dragAngle(-48, 0, 0), -45.0f); // a host's step 100 lies past the travel
    EXPECT_EQ(dragAngle(kMax, kMax, kMin), 225.0f);
}

} // namespace
