// What an output file is made of: the container, chosen from the name's extension (or --type),
// and the sample format, chosen from the input's (or --bits), both through libsndfile. Also the
// size limits: a WAV file that would pass 4 GiB is written as RF64, and a format whose sizes
// cannot pass 4 GiB (AIFF) is refused rather than given a wrapped header.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

enum class SampleBits { Pcm16, Pcm24, Pcm32, Float };

struct Container {
    std::string extension; // as the user writes it: "wav", "aif", ...
    std::string name;      // for messages: "WAV", "AIFF", ...
    int major;             // SF_FORMAT_WAV, ...
    int lossySubtype;      // for lossy containers (OGG, MP3) the one subtype; 0 otherwise
    // The most bytes of audio the container's header can count; 0: no such limit.
    uint64_t largestData;
};

// The containers this libsndfile can write, in the order --help lists them.
const std::vector<Container>& writableContainers();
// "wav, flac, ogg, aiff, aif, au, w64, rf64, caf, mp3"
std::string writableExtensions();
// Null when the extension (case-insensitive) names no writable container.
const Container* containerFor(const std::string& extension);

// The text after the last dot of the file name, lower-cased; "" when there is none (a leading
// dot, as in ".hidden", starts no extension).
std::string extensionOf(const std::string& path);

std::optional<SampleBits> parseBits(const std::string& text);
std::string bitsName(SampleBits bits); // "16-bit", "float"
// What an input in libsndfile format `format` keeps: its own bit depth; float for float,
// double and lossy inputs (their samples are not integers of any width).
SampleBits bitsOfInput(int format);

struct OutputFormat {
    int format = 0;          // the libsndfile format to open with
    std::string description; // "WAV, 16-bit", "RF64, float", "OGG Vorbis"
    bool rf64AutoDowngrade = false; // RF64 that libsndfile writes as plain WAV if it stays small
    bool integer = false;    // an integer sample format: clipping on, non-finite samples made finite
    uint64_t largestData = 0; // 0: none; otherwise the writer refuses to pass it
    std::string note;        // why the bits asked for could not be kept; empty if they were
};

// The format for `frames` frames (-1: not known) of stereo audio at `rate`. Null with `error`
// set when the container cannot hold the render.
std::optional<OutputFormat> chooseFormat(const Container& container, SampleBits bits,
                                         bool bitsAsked, int rate, int64_t frames,
                                         std::string& error);

// The largest plain WAV data chunk written as WAV; anything that may be bigger is RF64. A margin
// below 4 GiB keeps room for the header, the tags and frame counts that are estimates.
constexpr uint64_t kLargestPlainWavData = 0xFFFFFFFFull - (64ull << 20);
