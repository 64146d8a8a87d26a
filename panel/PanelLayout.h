// Where everything on the panel sits, in points with the origin at the lower-left corner (see
// platform/View.h). One table for the panel, the editor, the preview tools and the picture
// generator, which draws the knobs' legends and the rate buttons' rings around these frames.
#pragma once

#include <cstdint>
#include <iterator>

#include "engine/Parameters.h"
#include "platform/Geometry.h"

namespace panel_layout {

constexpr int32_t kPanelWidth = 253;
constexpr int32_t kPanelHeight = 400;
constexpr Rect kPanelFrame = {0.0, 0.0, kPanelWidth, kPanelHeight};

// The knobs' filmstrip: frame i of "knob0" .. "knob127" shows step i of the knob's travel.
constexpr int32_t kFilmstripFrames = 128;
constexpr double kKnobSize = 48.0;

// The knobs in the order they are built, stacked and sent to the plug-in.
struct KnobPlace {
    Parameter parameter;
    Rect frame;
};
constexpr KnobPlace kKnobPlaces[] = {
    {kTremoloDepth, {48.0, 202.0, kKnobSize, kKnobSize}},
    {kStereoPanner, {154.0, 202.0, kKnobSize, kKnobSize}},
    {kTremoloSpeed, {45.0, 128.0, kKnobSize, kKnobSize}},
    {kPannerSpeed, {156.0, 128.0, kKnobSize, kKnobSize}},
    {kMix, {104.0, 77.0, kKnobSize, kKnobSize}},
};
constexpr int32_t kNumKnobs = static_cast<int32_t>(std::size(kKnobPlaces));

// The rate buttons for choices 7, 8, 9, 10 (44.1, 48, 88.2, 96 kHz), in that order.
constexpr double kRateButtonSize = 13.0;
constexpr Rect kRateButtonFrames[kNumRateChoices] = {
    {48.0, 46.0, kRateButtonSize, kRateButtonSize},
    {78.0, 46.0, kRateButtonSize, kRateButtonSize},
    {160.0, 46.0, kRateButtonSize, kRateButtonSize},
    {190.0, 46.0, kRateButtonSize, kRateButtonSize},
};

} // namespace panel_layout
