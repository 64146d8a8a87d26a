#include "tools/render/SoundSource.h"

#include <sndfile.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

#include "tools/render/DemoSignal.h"

namespace {

class SoundFileSource : public SoundSource {
public:
    SoundFileSource(SNDFILE* file, const SF_INFO& info, const std::string& path, int blockSize)
        : file(file), info(info), path(path),
          interleaved(static_cast<size_t>(blockSize) * static_cast<size_t>(info.channels))
    {
    }
    ~SoundFileSource() override { sf_close(file); }

    int channels() const override { return info.channels; }
    int sampleRate() const override { return info.samplerate; }
    int64_t frames() const override { return info.frames == SF_COUNT_MAX ? -1 : info.frames; }

    int read(float* left, float* right, int count) override
    {
        // libsndfile may hand out a file in smaller pieces than asked for; keep asking until the
        // block is full, so that every block but the last has exactly the size asked for.
        int filled = 0;
        while (filled < count) {
            float* at = interleaved.data() + static_cast<size_t>(filled) * info.channels;
            const sf_count_t got = sf_readf_float(file, at, count - filled);
            if (got <= 0)
                break;
            filled += static_cast<int>(got);
        }
        if (sf_error(file) != SF_ERR_NO_ERROR) {
            errorText = "cannot read '" + path + "': " + sf_strerror(file);
            return -1;
        }
        const int stride = info.channels;
        for (int i = 0; i < filled; ++i) {
            left[i] = interleaved[static_cast<size_t>(i) * stride];
            right[i] = interleaved[static_cast<size_t>(i) * stride + stride - 1];
        }
        return filled;
    }

private:
    SNDFILE* file;
    SF_INFO info;
    std::string path;
    std::vector<float> interleaved;
};

class DemoSource : public SoundSource {
public:
    explicit DemoSource(int rate) : rate(rate), samples(makeDemoSignal(rate)) {}

    int channels() const override { return 1; }
    int sampleRate() const override { return rate; }
    int64_t frames() const override { return static_cast<int64_t>(samples.size()); }

    int read(float* left, float* right, int count) override
    {
        const size_t available = samples.size() - position;
        const auto n = static_cast<int>(std::min(available, static_cast<size_t>(count)));
        std::copy_n(samples.data() + position, n, left);
        std::copy_n(samples.data() + position, n, right);
        position += static_cast<size_t>(n);
        return n;
    }

private:
    int rate;
    std::vector<float> samples;
    size_t position = 0;
};

} // namespace

std::unique_ptr<SoundSource> openSoundFile(const std::string& path, int blockSize,
                                           std::string& error)
{
    // libsndfile's own texts for these cases ("System error") do not say what is wrong.
    struct stat status {};
    if (stat(path.c_str(), &status) != 0) {
        error = "cannot read input '" + path + "': " + std::strerror(errno);
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        error = "input '" + path + "' is a folder, not a sound file";
        return nullptr;
    }
    if (FILE* probe = std::fopen(path.c_str(), "rb"))
        std::fclose(probe);
    else {
        error = "cannot read input '" + path + "': " + std::strerror(errno);
        return nullptr;
    }

    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file) {
        error = "input '" + path + "' is not a sound file this program can read (" +
                sf_strerror(nullptr) + ")";
        return nullptr;
    }
    if (info.channels > 2) {
        error = "input '" + path + "' has " + std::to_string(info.channels) +
                " channels; only mono and stereo files can be rendered";
        sf_close(file);
        return nullptr;
    }
    if (info.channels < 1 || info.samplerate < 1) {
        error = "input '" + path + "' names no channels or no sample rate";
        sf_close(file);
        return nullptr;
    }
    return std::make_unique<SoundFileSource>(file, info, path, blockSize);
}

std::unique_ptr<SoundSource> openDemoSignal(int sampleRate)
{
    return std::make_unique<DemoSource>(sampleRate);
}
