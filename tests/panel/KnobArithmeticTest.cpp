// The knob's numbers at 0, the top and every boundary.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "panel/KnobArithmetic.h"

namespace {

using namespace knob;

TEST(KnobArithmetic, StepsMapToFramesAtBothEndsAndEveryBoundary)
{
    const std::pair<int32_t, int32_t> stepsAndFrames[] = {
        {0, 0}, {1, 1}, {10, 12}, {50, 63}, {98, 124}, {99, 125}, {100, 127}};
    for (const auto& [step, frame] : stepsAndFrames)
        EXPECT_EQ(frameForStep(step), frame) << "step " << step;
    // Every frame from 0 to 127 belongs to exactly the steps whose step * 1.27 falls in it.
    for (int32_t step = 0; step <= 100; ++step)
        EXPECT_EQ(frameForStep(step), static_cast<int32_t>(std::floor(step * 1.27)));
}

TEST(KnobArithmetic, FramesStayInTheFilmstripForAnyStep)
{
    EXPECT_EQ(frameForStep(-1), 0);
    EXPECT_EQ(frameForStep(101), 127);
    EXPECT_EQ(frameForStep(std::numeric_limits<int32_t>::min()), 0);
    EXPECT_EQ(frameForStep(std::numeric_limits<int32_t>::max()), 127);
}

TEST(KnobArithmetic, AnglesRunFrom225DownToMinus45OverTheSteps)
{
    EXPECT_EQ(angleForStep(0, 100), 225.0f);
    EXPECT_EQ(angleForStep(99, 100), -45.0f);
    EXPECT_NEAR(angleForStep(50, 100), 88.636f, 0.001f);
    EXPECT_NEAR(angleForStep(100, 100), -47.727f, 0.001f); // beyond the drag range
    EXPECT_EQ(angleForStep(7, 1), 225.0f);                  // no travel to speak of
    EXPECT_EQ(angleForStep(7, 0), 225.0f);
}

TEST(KnobArithmetic, AngleToStepFollowsTheWorkedExamples)
{
    EXPECT_EQ(stepForAngle(84.0f, 100), 51);  // 51.7
    EXPECT_EQ(stepForAngle(85.0f, 100), 51);  // 51.33
    EXPECT_EQ(stepForAngle(222.0f, 100), 1);  // 1.1
    EXPECT_EQ(stepForAngle(223.0f, 100), 0);  // 0.73
    EXPECT_EQ(stepForAngle(225.0f, 100), 0);
    EXPECT_EQ(stepForAngle(-45.0f, 100), 99);
    EXPECT_EQ(stepForAngle(-45.0f, 0), 0);
}

TEST(KnobArithmetic, ADragStartsFromTheShownStep)
{
    for (int32_t step = 0; step < 100; ++step) {
        const int32_t start = dragStartForStep(step, 100);
        EXPECT_EQ(stepForAngle(static_cast<float>(start), 100), step) << "step " << step;
    }
    EXPECT_EQ(dragStartForStep(90, 100), -21); // -20.45: rounding toward zero would show 89
    EXPECT_EQ(dragStartForStep(100, 100), -48);
}

TEST(KnobArithmetic, DragAnglesFallOneDegreeAPointAndStayInTheTravel)
{
    EXPECT_EQ(dragAngle(85, 20, 21), 84.0f);
    EXPECT_EQ(dragAngle(85, 20, 20), 85.0f);
    EXPECT_EQ(dragAngle(225, 0, 3), 222.0f);
    EXPECT_EQ(dragAngle(225, 0, -10), 225.0f);
    EXPECT_EQ(dragAngle(0, 0, 46), -45.0f);
    EXPECT_EQ(dragAngle(-48, 0, 0), -45.0f);
    EXPECT_EQ(dragAngle(std::numeric_limits<int32_t>::max(), std::numeric_limits<int32_t>::max(),
                        std::numeric_limits<int32_t>::min()),
              225.0f);
}

TEST(KnobArithmetic, StepsSendHundredthsButTheTopDragStepSendsOne)
{
    EXPECT_EQ(valueForStep(0), 0.0f);
    EXPECT_EQ(valueForStep(1), 0.01f);
    EXPECT_EQ(valueForStep(12), 0.12f);
    EXPECT_EQ(valueForStep(98), 0.98f);
    EXPECT_EQ(valueForStep(99), 1.0f);
    EXPECT_EQ(valueForStep(100), 1.0f);
}

TEST(KnobArithmetic, UpdatesUseSinglePrecisionAndBuildingUsesDouble)
{
    EXPECT_EQ(stepForValue(0.57f), 57);
    EXPECT_EQ(initialStepForValue(0.57f), 56);
    EXPECT_EQ(stepForValue(0.29f), 29);
    EXPECT_EQ(initialStepForValue(0.29f), 28);
    EXPECT_EQ(stepForValue(0.01f), 1);
    EXPECT_EQ(initialStepForValue(0.01f), 0);
    EXPECT_EQ(stepForValue(1.0f), 100);
    EXPECT_EQ(initialStepForValue(0.5f), 50);
    EXPECT_EQ(stepForValue(-0.005f), 0); // truncated toward zero
    EXPECT_EQ(stepForValue(std::nanf("")), std::numeric_limits<int32_t>::min());
}

} // namespace
