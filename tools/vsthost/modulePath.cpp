#include "tools/vsthost/modulePath.h"

#include <climits>
#include <unistd.h>

std::string defaultModulePath()
{
    char program[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", program, sizeof program - 1);
    if (length <= 0)
        return "HvTremolo.so";
    const std::string path(program, static_cast<size_t>(length));
    const size_t slash = path.rfind('/');
    return (slash == std::string::npos ? std::string() : path.substr(0, slash + 1)) + "HvTremolo.so";
}
