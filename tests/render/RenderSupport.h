// What the tests of hvtremolo-render share: running it in a scratch folder, test sounds, the
// module driven directly as the program must drive it, sparse silent files of any length.
#pragma once

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cmath>
#include <map>
#include <memory>

#include "tests/render/Support.h"
#include "tools/vsthost/VstPlugin.h"

constexpr int kFloatWav = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
constexpr auto npos = std::string::npos;

// Runs hvtremolo-render in the scratch folder; `arguments` is shell text.
inline Ran render(const Scratch& dir, const std::string& arguments, int seconds = 120)
{
    return shell("cd " + quote(dir.dir) + " && " + quote(HVT_RENDER_PROGRAM) + " " + arguments,
                 seconds);
}

// Shell text that runs hvtremolo-render, for pipelines.
inline std::string renderCommand()
{
    return quote(HVT_RENDER_PROGRAM);
}

inline Ran inFolder(const Scratch& dir, const std::string& line)
{
    return shell("cd " + quote(dir.dir) + " && " + line);
}

// Every name in the folder, hidden ones too, one a line.
inline std::string listing(const Scratch& dir)
{
    return shell("ls -A " + quote(dir.dir)).out;
}

// A tone of its own on each channel; not a multiple of any block size.
inline Sound tone(int rate, int channels, int format, size_t frames = 30011)
{
    Sound made{rate, channels, format, std::vector<float>(frames * channels)};
    for (size_t i = 0; i < made.samples.size(); ++i)
        made.samples[i] = static_cast<float>(0.7 * std::sin(0.01 * i * (i % channels + 1)));
    return made;
}

using Tags = std::map<int, std::string>;

// Writes with clipping on (as the program writes integers) and the given tags.
inline bool writeSoundWith(const std::string& path, const Sound& sound, const Tags& tags = {})
{
    SF_INFO info{0, sound.rate, sound.channels, sound.format, 0, 0};
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file)
        return false;
    sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    for (const auto& [kind, text] : tags)
        sf_set_string(file, kind, text.c_str());
    const auto frames = static_cast<sf_count_t>(sound.samples.size()) / sound.channels;
    const bool written = sf_writef_float(file, sound.samples.data(), frames) == frames;
    return sf_close(file) == 0 && written;
}

inline Tags readTags(const std::string& path)
{
    SF_INFO info{};
    Tags tags;
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return tags;
    for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind)
        if (const char* text = sf_get_string(file, kind))
            tags[kind] = text;
    sf_close(file);
    return tags;
}

// What the program must do, done directly: rate, block size, switched on, program, then the
// parameters in order (the tuning among them, first, where the program sets it), then
// processReplacing block by block. Returns interleaved stereo.
struct Direct {
    int block = 512;
    int program = -1; // -1: the module's own
    std::vector<std::pair<int, float>> parameters;
};

inline std::vector<float> renderDirectly(const Sound& input, const Direct& settings)
{
    VstModule module(HVT_MODULE_PATH);
    const std::unique_ptr<VstPlugin> plugin = VstPlugin::create(module);
    if (!plugin)
        return {};
    plugin->dispatch(effOpen);
    plugin->dispatch(effSetSampleRate, 0, 0, nullptr, static_cast<float>(input.rate));
    plugin->dispatch(effSetBlockSize, 0, settings.block);
    plugin->dispatch(effMainsChanged, 0, 1);
    if (settings.program >= 0)
        plugin->dispatch(effSetProgram, 0, settings.program);
    for (const auto& [index, value] : settings.parameters)
        plugin->setParameter(index, value);

    const size_t frames = input.samples.size() / input.channels;
    std::vector<float> in[2], out[2];
    for (int c = 0; c < 2; ++c) {
        out[c].resize(frames);
        for (size_t i = 0; i < frames; ++i) // a mono input feeds both
            in[c].push_back(input.samples[i * input.channels + c % input.channels]);
    }
    for (size_t start = 0; start < frames; start += settings.block) {
        float* inputs[2] = {in[0].data() + start, in[1].data() + start};
        float* outputs[2] = {out[0].data() + start, out[1].data() + start};
        const auto length = std::min<size_t>(frames - start, settings.block);
        plugin->processReplacing(inputs, outputs, static_cast<VstInt32>(length));
    }
    std::vector<float> output;
    for (size_t i = 0; i < frames; ++i)
        output.insert(output.end(), {out[0][i], out[1][i]});
    return output;
}

// A silent stereo float file of `frames` frames that takes almost no disk space and no time to
// make: an RF64 header (its ds64 chunk holds the 64-bit sizes), then a hole as long as the audio,
// which reads as zeros.
inline bool writeSilence(const std::string& path, int rate, int64_t frames)
{
    std::string header;
    const auto put = [&header](uint64_t value, int bytes) { // little-endian
        for (int i = 0; i < bytes; ++i)
            header += static_cast<char>(value >> (8 * i));
    };
    const uint64_t data = static_cast<uint64_t>(frames) * 8;
    header += "RF64";
    put(0xFFFFFFFF, 4);
    header += "WAVEds64";
    put(28, 4);
    put(72 + data, 8);                        // RIFF size: the file less its first 8 bytes
    put(data, 8);                             // data size
    put(static_cast<uint64_t>(frames), 8);    // sample count
    put(0, 4);                                // no table
    header += "fmt ";
    put(16, 4);
    put(3, 2);                                // IEEE float
    put(2, 2);                                // channels
    put(static_cast<uint32_t>(rate), 4);
    put(static_cast<uint64_t>(rate) * 8, 4);  // bytes per second
    put(8, 2);                                // bytes per frame
    put(32, 2);                               // bits per sample
    header += "data";
    put(0xFFFFFFFF, 4);
    {
        std::ofstream out(path, std::ios::binary | std::ios::trunc);
        out << header;
        if (!out)
            return false;
    }
    std::error_code error;
    std::filesystem::resize_file(path, header.size() + data, error);
    return !error;
}

inline std::string firstBytes(const std::string& path, size_t count)
{
    std::ifstream in(path, std::ios::binary);
    std::string bytes(count, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(count));
    bytes.resize(static_cast<size_t>(in.gcount()));
    return bytes;
}
