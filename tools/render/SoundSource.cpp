#include "tools/render/SoundSource.h"

#include <sndfile.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "tools/render/DemoSignal.h"
#include "tools/render/Interrupts.h"

namespace {

class SoundFileSource : public SoundSource {
public:
    SoundFileSource(SNDFILE* file, const SF_INFO& info, const std::string& path, int blockSize)
        : file(file), info(info), path(path),
          interleaved(static_cast<size_t>(std::max(blockSize, kReadFrames)) *
                      static_cast<size_t>(info.channels))
    {
    }
    ~SoundFileSource() override { sf_close(file); }

    int channels() const override { return info.channels; }
    int sampleRate() const override { return info.samplerate; }
    int64_t frames() const override { return info.frames == SF_COUNT_MAX ? -1 : info.frames; }
    int format() const override { return info.format; }

    std::vector<std::pair<int, std::string>> tags() const override
    {
        std::vector<std::pair<int, std::string>> found;
        for (int kind = SF_STR_FIRST; kind <= SF_STR_LAST; ++kind)
            if (const char* text = sf_get_string(file, kind); text && *text)
                found.emplace_back(kind, text);
        return found;
    }

    int read(float* left, float* right, int count) override
    {
        // Every block but the last has exactly the size asked for, however libsndfile hands
        // out the file; it is read in large pieces, which saves system calls.
        const int stride = info.channels;
        int filled = 0;
        while (filled < count) {
            if (next == buffered && !refill())
                return -1;
            if (next == buffered)
                break; // the end
            const int taken = std::min(count - filled, buffered - next);
            for (int i = 0; i < taken; ++i) {
                const size_t at = static_cast<size_t>(next + i) * stride;
                left[filled + i] = interleaved[at];
                right[filled + i] = interleaved[at + stride - 1];
            }
            filled += taken;
            next += taken;
        }
        return filled;
    }

private:
    static constexpr int kReadFrames = 16384;

    // Reads the next piece; false on a read error. At the end, `buffered` stays 0.
    bool refill()
    {
        next = buffered = 0;
        const auto capacity = static_cast<sf_count_t>(interleaved.size() / info.channels);
        while (buffered < capacity) {
            float* at = interleaved.data() + static_cast<size_t>(buffered) * info.channels;
            const sf_count_t got = sf_readf_float(file, at, capacity - buffered);
            if (got <= 0)
                break;
            buffered += static_cast<int>(got);
        }
        if (sf_error(file) != SF_ERR_NO_ERROR) {
            errorText = (path == "-" ? std::string("cannot read standard input: ")
                                     : "cannot read '" + path + "': ") + sf_strerror(file);
            return false;
        }
        return true;
    }

    SNDFILE* file;
    SF_INFO info;
    std::string path;
    std::vector<float> interleaved;
    int buffered = 0; // frames in `interleaved`
    int next = 0;     // the first of them not yet handed out
};

class DemoSource : public SoundSource {
public:
    explicit DemoSource(int rate) : rate(rate), samples(makeDemoSignal(rate)) {}

    int channels() const override { return 1; }
    int sampleRate() const override { return rate; }
    int64_t frames() const override { return static_cast<int64_t>(samples.size()); }
    int format() const override { return SF_FORMAT_WAV | SF_FORMAT_FLOAT; }

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

// Copies what `from` gives, to its end, into a temporary file that has no name; returns it open
// at its start, or -1 with `error` set.
int spool(int from, const std::string& shown, std::string& error)
{
    const char* folder = std::getenv("TMPDIR");
    std::string pattern = std::string(folder && *folder ? folder : "/tmp") + "/hvtremolo-XXXXXX";
    int into = -1;
    {
        // Named only for a moment, and never at an interrupt.
        const HeldInterrupts held;
        into = mkostemp(pattern.data(), O_CLOEXEC);
        if (into >= 0)
            unlink(pattern.c_str());
    }
    if (into < 0) {
        error = "cannot read " + shown + ": cannot make a temporary file: " + std::strerror(errno);
        return -1;
    }
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const ssize_t got = read(from, buffer.data(), buffer.size());
        if (got == 0)
            break;
        if (got < 0 && errno == EINTR)
            continue;
        if (got < 0) {
            error = "cannot read " + shown + ": " + std::strerror(errno);
            close(into);
            return -1;
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = write(into, buffer.data() + done, static_cast<size_t>(got - done));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0) {
                error = "cannot read " + shown + ": cannot keep it in a temporary file: " +
                        std::strerror(errno);
                close(into);
                return -1;
            }
            done += put;
        }
    }
    lseek(into, 0, SEEK_SET);
    return into;
}

} // namespace

std::unique_ptr<SoundSource> openSoundFile(const std::string& path, int blockSize,
                                           std::string& error)
{
    const bool standardInput = path == "-";
    const std::string shown = standardInput ? "standard input" : "input '" + path + "'";
    // libsndfile's own texts for these cases ("System error") do not say what is wrong.
    struct stat status {};
    if ((standardInput ? fstat(STDIN_FILENO, &status) : stat(path.c_str(), &status)) != 0) {
        error = "cannot read " + shown + ": " + std::strerror(errno);
        return nullptr;
    }
    if (S_ISDIR(status.st_mode)) {
        error = shown + " is a folder, not a sound file";
        return nullptr;
    }
    int descriptor = -1;
    if (standardInput) {
        if (isatty(STDIN_FILENO)) {
            error = "standard input is a terminal; pipe a sound file into it";
            return nullptr;
        }
        descriptor = spool(STDIN_FILENO, shown, error);
    } else {
        const int opened = open(path.c_str(), O_RDONLY | O_CLOEXEC);
        if (opened < 0) {
            error = "cannot read " + shown + ": " + std::strerror(errno);
            return nullptr;
        }
        if (S_ISREG(status.st_mode)) {
            descriptor = opened;
        } else {
            descriptor = spool(opened, shown, error);
            close(opened);
        }
    }
    if (descriptor < 0)
        return nullptr;

    SF_INFO info{};
    SNDFILE* file = sf_open_fd(descriptor, SFM_READ, &info, SF_TRUE);
    if (!file) {
        error = shown + " is not a sound file this program can read (" + sf_strerror(nullptr) +
                ")";
        close(descriptor);
        return nullptr;
    }
    if (info.channels > 2) {
        error = shown + " has " + std::to_string(info.channels) +
                " channels; only mono and stereo files can be rendered";
        sf_close(file);
        return nullptr;
    }
    if (info.channels < 1 || info.samplerate < 1) {
        error = shown + " names no channels or no sample rate";
        sf_close(file);
        return nullptr;
    }
    return std::make_unique<SoundFileSource>(file, info, standardInput ? "-" : path, blockSize);
}

std::unique_ptr<SoundSource> openDemoSignal(int sampleRate)
{
    return std::make_unique<DemoSource>(sampleRate);
}
