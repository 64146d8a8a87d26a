// The rendered audio as a stereo 32-bit float WAV file: the samples exactly as the plug-in made
// them, NaN and infinity included, with no conversion or clipping.
#pragma once

#include <string>
#include <vector>

typedef struct sf_private_tag SNDFILE;

class WavWriter {
public:
    WavWriter() = default;
    ~WavWriter();

    WavWriter(const WavWriter&) = delete;
    WavWriter& operator=(const WavWriter&) = delete;

    // Opens (truncating) `path` for frames of at most `blockSize`; on failure error() says why.
    bool open(const std::string& path, int sampleRate, int blockSize);
    bool write(const float* left, const float* right, int frames);
    // Finishes the header. Required before the file is complete.
    bool close();

    const std::string& error() const { return errorText; }

private:
    SNDFILE* file = nullptr;
    std::vector<float> interleaved;
    std::string errorText;
};
