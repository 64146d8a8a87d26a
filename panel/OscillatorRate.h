// How fast an oscillator of the engine really turns: cycles per second from its step per frame,
// taken the way the engine takes it. The phase is a float, so inside each binade of the phase
// (between two powers of two) every step lands on that binade's grid: it adds the increment
// rounded to the grid (see engine/OscillatorSteps.h), not the increment itself. A slow
// oscillator's real rate can lie several percent below increment / length: 0.01 steps a frame
// add only 0.0098 between 4096 and 18002, and the tremolo turns 1.8 % slower than its nominal
// rate.
#pragma once

#include <cstdint>

// One cycle is the phase running from 0 through a table of tableLength entries, increment
// (0 <= increment < tableLength) added every frame; sampleRate frames make a second. 0 for an
// oscillator that stands still, or one whose steps round to nothing somewhere in its table.
double cyclesPerSecond(float increment, uint32_t tableLength, double sampleRate);
