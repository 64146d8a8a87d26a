// The numbers of our own knob gestures, beyond the plain drag of KnobArithmetic.h: the wheel,
// the Shift drag and the knob showing a value finer than its steps. Values move on a grid of
// thousandths here, so that a value such as 0.175 can be set by hand.
#pragma once

#include <cstdint>

namespace knob {

// A value as whole thousandths, rounded to the nearest and limited to 0..1000; NaN gives 0.
int32_t thousandthsForValue(float value);

// t / 1000 in single precision: 175 gives the float nearest 0.175, 130 the same float as a plain
// drag's step 13.
float valueForThousandths(int32_t thousandths);

// The value after turning the wheel by notches (positive up) from value: each notch moves to the
// next multiple of 0.01 in its direction (0.001 when fine), so a value between two multiples
// lands on one. Limited to 0..1.
float wheelValue(float value, int32_t notches, bool fine);

// The value a Shift drag has reached: ten times finer than a plain drag, one thousandth for every
// 270 / 99 points the pointer rose since the press (down lowers it), counted from the value at the
// press rounded to thousandths. Limited to 0..1.
float fineDragValue(float valueAtPress, int32_t rise);

// The filmstrip frame nearest to value's place on the knob's travel (0 at 0, the last at 1).
int32_t frameForValue(float value);

} // namespace knob
