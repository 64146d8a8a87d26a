// What the tests that run our command-line host and real hosts share: scratch folders, shell
// commands with their output captured, sound files through libsndfile, bit-exact comparison.
#pragma once

#include <sndfile.h>
#include <sys/wait.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <vector>

// A fresh folder, removed with everything in it at the end.
struct Scratch {
    ~Scratch() { std::error_code ignored; std::filesystem::remove_all(dir, ignored); }
    std::string operator/(const std::string& name) const { return dir + "/" + name; }

    // mkdtemp fills in the pattern in place; a null result throws on the way into the string.
    std::string dir = mkdtemp(std::string("/tmp/hvt-test.XXXXXX").data());
};

inline std::string quote(const std::string& word)
{
    std::string result = "'";
    for (char c : word)
        result += c == '\'' ? std::string("'\\''") : std::string(1, c);
    return result + "'";
}

inline std::string readText(const std::string& path)
{
    std::ifstream in(path);
    return {std::istreambuf_iterator<char>(in), {}};
}

struct Ran {
    int status = -1; // the exit status, or 128 + the number of the signal that ended it
    std::string out, err;
};

// Runs a shell command line with no input; a hung program is killed after `seconds`.
inline Ran shell(const std::string& line, int seconds = 120)
{
    const Scratch capture;
    const int status = std::system(("timeout " + std::to_string(seconds) + " sh -c " +
                                    quote(line) + " </dev/null >" + capture / "out" + " 2>" +
                                    capture / "err").c_str());
    return {WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
            readText(capture / "out"), readText(capture / "err")};
}

struct Sound {
    int rate = 44100;
    int channels = 2;
    int format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    std::vector<float> samples; // interleaved
};

// A file that cannot be read whole gives no channels.
inline Sound readSound(const std::string& path)
{
    SF_INFO info{};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    Sound sound{info.samplerate, info.channels, info.format,
                std::vector<float>(static_cast<size_t>(info.frames * info.channels))};
    if (!file || sf_readf_float(file, sound.samples.data(), info.frames) != info.frames)
        sound.channels = 0;
    sf_close(file);
    return sound;
}

inline bool writeSound(const std::string& path, const Sound& sound)
{
    SF_INFO info{0, sound.rate, sound.channels, sound.format, 0, 0};
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    const auto frames = static_cast<sf_count_t>(sound.samples.size()) / sound.channels;
    const bool written = file && sf_writef_float(file, sound.samples.data(), frames) == frames;
    return file && sf_close(file) == 0 && written;
}

// Where the two first differ bit for bit (NaN equals NaN, -0 differs from 0); npos if nowhere.
inline size_t firstDifference(const std::vector<float>& a, const std::vector<float>& b)
{
    const auto same = [](float x, float y) { return std::memcmp(&x, &y, sizeof x) == 0; };
    const size_t i = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), same).first - a.begin();
    return i == a.size() && i == b.size() ? std::string::npos : i;
}
