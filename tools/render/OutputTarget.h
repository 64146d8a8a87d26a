// Where an output goes, worked out from the name the user gave, so that no file is ever lost:
//  - a regular file, or a symlink to one (resolved: the link stays a link and its target is
//    written), or a new name: written under a hidden temporary name beside the real target and
//    renamed over it only when complete; a failure or an interrupt leaves the old file as it was
//    and removes the temporary file.
//  - anything else (`-` for standard output, a character device such as /dev/null, a FIFO):
//    staged in an unnamed temporary file, then copied into it; it is never replaced or unlinked.
// Either way the writer gets a fresh, empty regular file (libsndfile cannot write most formats
// to a pipe).
#pragma once

#include <sys/types.h>

#include <memory>
#include <optional>
#include <string>

struct FileIdentity {
    bool exists = false;
    dev_t device = 0;
    ino_t inode = 0;
    // Both exist and are one file.
    bool sameAs(const FileIdentity& other) const
    {
        return exists && other.exists && device == other.device && inode == other.inode;
    }
};

// The file a path names now (through links), if it exists; `-` names standard input or output
// as given by `standardDescriptor`.
FileIdentity identityOf(const std::string& path, int standardDescriptor);

class OutputTarget {
public:
    // `what` names the output in messages ("output", "plot"). Null, with `error` set, when the
    // target cannot be written.
    static std::unique_ptr<OutputTarget> open(const std::string& path, const std::string& what,
                                              std::string& error);
    ~OutputTarget();
    OutputTarget(const OutputTarget&) = delete;
    OutputTarget& operator=(const OutputTarget&) = delete;

    // The fresh, empty file to write (open for reading and writing).
    int descriptor() const { return file; }
    // Renames the finished file over the target, or copies it into the stream. On failure the
    // target is as it was and `error` says why.
    bool commit(std::string& error);

    // For messages: the absolute path written, or "standard output".
    std::string shownName() const;
    bool isStream() const { return stream; }

private:
    OutputTarget() = default;

    std::string named;     // as the user gave it
    std::string target;    // the file renamed over, or the stream opened at the end
    std::string temporary; // beside `target`; empty for a stream
    int file = -1;
    int into = -1;         // a stream named by its descriptor (/dev/stdout): written directly
    int slot = -1;         // of the temporary path registered for removal on an interrupt
    bool stream = false;
    bool committed = false;
};
