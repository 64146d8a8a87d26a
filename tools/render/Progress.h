// What the user sees on stderr while and after rendering: a progress bar for long inputs on a
// terminal, and one summary line.
#pragma once

#include <chrono>
#include <cstdint>
#include <string>

// Peaks and bad samples of the rendered output, gathered block by block.
struct OutputStats {
    int64_t frames = 0;
    float peak[2] = {0.0f, 0.0f}; // of the finite samples, per channel
    int64_t nonFinite = 0;
    bool sidesEqual = true; // every left sample the same, bit for bit, as its right one

    void add(const float* left, const float* right, int frames);
};

class ProgressBar {
public:
    // Draws nothing unless `enabled`; `totalFrames` of -1 means unknown (no bar then either).
    ProgressBar(bool enabled, int64_t totalFrames);
    void update(int64_t framesDone);
    // Clears the bar's line so the summary starts on a clean line.
    void finish();

private:
    bool enabled;
    int64_t total;
    std::chrono::steady_clock::time_point lastDrawn;
    bool drawn = false;
};

// "264600 frames, 6.00 s at 44100 Hz in 0.03 s (200x real time), tuned for 44.1 kHz;
//  peak L -6.0 dBFS, R -6.0 dBFS" (one line; `tuning` left out when empty)
std::string summaryLine(const OutputStats& stats, int sampleRate, double elapsedSeconds,
                        const std::string& tuning);
