// The panel over the real tremolo effect: what it shows when built and what it writes.
#include <gtest/gtest.h>

#include "editor/hveditor10.h"
#include "effect/VstXSynth.h"
#include "panel/FlatKnob10.h"
#include "panel/HalvoCustomGroupButton10.h"
#include "tests/panel/PanelTestSupport.h"

namespace {

int32_t shownStep(const HalvoUiView10& panel, int32_t parameter)
{
    return panel.knobView()->knobForParameter(parameter)->controlPoint()->ReturnValue();
}

std::vector<int32_t> selectedButtons(const HalvoUiView10& panel)
{
    std::vector<int32_t> selected;
    for (auto* button : panel.knobView()->rateButtons())
        if (button->imageState() != 0)
            selected.push_back(button->buttonType());
    return selected;
}

TEST(PanelWithEffect, ShowsProgramZeroWhenBuilt)
{
    VstXSynth effect(nullptr);
    auto panel = makePanel(&effect);
    // 0.634999, 0.174999, 0, 0, 1.0 and the 44.1 kHz choice.
    EXPECT_EQ(shownStep(*panel, 0), 63);
    EXPECT_EQ(shownStep(*panel, 1), 17);
    EXPECT_EQ(shownStep(*panel, 2), 0);
    EXPECT_EQ(shownStep(*panel, 3), 0);
    EXPECT_EQ(shownStep(*panel, 4), 100);
    EXPECT_EQ(selectedButtons(*panel), std::vector<int32_t>{7});
}

TEST(PanelWithEffect, BuildingTakesTheProductInDoublePrecision)
{
    VstXSynth effect(nullptr);
    effect.setParameter(0, 0.5f);
    effect.setParameter(2, 0.57f);
    effect.setParameter(4, 1.0f);
    effect.setParameter(5, 9.0f);
    auto panel = makePanel(&effect);
    EXPECT_EQ(shownStep(*panel, 0), 50);
    EXPECT_EQ(shownStep(*panel, 2), 56);
    EXPECT_EQ(shownStep(*panel, 4), 100);
    EXPECT_EQ(selectedButtons(*panel), std::vector<int32_t>{9});

    // The same 0.57 arriving as an update shows 57.
    panel->updateView(2, 0.57f);
    EXPECT_EQ(shownStep(*panel, 2), 57);

    effect.setParameter(5, 0.0f);
    EXPECT_TRUE(selectedButtons(*makePanel(&effect)).empty());
}

TEST(PanelWithEffect, AllFiveKnobsShareOneFilmstrip)
{
    VstXSynth effect(nullptr);
    auto panel = makePanel(&effect);
    const auto& shared = panel->knobView()->knobForParameter(0)->animationImages();
    ASSERT_EQ(shared->size(), 128u);
    for (int32_t parameter = 1; parameter < 5; ++parameter)
        EXPECT_EQ(panel->knobView()->knobForParameter(parameter)->animationImages(), shared);
    for (const Image& frame : *shared)
        EXPECT_FALSE(frame.isEmpty());
}

TEST(PanelWithEffect, PanelWritesReachTheEffectThroughItsEditor)
{
    VstXSynth effect(nullptr);
    auto* editor = static_cast<hveditor10*>(effect.getEditor());
    ASSERT_TRUE(editor->open(nullptr));
    auto panel = makePanel(&effect);

    panel->knobView()->updateGroupButtons(10);
    EXPECT_EQ(effect.getParameter(5), 10.0f);
    const Rect& f = panel->knobView()->knobForParameter(3)->frame();
    dragOn(*panel, {f.x + 24, f.y + 24}, {{f.x + 24, f.y + 60}});
    EXPECT_EQ(effect.getParameter(3), 0.13f);
    EXPECT_EQ(effect.getParameter(0), 0.63f); // rewritten at the step shown
    EXPECT_FALSE(effect.inPanelUpdate.load());
}

} // namespace
