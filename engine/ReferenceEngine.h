// The audio path as a plain loop: every frame in order, each oscillator step taken one at a time,
// exactly as the engine's arithmetic is defined. It is the yardstick the vector engine is held to
// bit for bit, and that engine's path for buffers overlapping in ways it cannot process.
#pragma once

#include <cstdint>

#include "engine/EngineSettings.h"
#include "engine/OscillatorState.h"

// outL/outR may be the same buffers as inL/inR, or overlap them in any other way: every frame is
// read and written in order. frames <= 0 touches nothing.
void processReference(OscillatorState& state, const float* inL, const float* inR, float* outL,
                      float* outR, int32_t frames, const EngineSettings& settings);
