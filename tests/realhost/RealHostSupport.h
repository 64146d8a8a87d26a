// What the tests with real hosts share: a scratch directory per test (the hosts write caches and
// sessions under $HOME), running a host's command line, and reading the WAV files Ardour exports.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

// A fresh directory under the system's temporary one, removed with everything in it at the end.
class ScratchDirectory {
public:
    ScratchDirectory();
    ~ScratchDirectory();

    ScratchDirectory(const ScratchDirectory&) = delete;
    ScratchDirectory& operator=(const ScratchDirectory&) = delete;

    const std::filesystem::path& path() const { return root; }

private:
    std::filesystem::path root;
};

struct CommandResult {
    int exitCode = -1; // -1 when the command did not end normally
    std::string output; // standard output and standard error together
};

// Runs a shell command line, killed after timeoutSeconds.
CommandResult runCommand(const std::string& commandLine, int timeoutSeconds = 120);

// Single-quoted for the shell.
std::string quoted(const std::string& text);

std::string readTextFile(const std::filesystem::path& path);

// The lines of text that start with prefix, without it.
std::vector<std::string> linesStartingWith(const std::string& text, const std::string& prefix);

// The value of attribute name="value" in text, or "" when it is missing.
std::string attributeValue(const std::string& text, const std::string& name);

// The text between <name> and </name>, or "" when it is missing.
std::string elementText(const std::string& text, const std::string& name);

// Interleaved samples of a stereo file; empty if it cannot be read or is not stereo.
std::vector<float> readStereoWav(const std::filesystem::path& path);

// Writes interleaved stereo samples as a 32-bit float WAV file; false on failure.
bool writeStereoWav(const std::filesystem::path& path, const float* samples, size_t frames,
                    int sampleRate);

// True if path names an executable file.
bool isExecutable(const std::string& path);
