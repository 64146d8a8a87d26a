#include "tools/render/SoundWriter.h"

#include <sndfile.h>

#include <cmath>

namespace {

// Frames collected before one call into libsndfile: fewer, larger writes.
constexpr size_t kBufferFrames = 16384;

int bytesPerSample(int format)
{
    switch (format & SF_FORMAT_SUBMASK) {
    case SF_FORMAT_PCM_16:
        return 2;
    case SF_FORMAT_PCM_24:
        return 3;
    default:
        return 4;
    }
}

float finite(float sample)
{
    if (std::isnan(sample))
        return 0.0f;
    if (std::isinf(sample))
        return sample > 0.0f ? 1.0f : -1.0f;
    return sample;
}

} // namespace

SoundWriter::~SoundWriter()
{
    if (file)
        sf_close(file);
}

bool SoundWriter::open(int descriptor, const OutputFormat& chosen, int sampleRate,
                       const SoundTags& tags)
{
    format = chosen;
    bytesPerFrame = 2 * bytesPerSample(format.format);
    keepExact = (format.format & SF_FORMAT_SUBMASK) == SF_FORMAT_FLOAT;
    sink = std::make_unique<FileSink>(descriptor);
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 2;
    info.format = format.format;
    file = sf_open_virtual(&FileSink::callbacks(), SFM_WRITE, &info, sink.get());
    if (!file) {
        errorText = "cannot write " + format.description + " at " + std::to_string(sampleRate) +
                    " Hz: " + sf_strerror(nullptr);
        return false;
    }
    if (format.rf64AutoDowngrade)
        sf_command(file, SFC_RF64_AUTO_DOWNGRADE, nullptr, SF_TRUE);
    if (format.integer)
        sf_command(file, SFC_SET_CLIPPING, nullptr, SF_TRUE);
    // Before any audio: some formats (FLAC, OGG) write their tags first. A format without a
    // place for a tag refuses it, which is fine: it is dropped.
    for (const auto& [kind, text] : tags)
        sf_set_string(file, kind, text.c_str());
    interleaved.resize(kBufferFrames * 2);
    return true;
}

bool SoundWriter::write(const float* left, const float* right, int frames)
{
    for (int i = 0; i < frames; ++i) {
        interleaved[2 * waiting] = keepExact ? left[i] : finite(left[i]);
        interleaved[2 * waiting + 1] = keepExact ? right[i] : finite(right[i]);
        if (++waiting == kBufferFrames && !flush())
            return false;
    }
    return true;
}

bool SoundWriter::flush()
{
    if (waiting == 0)
        return true;
    const auto frames = static_cast<sf_count_t>(waiting);
    dataBytes += static_cast<uint64_t>(waiting) * static_cast<uint64_t>(bytesPerFrame);
    waiting = 0;
    if (format.largestData && dataBytes > format.largestData) {
        errorText = format.description + " cannot hold more than 4 GiB of audio; name a .wav, "
                    ".w64, .rf64, .caf or .flac file instead";
        return false;
    }
    if (sf_writef_float(file, interleaved.data(), frames) != frames) {
        errorText = std::string("cannot write ") + format.description + ": " +
                    (sink->error().empty() ? sf_strerror(file) : sink->error());
        return false;
    }
    return true;
}

bool SoundWriter::close()
{
    const bool flushed = flush();
    SNDFILE* closing = file;
    file = nullptr;
    const int closed = sf_close(closing);
    if (!flushed)
        return false;
    if (closed != 0 || !sink->finish()) {
        errorText = "cannot finish " + format.description + ": " +
                    (sink->error().empty() ? sf_error_number(closed) : sink->error());
        return false;
    }
    return true;
}
