// Where the two oscillators stand between blocks. It advances only while a stage runs and is never
// reset: not by a program change, a parameter change or suspend/resume.
#pragma once

#include <cstdint>

struct OscillatorState {
    // Every engine keeps 0 <= phase < table length and index < table length, and relies on it.
    float tremoloPhase = 0.0f; // in table steps, 0 <= phase < 18002
    float pannerPhase = 0.0f;  // in table steps, 0 <= phase < 36004
    uint32_t tremoloIndex = 0; // entry used by the next frame
    uint32_t pannerIndex = 0;
};
