#include "panel/ReadoutText.h"

#include <cmath>
#include <cstdio>

#include "common/truncate.h"
#include "engine/EngineSettings.h"
#include "engine/Parameters.h"
#include "engine/SineTables.h"
#include "panel/OscillatorRate.h"

namespace {

std::string format(const char* pattern, double value)
{
    char text[64];
    std::snprintf(text, sizeof text, pattern, value);
    return text;
}

std::string percent(float fraction)
{
    // + 0.0 shows a negative zero as 0.
    return format("%.1f %%", double{fraction} * 100.0 + 0.0);
}

// Three significant digits down to a thousandth of a cycle a second. Without a sample rate (a host
// that never said) there is no second to count in.
std::string hertz(float increment, uint32_t tableLength, float sampleRate)
{
    if (!(sampleRate > 0.0f) || !std::isfinite(sampleRate))
        return "? Hz";
    const double cycles = cyclesPerSecond(increment, tableLength, sampleRate);
    if (cycles == 0.0)
        return "0 Hz";
    const int decimals = cycles >= 100.0 ? 0 : cycles >= 10.0 ? 1 : cycles >= 1.0 ? 2 : 3;
    char text[64];
    std::snprintf(text, sizeof text, "%.*f Hz", decimals, cycles);
    return text;
}

} // namespace

ReadoutText readoutText(int32_t parameter, float value, float rateChoice, float sampleRate)
{
    if (!isParameter(parameter))
        return {};
    // The engine's own reading of the value. For the speeds the depths are 1, so that a speed
    // switches its stage on and always gives its increment.
    const BlockSettings speeds = blockSettings({.tremoloDepth = 1.0f,
                                                .tremoloSpeed = value,
                                                .pannerDepth = 1.0f,
                                                .pannerSpeed = value,
                                                .rateChoice = truncateToInt32(rateChoice)});
    const BlockSettings gains =
        blockSettings({.tremoloDepth = value, .pannerDepth = value, .mix = value});
    std::string shown;
    switch (parameter) {
    case kTremoloDepth:
        shown = percent(gains.tremoloDepth);
        break;
    case kStereoPanner:
        shown = percent(gains.pannerDepth);
        break;
    case kMix:
        shown = percent(gains.mix);
        break;
    case kTremoloSpeed:
        shown = hertz(speeds.tremoloIncrement, sine_tables::kTremoloLength, sampleRate);
        break;
    case kPannerSpeed:
        shown = hertz(speeds.pannerIncrement, sine_tables::kPannerLength, sampleRate);
        break;
    default: {
        // A choice the engine does not know tunes for 44.1 kHz, as 7 does.
        const int32_t choice = truncateToInt32(value);
        const float rate = kRateChoiceHz[(isRateChoice(choice) ? choice : kFirstRateChoice) -
                                         kFirstRateChoice];
        shown = format("%g kHz", double{rate} / 1000.0);
        break;
    }
    }
    return {kParameterInfo[parameter].name, shown};
}
