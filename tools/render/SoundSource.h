// Where the audio to render comes from: a sound file read through libsndfile, or the demo signal.
// Either way the renderer pulls stereo blocks; a mono source gives the same samples on both sides.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

class SoundSource {
public:
    virtual ~SoundSource() = default;

    virtual int channels() const = 0;   // 1 or 2
    virtual int sampleRate() const = 0;
    virtual int64_t frames() const = 0; // -1 when the file does not say
    virtual int format() const = 0;     // libsndfile's SF_FORMAT_* of the input
    // Text tags by libsndfile's SF_STR_* number.
    virtual std::vector<std::pair<int, std::string>> tags() const { return {}; }

    // Fills up to `count` frames of both sides (count at most the block size the source was
    // opened for) and returns how many it filled: fewer only at the end, 0 after it, -1 on a
    // read error, which error() then names.
    virtual int read(float* left, float* right, int count) = 0;
    const std::string& error() const { return errorText; }

protected:
    std::string errorText;
};

// Opens a sound file for blocks of at most `blockSize` frames; `-` is standard input. Input that
// cannot seek (standard input, a FIFO, a device) is read whole into an unnamed temporary file
// first, since FLAC, OGG and others need to seek. On failure returns null and `error` names the
// problem in one line.
std::unique_ptr<SoundSource> openSoundFile(const std::string& path, int blockSize,
                                           std::string& error);

// The demo signal at the given rate, mono.
std::unique_ptr<SoundSource> openDemoSignal(int sampleRate);
