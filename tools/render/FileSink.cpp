#include "tools/render/FileSink.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

bool allZero(const void* buffer, sf_count_t count)
{
    const auto* bytes = static_cast<const unsigned char*>(buffer);
    // Eight bytes at a time where aligned, then the rest.
    sf_count_t i = 0;
    for (; i < count && reinterpret_cast<uintptr_t>(bytes + i) % 8 != 0; ++i)
        if (bytes[i])
            return false;
    for (; i + 8 <= count; i += 8) {
        uint64_t word;
        std::memcpy(&word, bytes + i, 8);
        if (word)
            return false;
    }
    for (; i < count; ++i)
        if (bytes[i])
            return false;
    return true;
}

FileSink& self(void* user)
{
    return *static_cast<FileSink*>(user);
}

} // namespace

SF_VIRTUAL_IO& FileSink::callbacks()
{
    static SF_VIRTUAL_IO io = {
        [](void* user) { return self(user).length(); },
        [](sf_count_t offset, int whence, void* user) { return self(user).seek(offset, whence); },
        [](void* buffer, sf_count_t count, void* user) { return self(user).read(buffer, count); },
        [](const void* buffer, sf_count_t count, void* user) {
            return self(user).write(buffer, count);
        },
        [](void* user) { return self(user).position; },
    };
    return io;
}

sf_count_t FileSink::length() const
{
    return logicalEnd;
}

sf_count_t FileSink::seek(sf_count_t offset, int whence)
{
    sf_count_t base = 0;
    if (whence == SEEK_CUR)
        base = position;
    else if (whence == SEEK_END)
        base = logicalEnd;
    if (base + offset < 0)
        return -1;
    position = base + offset;
    return position;
}

sf_count_t FileSink::read(void* buffer, sf_count_t count)
{
    count = std::max<sf_count_t>(0, std::min(count, logicalEnd - position));
    auto* bytes = static_cast<char*>(buffer);
    sf_count_t done = 0;
    while (done < count) {
        const ssize_t got = pread(descriptor, bytes + done, static_cast<size_t>(count - done),
                                  static_cast<off_t>(position + done));
        if (got < 0 && errno == EINTR)
            continue;
        if (got <= 0)
            break;
        done += got;
    }
    // A hole not yet given its length reads as what it will be: zeros.
    std::memset(bytes + done, 0, static_cast<size_t>(count - done));
    position += count;
    return count;
}

sf_count_t FileSink::write(const void* buffer, sf_count_t count)
{
    if (count <= 0)
        return 0;
    if (position >= writtenEnd && allZero(buffer, count)) {
        position += count;
        logicalEnd = std::max(logicalEnd, position);
        return count;
    }
    const auto* bytes = static_cast<const char*>(buffer);
    sf_count_t done = 0;
    while (done < count) {
        const ssize_t put = pwrite(descriptor, bytes + done, static_cast<size_t>(count - done),
                                   static_cast<off_t>(position + done));
        if (put < 0 && errno == EINTR)
            continue;
        if (put <= 0) {
            if (errorText.empty())
                errorText = put < 0 ? std::strerror(errno) : "nothing written";
            break;
        }
        done += put;
    }
    position += done;
    writtenEnd = std::max(writtenEnd, position);
    logicalEnd = std::max(logicalEnd, position);
    return done;
}

bool FileSink::finish()
{
    if (errorText.empty() && logicalEnd > writtenEnd &&
        ftruncate(descriptor, static_cast<off_t>(logicalEnd)) != 0)
        errorText = std::strerror(errno);
    return errorText.empty();
}
