// The built-in test sound rendered when no input file is given: two sustained electric-piano
// chords, long enough and steady enough that the tremolo's level swings and the panner's
// left-right swings are plain to hear and to see in the plot. Deterministic: no randomness.
#pragma once

#include <vector>

constexpr double kDemoSeconds = 6.0;

// One channel (the same sound goes to both inputs), peak at -6 dBFS.
std::vector<float> makeDemoSignal(int sampleRate);
