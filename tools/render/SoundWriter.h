// The rendered stereo audio written through libsndfile in the chosen format. A float output
// holds the samples exactly as the plug-in made them, NaN and infinity included. An integer
// output clips (never wraps), and its non-finite samples become finite first: NaN 0, infinity
// full scale. Lossy outputs get the same finite samples.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "tools/render/FileSink.h"
#include "tools/render/OutputFormat.h"

typedef struct sf_private_tag SNDFILE;

// Text tags (title, artist, ...) by libsndfile's SF_STR_* number.
using SoundTags = std::vector<std::pair<int, std::string>>;

class SoundWriter {
public:
    SoundWriter() = default;
    ~SoundWriter();
    SoundWriter(const SoundWriter&) = delete;
    SoundWriter& operator=(const SoundWriter&) = delete;

    // Writes into `descriptor`, a fresh, empty file open for reading and writing; the tags the
    // format holds are kept, the others dropped. On failure error() says why.
    bool open(int descriptor, const OutputFormat& format, int sampleRate, const SoundTags& tags);
    bool write(const float* left, const float* right, int frames);
    // Flushes, finishes the header and gives the file its length. Required before it is complete.
    bool close();

    const std::string& error() const { return errorText; }

private:
    bool flush();

    SNDFILE* file = nullptr;
    std::unique_ptr<FileSink> sink;
    OutputFormat format;
    std::vector<float> interleaved; // frames waiting to be written
    size_t waiting = 0;             // frames in `interleaved`
    uint64_t dataBytes = 0;
    int bytesPerFrame = 8;
    bool keepExact = true; // float output: every sample as it is
    std::string errorText;
};
