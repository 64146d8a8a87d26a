#include "tools/render/WavWriter.h"

#include <sndfile.h>

WavWriter::~WavWriter()
{
    if (file)
        sf_close(file);
}

bool WavWriter::open(const std::string& path, int sampleRate, int blockSize)
{
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file) {
        errorText = std::string("cannot write WAV file: ") + sf_strerror(nullptr);
        return false;
    }
    interleaved.resize(static_cast<size_t>(blockSize) * 2);
    return true;
}

bool WavWriter::write(const float* left, const float* right, int frames)
{
    for (int i = 0; i < frames; ++i) {
        interleaved[2 * static_cast<size_t>(i)] = left[i];
        interleaved[2 * static_cast<size_t>(i) + 1] = right[i];
    }
    if (sf_writef_float(file, interleaved.data(), frames) != frames) {
        errorText = std::string("cannot write WAV file: ") + sf_strerror(file);
        return false;
    }
    return true;
}

bool WavWriter::close()
{
    SNDFILE* closing = file;
    file = nullptr;
    if (sf_close(closing) != 0) {
        errorText = "cannot finish WAV file";
        return false;
    }
    return true;
}
