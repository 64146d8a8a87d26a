#include "tools/render/PendingFile.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

namespace {

std::string folderOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    if (slash == std::string::npos)
        return ".";
    return slash == 0 ? "/" : path.substr(0, slash);
}

std::string baseNameOf(const std::string& path)
{
    const size_t slash = path.rfind('/');
    return slash == std::string::npos ? path : path.substr(slash + 1);
}

// mkstemp makes the file readable by its owner only; a finished output should get the
// permissions any newly created file gets.
void giveUsualPermissions(int descriptor)
{
    const mode_t mask = umask(0);
    umask(mask);
    fchmod(descriptor, 0666 & ~mask);
}

} // namespace

std::unique_ptr<PendingFile> PendingFile::create(const std::string& finalPath, std::string& error)
{
    const std::string folder = folderOf(finalPath);
    const std::string name = baseNameOf(finalPath);
    if (name.empty() || name == "." || name == "..") {
        error = "output '" + finalPath + "' names a folder, not a file";
        return nullptr;
    }
    struct stat status {};
    if (stat(finalPath.c_str(), &status) == 0 && S_ISDIR(status.st_mode)) {
        error = "output '" + finalPath + "' is a folder, not a file";
        return nullptr;
    }
    if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
        error = "cannot write '" + finalPath + "': folder '" + folder + "' does not exist";
        return nullptr;
    }

    // A hidden name, so a file browser or a second run does not pick up a half-written file.
    std::string pattern = folder + "/." + name + ".XXXXXX";
    std::vector<char> buffer(pattern.begin(), pattern.end());
    buffer.push_back(0);
    const int descriptor = mkstemp(buffer.data());
    if (descriptor < 0) {
        error = "cannot write '" + finalPath + "': " + std::strerror(errno);
        return nullptr;
    }
    giveUsualPermissions(descriptor);
    close(descriptor);
    return std::unique_ptr<PendingFile>(new PendingFile(buffer.data(), finalPath));
}

PendingFile::~PendingFile()
{
    if (!settled)
        std::remove(temporary.c_str());
}

bool PendingFile::commit(std::string& error)
{
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        error = "cannot write '" + target + "': " + std::strerror(errno);
        std::remove(temporary.c_str());
        settled = true; // removed already
        return false;
    }
    settled = true;
    return true;
}
