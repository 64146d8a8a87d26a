// The oscillator's phase steps, many at a time and bit for bit as the one-at-a-time loop takes
// them: p <- p + inc in single precision, then p <- p - length once p reaches the length.
#pragma once

#include <cstdint>

// Extra entries past indices[steps] that advancePhase may scribble on.
constexpr int32_t kIndexSlack = 3;

// Takes `steps` steps from `phase` and writes the table index after step i (the phase truncated
// toward zero) to indices[i], 1 <= i <= steps; indices[0] is left alone. Expects
// 0 <= phase < length and 0 < inc <= 36000, and leaves the phase after the last step in `phase`.
// `indices` needs room for steps + 1 + kIndexSlack entries.
void advancePhase(float& phase, float inc, float length, uint32_t* indices, int32_t steps);
