// The base class's value-to-text conversions. Digits are truncated, never rounded, so a host
// shows the digits of the stored 32-bit float.
#include <cmath>
#include <cstdint>

#include "host/AudioEffect.h"
#include "common/boundedCopy.h"

namespace {

// The digit character of the integer part of x (0 <= x < 10 for any number). NaN gives '0',
// which is what the truncating conversion of an x86 processor yields, without its undefined
// behaviour in C++.
char digitOf(double x)
{
    if (!(x >= 0.0 && x < 10.0))
        return '0';
    return static_cast<char>('0' + static_cast<int>(x));
}

} // namespace

void AudioEffect::float2string(float value, char* text, VstInt32 maxLen)
{
    double v = value;
    int c = 0;
    bool negative = false;
    if (v < 0.0) {
        if (v < -9999999.0) {
            copyBounded(text, "Huge!", maxLen);
            return;
        }
        negative = true;
        v = -v;
        c = 1;
    } else if (v > 99999999.0) {
        copyBounded(text, "Huge!", maxLen);
        return;
    }

    // Integer part, right to left, ending in front of the terminator of a scratch buffer.
    char scratch[32];
    char* s = scratch + sizeof scratch - 1;
    *s-- = 0;
    *s-- = '.';
    ++c;
    double integer = std::floor(v);
    *s-- = digitOf(std::fmod(integer, 10.0));
    ++c;
    integer /= 10.0;
    while (integer >= 1.0 && c < 8) {
        *s-- = digitOf(std::fmod(integer, 10.0));
        ++c;
        integer /= 10.0;
    }
    if (negative)
        *s-- = '-';
    copyBounded(text, s + 1, maxLen);
    if (c >= 8)
        return;

    s = scratch + sizeof scratch - 1;
    *s-- = 0;
    double mantissa = std::fmod(v, 1.0) * std::pow(10.0, 8 - c);
    for (; c < 8; ++c) {
        if (mantissa <= 0.0) {
            *s-- = '0';
        } else {
            *s-- = digitOf(std::fmod(mantissa, 10.0));
            mantissa /= 10.0;
        }
    }
    appendBounded(text, s + 1, maxLen);
}

void AudioEffect::int2string(VstInt32 value, char* text, VstInt32 maxLen)
{
    if (value >= 100000000) {
        copyBounded(text, "Huge!", maxLen);
        return;
    }
    if (value < 0) {
        copyBounded(text, "-", maxLen);
        // Wrapping negation: the most negative value stays negative, as on the machine the
        // display texts were first defined on, and never overflows.
        value = static_cast<VstInt32>(0u - static_cast<uint32_t>(value));
    } else {
        std::memset(text, 0, maxLen);
    }
    text[maxLen] = 0;

    bool written = false;
    for (VstInt32 divisor = 100000000; divisor >= 1; divisor /= 10) {
        const VstInt32 digit = value / divisor;
        value -= digit * divisor;
        if (written || digit > 0) {
            const char digitText[2] = {static_cast<char>('0' + digit), 0};
            appendBounded(text, digitText, maxLen);
            written = true;
        }
    }
    if (!written)
        appendBounded(text, "0", maxLen);
}

void AudioEffect::dB2string(float value, char* text, VstInt32 maxLen)
{
    if (value <= 0.0f)
        copyBounded(text, "-oo", maxLen);
    else // the logarithm in double: the float one is off in the last place, for 0.5 already
        float2string(static_cast<float>(20.0 * std::log10(static_cast<double>(value))), text,
                     maxLen);
}

void AudioEffect::Hz2string(float samples, char* text, VstInt32 maxLen)
{
    float2string(samples == 0.0f ? 0.0f : sampleRate / samples, text, maxLen);
}

void AudioEffect::ms2string(float samples, char* text, VstInt32 maxLen)
{
    float2string(static_cast<float>(samples * 1000.0 / sampleRate), text, maxLen);
}
