// The knob's numbers, one copy each: steps, angles, filmstrip frames and parameter values.
//
// Angles are degrees the mathematical way (0 points right, counter-clockwise, 90 up). The travel
// runs clockwise from 225 degrees at step 0 to -45 at the last step, count - 1, where count is
// the number of steps (100 on the panel, so steps 0 to 99 and 270 / 99 degrees a step).
// The precision of each product is part of the behaviour; see each function.
#pragma once

#include <cstdint>

#include "panel/PanelLayout.h"

namespace knob {

constexpr int32_t kFilmstripFrames = panel_layout::kFilmstripFrames;
constexpr float kStartAngle = 225.0f;
constexpr float kEndAngle = -45.0f;

// step * (-270 / (count - 1)) + 225 in double precision, stored as a float. A travel of fewer than
// two steps stays at the start.
float angleForStep(int32_t step, int32_t count);

// (count - 1) * ((225 - angle) / 270), the difference in single precision and the rest in double,
// truncated toward zero.
int32_t stepForAngle(float angle, int32_t count);

// The angle a drag has reached: one degree lower for every point the pointer rose since the press,
// clamped to the travel.
float dragAngle(int32_t startAngle, int32_t pressY, int32_t pointerY);

// A drag that starts from a shown step starts here: the whole degree at or below its angle, which
// maps back to the same step (truncation toward zero would give the step below it for negative
// angles).
int32_t dragStartForStep(int32_t step, int32_t count);

// step * 1.27 in double precision, truncated, clamped to the filmstrip: 0, 1, 10, 50, 98, 99,
// 100 give 0, 1, 12, 63, 124, 125, 127.
int32_t frameForStep(int32_t step);

// The value a step sends to the effect: step / 100 in single precision, except that the top drag
// step 99 sends 1.0.
float valueForStep(int32_t step);

// An effect value as a step when the effect reports a change: value * 100 in single precision,
// truncated (0.57 gives 57).
int32_t stepForValue(float value);

// An effect value as a step when the panel is built: the product in double precision
// (0.57 gives 56).
int32_t initialStepForValue(float value);

} // namespace knob
