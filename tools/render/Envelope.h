// A loudness envelope for the plot: the RMS level over a window sliding in short steps, in dB
// relative to full scale. Fed block by block; a long file costs one value per step.
//
// Why a window of several steps: the beats between the notes of a chord make the level of any
// window much shorter than 30 ms ripple by several dB, which hides a tremolo's slower swing.
// 30 ms still follows a tremolo at 12 Hz (program "Warble") to within 2 dB.
#pragma once

#include <cstdint>
#include <vector>

class Envelope {
public:
    // Levels every `stepFrames` frames, each over `stepsPerWindow` steps centred on it.
    Envelope(int stepFrames, int stepsPerWindow);

    // Adds `frames` frames of one or two channels (`right` may be null); the power is the
    // channels' mean. Samples that are not finite are left out, so a bad sample cannot blank
    // the plot.
    void add(const float* left, const float* right, int frames);
    // Closes the last, shorter step and computes the levels.
    void finish();

    // dB per step, after finish(); -infinity for silence.
    const std::vector<float>& levels() const { return values; }

private:
    struct Step {
        double power = 0.0;
        int64_t samples = 0; // finite samples summed into `power`
    };

    int stepFrames;
    int stepsPerWindow;
    int filled = 0; // frames in the current step
    Step current;
    std::vector<Step> steps;
    std::vector<float> values;
};
