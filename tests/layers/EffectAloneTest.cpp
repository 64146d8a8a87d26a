// The VST effect built and run with nothing but the engine and the host boundary: no editor, no
// window system (the ctest beside it checks the binary needs neither X11 nor cairo).
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "effect/VstXSynth.h"

namespace {

VstIntPtr hostVersionOnly(AEffect*, VstInt32 opcode, VstInt32, VstIntPtr, void*, float)
{
    return opcode == audioMasterVersion ? 2400 : 0;
}

} // namespace

TEST(EffectAlone, RunsAProgramWithoutAnEditorAndSaysItHasNone)
{
    VstXSynth effect(hostVersionOnly);
    EXPECT_EQ(effect.getAeffect()->flags, effFlagsCanReplacing);
    EXPECT_EQ(effect.dispatcher(effEditOpen, 0, 0, nullptr, 0.0f), 0);

    effect.setProgram(9);
    std::vector<float> left(4096, 0.5f), right(4096, -0.5f);
    float* channels[] = {left.data(), right.data()};
    effect.processReplacing(channels, channels, 4096);
    int changed = 0;
    for (size_t i = 0; i < left.size(); ++i) {
        ASSERT_TRUE(std::isfinite(left[i]) && std::isfinite(right[i])) << i;
        changed += left[i] != 0.5f;
    }
    EXPECT_GT(changed, 2048); // Rotary moves the level of most frames
}
