// An output file that appears under its real name only when it is complete: it is written under
// a temporary name in the same folder (so the final rename cannot cross file systems) and
// removed again unless commit() is reached. No failure leaves a half-written file behind.
#pragma once

#include <memory>
#include <string>

class PendingFile {
public:
    // Creates the temporary file. On failure returns null and `error` names the problem.
    static std::unique_ptr<PendingFile> create(const std::string& finalPath, std::string& error);
    ~PendingFile();

    PendingFile(const PendingFile&) = delete;
    PendingFile& operator=(const PendingFile&) = delete;

    const std::string& temporaryPath() const { return temporary; }
    const std::string& finalPath() const { return target; }

    // Moves the finished file to its real name; on failure the temporary file is removed.
    bool commit(std::string& error);

private:
    PendingFile(std::string temporary, std::string target)
        : temporary(std::move(temporary)), target(std::move(target))
    {
    }

    std::string temporary;
    std::string target;
    bool settled = false;
};
