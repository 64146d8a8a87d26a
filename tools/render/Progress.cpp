#include "tools/render/Progress.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "tools/render/Interrupts.h"

namespace {

constexpr int kBarWidth = 40;
constexpr auto kRedrawInterval = std::chrono::milliseconds(100);

std::string dbfs(float peak)
{
    if (peak <= 0.0f)
        return "-inf dBFS";
    char text[32];
    std::snprintf(text, sizeof text, "%.1f dBFS", 20.0 * std::log10(static_cast<double>(peak)));
    return text;
}

} // namespace

void OutputStats::add(const float* left, const float* right, int count)
{
    const float* channels[2] = {left, right};
    for (int c = 0; c < 2; ++c) {
        for (int i = 0; i < count; ++i) {
            const float sample = channels[c][i];
            if (std::isfinite(sample))
                peak[c] = std::max(peak[c], std::fabs(sample));
            else
                ++nonFinite;
        }
    }
    if (sidesEqual && std::memcmp(left, right, sizeof(float) * static_cast<size_t>(count)) != 0)
        sidesEqual = false;
    frames += count;
}

ProgressBar::ProgressBar(bool enabled, int64_t totalFrames)
    : enabled(enabled && totalFrames > 0), total(totalFrames)
{
}

void ProgressBar::update(int64_t framesDone)
{
    if (!enabled)
        return;
    const auto now = std::chrono::steady_clock::now();
    if (drawn && now - lastDrawn < kRedrawInterval)
        return;
    lastDrawn = now;
    drawn = true;
    // Marked before it is drawn, so that an interrupt at any moment after clears it.
    setProgressLineShown(true, kBarWidth + 8);
    const double fraction = std::clamp(static_cast<double>(framesDone) / total, 0.0, 1.0);
    const int filled = static_cast<int>(fraction * kBarWidth);
    std::fprintf(stderr, "\r[%s%s] %3d%%", std::string(filled, '#').c_str(),
                 std::string(kBarWidth - filled, '.').c_str(), static_cast<int>(fraction * 100));
    std::fflush(stderr);
}

void ProgressBar::finish()
{
    if (enabled && drawn)
        std::fprintf(stderr, "\r%*s\r", kBarWidth + 8, "");
    drawn = false;
    setProgressLineShown(false, 0);
}

std::string summaryLine(const OutputStats& stats, int sampleRate, double elapsedSeconds,
                        const std::string& tuning)
{
    const double seconds = static_cast<double>(stats.frames) / sampleRate;
    char text[256];
    std::snprintf(text, sizeof text, "%lld frames, %.2f s at %d Hz in %.2f s",
                  static_cast<long long>(stats.frames), seconds, sampleRate, elapsedSeconds);
    std::string line = text;
    if (stats.frames > 0 && elapsedSeconds > 0.0) {
        std::snprintf(text, sizeof text, " (%.0fx real time)", seconds / elapsedSeconds);
        line += text;
    }
    if (!tuning.empty())
        line += ", " + tuning;
    line += "; peak L " + dbfs(stats.peak[0]) + ", R " + dbfs(stats.peak[1]);
    if (stats.nonFinite > 0)
        line += "; " + std::to_string(stats.nonFinite) + " output samples are NaN or infinite";
    return line;
}
