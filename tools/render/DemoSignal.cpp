#include "tools/render/DemoSignal.h"

#include <algorithm>
#include <cmath>
#include <cstdint>

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kChordChange = 3.0;   // seconds: the second chord is struck here
constexpr double kChordRelease = 0.08; // seconds: how fast a chord dies when the next one comes
constexpr double kFadeOut = 0.3;       // seconds at the end, so the file does not end in a click
constexpr double kAttack = 0.004;      // seconds: a struck tine, fast but not a click
constexpr double kPeak = 0.5;          // -6 dBFS

// A tine piano's tone: a strong fundamental, a few harmonics that die faster, and a short
// inharmonic "bell" from the tine that gives the strike its bite.
struct Partial {
    double ratio;
    double level;
    double decaySeconds;
};
constexpr Partial kPartials[] = {
    {1.0, 1.0, 3.5},
    {2.0, 0.35, 1.6},
    {3.0, 0.12, 0.9},
    {7.1, 0.06, 0.12},
};

struct Note {
    int midiKey;
    double velocity;
};
// Cmaj9 then Am9, voiced in the middle of the keyboard where a tremolo is most often used.
constexpr Note kFirstChord[] = {{48, 1.0}, {52, 0.8}, {55, 0.85}, {59, 0.7}, {62, 0.75}};
constexpr Note kSecondChord[] = {{45, 1.0}, {52, 0.8}, {55, 0.8}, {59, 0.7}, {60, 0.75}};

double frequency(int midiKey)
{
    return 440.0 * std::pow(2.0, (midiKey - 69) / 12.0);
}

// Adds one struck note from frame `start` to frame `end` (exclusive), released at `release`.
void addNote(std::vector<double>& signal, int sampleRate, const Note& note, int64_t start,
             int64_t release, int64_t end)
{
    const double f0 = frequency(note.midiKey);
    for (const Partial& partial : kPartials) {
        const double f = f0 * partial.ratio;
        if (f >= 0.45 * sampleRate)
            continue; // no partial may fold back below the Nyquist frequency
        for (int64_t frame = start; frame < end; ++frame) {
            const double t = static_cast<double>(frame - start) / sampleRate;
            double level = note.velocity * partial.level * std::exp(-t / partial.decaySeconds);
            level *= std::min(1.0, t / kAttack);
            if (frame >= release)
                level *= std::exp(-static_cast<double>(frame - release) / sampleRate /
                                  kChordRelease);
            signal[static_cast<size_t>(frame)] += level * std::sin(kTwoPi * f * t);
        }
    }
}

} // namespace

std::vector<float> makeDemoSignal(int sampleRate)
{
    const auto total = static_cast<int64_t>(std::llround(kDemoSeconds * sampleRate));
    const auto change = static_cast<int64_t>(std::llround(kChordChange * sampleRate));
    // The first chord rings on under the second for a few release times, then is inaudible.
    const int64_t firstEnd = std::min(total, change + static_cast<int64_t>(sampleRate));

    std::vector<double> signal(static_cast<size_t>(total), 0.0);
    for (const Note& note : kFirstChord)
        addNote(signal, sampleRate, note, 0, change, firstEnd);
    for (const Note& note : kSecondChord)
        addNote(signal, sampleRate, note, change, total, total);

    const auto fadeFrames = static_cast<int64_t>(std::llround(kFadeOut * sampleRate));
    for (int64_t i = 0; i < fadeFrames && i < total; ++i)
        signal[static_cast<size_t>(total - 1 - i)] *= static_cast<double>(i) / fadeFrames;

    double peak = 0.0;
    for (double sample : signal)
        peak = std::max(peak, std::fabs(sample));
    const double scale = peak > 0.0 ? kPeak / peak : 0.0;

    std::vector<float> result(signal.size());
    std::transform(signal.begin(), signal.end(), result.begin(),
                   [scale](double sample) { return static_cast<float>(sample * scale); });
    return result;
}
