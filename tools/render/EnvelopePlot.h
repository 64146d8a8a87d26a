// The picture --plot writes: the input's envelope and the two output envelopes over time, so a
// musician sees the tremolo as a regular ripple of both outputs below the input, and the panner
// as the left and right outputs dipping in turn.
#pragma once

#include <string>
#include <vector>

constexpr int kPlotWidth = 1000;
constexpr int kPlotHeight = 400;

struct PlotData {
    std::string title;
    double secondsPerLevel = 0.005; // time between two envelope levels
    double totalSeconds = 0.0;
    std::vector<float> input; // dB per window
    std::vector<float> left;
    std::vector<float> right;
    bool sidesEqual = false; // left equals right: one line, "output (L = R)"
};

// Writes a kPlotWidth x kPlotHeight PNG into `descriptor`; on failure `error` says why.
bool writeEnvelopePlot(const PlotData& data, int descriptor, std::string& error);
