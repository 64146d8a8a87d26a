// What the audio path runs with: the parameter snapshot a block is handed, and the working values
// both engines derive from it by one shared set of rules, so that they cannot drift apart.
#pragma once

#include <cstdint>

struct EngineSettings {
    float tremoloDepth = 0.0f;
    float tremoloSpeed = 0.0f;
    float pannerDepth = 0.0f;
    float pannerSpeed = 0.0f;
    float mix = 0.0f;
    int32_t rateChoice = 7; // 7, 8, 9, 10 for 44.1, 48, 88.2, 96 kHz; anything else counts as 7
};

// One block's working values. A stage that is off leaves the audio and its oscillator alone.
struct BlockSettings {
    bool tremoloOn = false;
    bool pannerOn = false;
    float tremoloIncrement = 0.0f; // table steps per frame, 0 < increment <= 18000 when on
    float pannerIncrement = 0.0f;  // 0 < increment <= 36000 when on
    float tremoloDepth = 0.0f;     // finite, at most 100 in size
    float pannerDepth = 0.0f;
    float mix = 0.0f;
};

// Speed factor for a rate choice: 44100 divided by the chosen rate, 1.0 for unknown choices.
float rateFactor(int32_t rateChoice);

BlockSettings blockSettings(const EngineSettings& settings);
