#include "tools/vsthost/modulePath.h"

#include <unistd.h>

#include <climits>

namespace {

constexpr const char* kModule = "HvTremolo.so";

// The folder the running program lives in, with a trailing slash, or "" when unknown.
std::string programFolder()
{
    char program[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
    if (length <= 0)
        return {};
    const std::string path(program, static_cast<size_t>(length));
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? std::string() : path.substr(0, slash + 1);
}

} // namespace

std::string defaultModulePath()
{
    const std::string folder = programFolder();
    const std::string besideProgram = folder + kModule;
    if (folder.empty() || access(besideProgram.c_str(), F_OK) == 0)
        return besideProgram;
    // Relative to the program, not a fixed prefix, so that an install under any --prefix or
    // DESTDIR finds its own module and never another version's.
    const std::string installed = folder + "../lib/vst/" + kModule;
    if (access(installed.c_str(), F_OK) == 0)
        return installed;
    // Neither exists: name the build's place, which the error message then shows.
    return besideProgram;
}
