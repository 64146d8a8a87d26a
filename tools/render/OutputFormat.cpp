#include "tools/render/OutputFormat.h"

#include <sndfile.h>

#include <algorithm>
#include <cctype>
#include <cstdio>

namespace {

std::string lowerCase(std::string text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return text;
}

int subtypeOf(SampleBits bits)
{
    switch (bits) {
    case SampleBits::Pcm16:
        return SF_FORMAT_PCM_16;
    case SampleBits::Pcm24:
        return SF_FORMAT_PCM_24;
    case SampleBits::Pcm32:
        return SF_FORMAT_PCM_32;
    case SampleBits::Float:
        break;
    }
    return SF_FORMAT_FLOAT;
}

uint64_t bytesPerSample(SampleBits bits)
{
    switch (bits) {
    case SampleBits::Pcm16:
        return 2;
    case SampleBits::Pcm24:
        return 3;
    default:
        return 4;
    }
}

bool writable(int format, int rate = 44100)
{
    SF_INFO info{};
    info.samplerate = rate;
    info.channels = 2;
    info.format = format;
    return sf_format_check(&info) != 0;
}

std::string gibibytes(uint64_t bytes)
{
    char text[32];
    std::snprintf(text, sizeof text, "%.2f GiB", static_cast<double>(bytes) / (1ull << 30));
    return text;
}

} // namespace

const std::vector<Container>& writableContainers()
{
    static const std::vector<Container> containers = [] {
        const Container all[] = {
            {"wav", "WAV", SF_FORMAT_WAV, 0, 0}, // RF64 beyond 4 GiB: see chooseFormat
            {"flac", "FLAC", SF_FORMAT_FLAC, 0, 0},
            {"ogg", "OGG Vorbis", SF_FORMAT_OGG, SF_FORMAT_VORBIS, 0},
            // 32-bit sizes and no 64-bit form: refused past 4 GiB, with room for the tags.
            {"aiff", "AIFF", SF_FORMAT_AIFF, 0, kLargestPlainWavData},
            {"aif", "AIFF", SF_FORMAT_AIFF, 0, kLargestPlainWavData},
            // AU marks a size past 4 GiB as unknown, which readers read to the end.
            {"au", "AU", SF_FORMAT_AU, 0, 0},
            {"w64", "W64", SF_FORMAT_W64, 0, 0},
            {"rf64", "RF64", SF_FORMAT_RF64, 0, 0},
            {"caf", "CAF", SF_FORMAT_CAF, 0, 0},
            {"mp3", "MP3", SF_FORMAT_MPEG, SF_FORMAT_MPEG_LAYER_III, 0},
        };
        std::vector<Container> result;
        for (const Container& c : all)
            if (writable(c.major | (c.lossySubtype ? c.lossySubtype : SF_FORMAT_PCM_16)))
                result.push_back(c);
        return result;
    }();
    return containers;
}

std::string writableExtensions()
{
    std::string list;
    for (const Container& c : writableContainers())
        list += (list.empty() ? "" : ", ") + c.extension;
    return list;
}

const Container* containerFor(const std::string& extension)
{
    const std::string wanted = lowerCase(extension);
    for (const Container& c : writableContainers())
        if (c.extension == wanted)
            return &c;
    return nullptr;
}

std::string extensionOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    const std::string name = slash == std::string::npos ? path : path.substr(slash + 1);
    const size_t dot = name.rfind('.');
    if (dot == std::string::npos || dot == 0)
        return "";
    return lowerCase(name.substr(dot + 1));
}

std::optional<SampleBits> parseBits(const std::string& text)
{
    const std::string t = lowerCase(text);
    if (t == "16")
        return SampleBits::Pcm16;
    if (t == "24")
        return SampleBits::Pcm24;
    if (t == "32")
        return SampleBits::Pcm32;
    if (t == "float")
        return SampleBits::Float;
    return std::nullopt;
}

std::string bitsName(SampleBits bits)
{
    switch (bits) {
    case SampleBits::Pcm16:
        return "16-bit";
    case SampleBits::Pcm24:
        return "24-bit";
    case SampleBits::Pcm32:
        return "32-bit";
    case SampleBits::Float:
        break;
    }
    return "float";
}

SampleBits bitsOfInput(int format)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_24:
    case SF_FORMAT_DWVW_24:
    case SF_FORMAT_ALAC_20:
    case SF_FORMAT_ALAC_24:
        return SampleBits::Pcm24;
    case SF_FORMAT_PCM_32:
    case SF_FORMAT_ALAC_32:
        return SampleBits::Pcm32;
    case SF_FORMAT_FLOAT:
    case SF_FORMAT_DOUBLE:
    case SF_FORMAT_VORBIS:
    case SF_FORMAT_OPUS:
    case SF_FORMAT_MPEG_LAYER_I:
    case SF_FORMAT_MPEG_LAYER_II:
    case SF_FORMAT_MPEG_LAYER_III:
        return SampleBits::Float;
    default:
        // 8-bit, 16-bit and the codecs that decode to 16 bits (A-law, u-law, ADPCM, GSM...).
        return SampleBits::Pcm16;
    }
}

std::optional<OutputFormat> chooseFormat(const Container& container, SampleBits bits,
                                         bool bitsAsked, int rate, int64_t frames,
                                         std::string& error)
{
    OutputFormat chosen;
    if (container.lossySubtype) {
        chosen.format = container.major | container.lossySubtype;
        chosen.description = container.name;
        if (bitsAsked)
            chosen.note = container.name + " is lossy: --bits does not apply";
    } else {
        // The nearest the container holds: float and 32-bit fall back to 24, then 16.
        SampleBits used = bits;
        const SampleBits fallbacks[] = {bits, SampleBits::Pcm24, SampleBits::Pcm16};
        for (SampleBits candidate : fallbacks) {
            if (candidate == SampleBits::Pcm24 && bits == SampleBits::Pcm16)
                continue;
            if (writable(container.major | subtypeOf(candidate))) {
                used = candidate;
                break;
            }
        }
        if (used != bits)
            chosen.note = container.name + " cannot hold " + bitsName(bits) + " samples; writing " +
                          bitsName(used);
        chosen.format = container.major | subtypeOf(used);
        chosen.integer = used != SampleBits::Float;
        chosen.description = container.name + ", " + bitsName(used);

        const uint64_t data = frames < 0 ? 0 : static_cast<uint64_t>(frames) * 2 * bytesPerSample(used);
        if (container.major == SF_FORMAT_WAV && (frames < 0 || data > kLargestPlainWavData)) {
            // libsndfile writes RF64 and, if the file stays below 4 GiB after all, plain WAV.
            chosen.format = SF_FORMAT_RF64 | subtypeOf(used);
            chosen.rf64AutoDowngrade = true;
            chosen.description = "RF64, " + bitsName(used);
        } else if (container.major == SF_FORMAT_WAV) {
            chosen.largestData = kLargestPlainWavData;
        }
        if (container.largestData) {
            chosen.largestData = container.largestData;
            if (data > container.largestData) {
                error = container.name + " cannot hold more than 4 GiB of audio and this render "
                        "makes " + gibibytes(data) + "; name a .wav, .w64, .rf64, .caf or .flac "
                        "file instead";
                return std::nullopt;
            }
        }
    }
    if (!writable(chosen.format, rate)) {
        error = chosen.description + " cannot be written at " + std::to_string(rate) + " Hz";
        return std::nullopt;
    }
    return chosen;
}
