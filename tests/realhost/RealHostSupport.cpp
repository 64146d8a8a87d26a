#include "tests/realhost/RealHostSupport.h"

#include <sndfile.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <sstream>

ScratchDirectory::ScratchDirectory()
{
    std::string pattern = (std::filesystem::temp_directory_path() / "hvt-realhost-XXXXXX").string();
    if (!mkdtemp(pattern.data()))
        std::abort();
    root = pattern;
}

ScratchDirectory::~ScratchDirectory()
{
    std::error_code ignored;
    std::filesystem::remove_all(root, ignored);
}

std::string quoted(const std::string& text)
{
    std::string result = "'";
    for (char c : text) {
        if (c == '\'')
            result += "'\\''";
        else
            result += c;
    }
    return result + "'";
}

CommandResult runCommand(const std::string& commandLine, int timeoutSeconds)
{
    CommandResult result;
    const std::string line = "timeout " + std::to_string(timeoutSeconds) + " sh -c " +
                             quoted(commandLine) + " </dev/null 2>&1";
    FILE* pipe = popen(line.c_str(), "r");
    if (!pipe)
        return result;
    char buffer[4096];
    size_t got;
    while ((got = fread(buffer, 1, sizeof buffer, pipe)) > 0)
        result.output.append(buffer, got);
    const int status = pclose(pipe);
    if (status != -1 && WIFEXITED(status))
        result.exitCode = WEXITSTATUS(status);
    return result;
}

std::string readTextFile(const std::filesystem::path& path)
{
    std::ifstream file(path);
    std::stringstream text;
    text << file.rdbuf();
    return text.str();
}

std::vector<std::string> linesStartingWith(const std::string& text, const std::string& prefix)
{
    std::vector<std::string> lines;
    std::istringstream stream(text);
    std::string line;
    while (std::getline(stream, line))
        if (line.compare(0, prefix.size(), prefix) == 0)
            lines.push_back(line.substr(prefix.size()));
    return lines;
}

std::string attributeValue(const std::string& text, const std::string& name)
{
    const std::string key = " " + name + "=\"";
    const size_t start = text.find(key);
    if (start == std::string::npos)
        return "";
    const size_t valueStart = start + key.size();
    const size_t end = text.find('"', valueStart);
    return end == std::string::npos ? "" : text.substr(valueStart, end - valueStart);
}

std::string elementText(const std::string& text, const std::string& name)
{
    const std::string open = "<" + name + ">";
    const size_t start = text.find(open);
    if (start == std::string::npos)
        return "";
    const size_t valueStart = start + open.size();
    const size_t end = text.find("</" + name + ">", valueStart);
    return end == std::string::npos ? "" : text.substr(valueStart, end - valueStart);
}

std::vector<float> readStereoWav(const std::filesystem::path& path)
{
    SF_INFO info = {};
    SNDFILE* file = sf_open(path.c_str(), SFM_READ, &info);
    if (!file)
        return {};
    std::vector<float> samples;
    if (info.channels == 2) {
        samples.resize(static_cast<size_t>(info.frames) * 2);
        if (sf_readf_float(file, samples.data(), info.frames) != info.frames)
            samples.clear();
    }
    sf_close(file);
    return samples;
}

bool writeStereoWav(const std::filesystem::path& path, const float* samples, size_t frames,
                    int sampleRate)
{
    SF_INFO info = {};
    info.samplerate = sampleRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | SF_FORMAT_FLOAT;
    SNDFILE* file = sf_open(path.c_str(), SFM_WRITE, &info);
    if (!file)
        return false;
    const auto count = static_cast<sf_count_t>(frames);
    const bool written = sf_writef_float(file, samples, count) == count;
    return sf_close(file) == 0 && written;
}

bool isExecutable(const std::string& path)
{
    return !path.empty() && access(path.c_str(), X_OK) == 0;
}
