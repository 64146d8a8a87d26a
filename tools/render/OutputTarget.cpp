#include "tools/render/OutputTarget.h"

#include <fcntl.h>
#include <limits.h>
#include <sys/sendfile.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "tools/render/Interrupts.h"

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

std::string quoted(const std::string& text)
{
    return "'" + text + "'";
}

std::string absolute(const std::string& path)
{
    if (!path.empty() && path[0] == '/')
        return path;
    char here[PATH_MAX];
    if (!getcwd(here, sizeof here))
        return path;
    return std::string(here) + "/" + path;
}

// Follows a chain of symlinks whose last one points nowhere yet; returns the path to create.
bool followDanglingLinks(std::string& path, std::string& error)
{
    for (int hops = 0; hops < 40; ++hops) {
        struct stat status {};
        if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode))
            return true;
        std::vector<char> buffer(PATH_MAX + 1);
        const ssize_t length = readlink(path.c_str(), buffer.data(), PATH_MAX);
        if (length < 0) {
            error = std::strerror(errno);
            return false;
        }
        const std::string next(buffer.data(), static_cast<size_t>(length));
        path = next[0] == '/' ? next : folderOf(path) + "/" + next;
    }
    error = std::strerror(ELOOP);
    return false;
}

// A temporary file that is never visible under any name: it goes when it is closed.
int unnamedTemporaryFile(std::string& error)
{
    const char* folder = std::getenv("TMPDIR");
    std::string pattern = std::string(folder && *folder ? folder : "/tmp") + "/hvtremolo-XXXXXX";
    const HeldInterrupts held;
    const int descriptor = mkstemp(pattern.data());
    if (descriptor < 0) {
        error = "cannot make a temporary file in " + folderOf(pattern) + ": " +
                std::strerror(errno);
        return -1;
    }
    unlink(pattern.c_str());
    return descriptor;
}

bool copyAll(int from, int to, std::string& error)
{
    if (lseek(from, 0, SEEK_SET) != 0) {
        error = std::strerror(errno);
        return false;
    }
    for (;;) {
        const ssize_t sent = sendfile(to, from, nullptr, 1 << 20);
        if (sent == 0)
            return true;
        if (sent > 0)
            continue;
        if (errno == EINTR)
            continue;
        if (errno != EINVAL && errno != ENOSYS) {
            error = std::strerror(errno);
            return false;
        }
        break; // this pair of files cannot use sendfile: copy through a buffer
    }
    std::vector<char> buffer(1 << 16);
    for (;;) {
        const ssize_t got = read(from, buffer.data(), buffer.size());
        if (got == 0)
            return true;
        if (got < 0) {
            if (errno == EINTR)
                continue;
            error = std::strerror(errno);
            return false;
        }
        for (ssize_t done = 0; done < got;) {
            const ssize_t put = write(to, buffer.data() + done, static_cast<size_t>(got - done));
            if (put < 0 && errno == EINTR)
                continue;
            if (put <= 0) {
                error = std::strerror(errno);
                return false;
            }
            done += put;
        }
    }
}

// The descriptor a name such as /dev/stdout or /dev/fd/3 stands for, or -1. Written into
// directly: reopening it fails where it is a socket.
int descriptorNamed(const std::string& path)
{
    if (path == "/dev/stdout")
        return STDOUT_FILENO;
    if (path == "/dev/stderr")
        return STDERR_FILENO;
    for (const std::string prefix : {"/dev/fd/", "/proc/self/fd/"}) {
        if (path.rfind(prefix, 0) != 0 || path.size() == prefix.size())
            continue;
        const std::string number = path.substr(prefix.size());
        if (number.find_first_not_of("0123456789") != std::string::npos || number.size() > 6)
            return -1;
        return std::atoi(number.c_str());
    }
    return -1;
}

} // namespace

FileIdentity identityOf(const std::string& path, int standardDescriptor)
{
    struct stat status {};
    const int result = path == "-" ? fstat(standardDescriptor, &status)
                                   : stat(path.c_str(), &status);
    if (result != 0)
        return {};
    return {true, status.st_dev, status.st_ino};
}

std::unique_ptr<OutputTarget> OutputTarget::open(const std::string& path, const std::string& what,
                                                 std::string& error)
{
    std::unique_ptr<OutputTarget> output(new OutputTarget);
    output->named = path;
    if (path == "-") {
        output->stream = true;
        output->file = unnamedTemporaryFile(error);
        return output->file < 0 ? nullptr : std::move(output);
    }

    const std::string name = baseNameOf(path);
    if (name.empty() || name == "." || name == "..") {
        error = what + " " + quoted(path) + " names a folder, not a file";
        return nullptr;
    }
    struct stat status {};
    std::string real;
    mode_t mode = 0;
    bool exists = false;
    if (stat(path.c_str(), &status) == 0) {
        if (S_ISDIR(status.st_mode)) {
            error = what + " " + quoted(path) + " is a folder, not a file";
            return nullptr;
        }
        if (!S_ISREG(status.st_mode)) {
            // A device, a FIFO or a socket: written into, never replaced.
            if (access(path.c_str(), W_OK) != 0) {
                error = "cannot write " + quoted(path) + ": " + std::strerror(errno);
                return nullptr;
            }
            output->stream = true;
            output->target = path;
            output->into = descriptorNamed(path);
            output->file = unnamedTemporaryFile(error);
            return output->file < 0 ? nullptr : std::move(output);
        }
        char* resolved = realpath(path.c_str(), nullptr);
        if (!resolved) {
            error = "cannot write " + quoted(path) + ": " + std::strerror(errno);
            return nullptr;
        }
        real = resolved;
        std::free(resolved);
        mode = status.st_mode;
        exists = true;
    } else if (errno == ENOENT) {
        real = path;
        std::string problem;
        if (!followDanglingLinks(real, problem)) {
            error = "cannot write " + quoted(path) + ": " + problem;
            return nullptr;
        }
        const std::string folder = folderOf(real);
        if (stat(folder.c_str(), &status) != 0 || !S_ISDIR(status.st_mode)) {
            error = "cannot write " + quoted(path) + ": folder " + quoted(folderOf(path)) +
                    " does not exist";
            if (real != path)
                error += " (the link leads to " + quoted(real) + ")";
            return nullptr;
        }
    } else {
        error = "cannot write " + quoted(path) + ": " + std::strerror(errno);
        return nullptr;
    }

    if (exists && access(real.c_str(), W_OK) != 0) {
        // Renaming over a file needs only the folder's permission; the file's own says no.
        error = "cannot write " + quoted(path) + ": " + std::strerror(errno);
        return nullptr;
    }
    output->target = real;
    // A hidden name, so a file browser or a second run does not pick up a half-written file.
    std::string pattern = folderOf(real) + "/." + baseNameOf(real) + ".XXXXXX";
    {
        const HeldInterrupts held;
        const int descriptor = mkostemp(pattern.data(), O_CLOEXEC);
        if (descriptor < 0) {
            error = "cannot write " + quoted(path) + ": " + std::strerror(errno);
            return nullptr;
        }
        output->slot = registerTemporary(pattern);
        output->temporary = pattern;
        output->file = descriptor;
        if (output->slot < 0) {
            error = "cannot write " + quoted(path) + ": too many temporary files";
            return nullptr; // the destructor removes it
        }
    }
    // mkstemp makes the file readable by its owner only. A replaced file keeps its permissions
    // (and, for root, its owner); a new one gets those any new file gets.
    if (exists) {
        fchmod(output->file, mode & 07777);
        if (geteuid() == 0)
            (void)!fchown(output->file, status.st_uid, status.st_gid);
    } else {
        const mode_t mask = umask(0);
        umask(mask);
        fchmod(output->file, 0666 & ~mask);
    }
    return output;
}

OutputTarget::~OutputTarget()
{
    if (!temporary.empty() && !committed) {
        const HeldInterrupts held;
        unlink(temporary.c_str());
        forgetTemporary(slot);
    }
    if (file >= 0)
        close(file);
}

bool OutputTarget::commit(std::string& error)
{
    if (stream) {
        // Standard output, a descriptor named as a file (/dev/stdout), or a device or FIFO
        // opened now, with no O_CREAT and no O_TRUNC: written into as it is.
        const bool opened = !target.empty() && into < 0;
        const int destination =
            opened ? ::open(target.c_str(), O_WRONLY | O_NOCTTY | O_CLOEXEC)
                   : into >= 0 ? into : STDOUT_FILENO;
        if (destination < 0) {
            error = "cannot write " + quoted(named) + ": " + std::strerror(errno);
            return false;
        }
        std::string problem;
        const bool copied = copyAll(file, destination, problem);
        if (opened && close(destination) != 0 && copied)
            problem = std::strerror(errno);
        if (!copied || !problem.empty()) {
            error = "cannot write " + (target.empty() ? std::string("standard output")
                                                      : quoted(named)) + ": " + problem;
            return false;
        }
        committed = true;
        return true;
    }

    if (fsync(file) != 0) {
        error = "cannot write " + quoted(named) + ": " + std::strerror(errno);
        return false;
    }
    const HeldInterrupts held;
    if (HeldInterrupts::interruptPending())
        return false; // the destructor removes the file; the interrupt ends the program
    if (std::rename(temporary.c_str(), target.c_str()) != 0) {
        error = "cannot write " + quoted(named) + ": " + std::strerror(errno);
        return false;
    }
    forgetTemporary(slot);
    committed = true;
    return true;
}

std::string OutputTarget::shownName() const
{
    if (stream)
        return target.empty() ? "standard output" : named;
    struct stat status {};
    if (lstat(named.c_str(), &status) == 0 && S_ISLNK(status.st_mode))
        return absolute(named) + " -> " + target;
    return absolute(named);
}
