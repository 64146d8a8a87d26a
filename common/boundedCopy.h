// Bounded text into caller-supplied buffers: at most maxLen characters, zero-filled after a
// shorter text, and a terminator at position maxLen, so the buffer holds maxLen + 1 bytes.
#pragma once

#include <cstring>

inline void copyBounded(char* destination, const char* source, size_t maxLen)
{
    std::strncpy(destination, source, maxLen);
    destination[maxLen] = 0;
}

// Appends as much of source as still fits within maxLen characters.
inline void appendBounded(char* destination, const char* source, size_t maxLen)
{
    const size_t used = strnlen(destination, maxLen);
    std::strncat(destination, source, maxLen - used);
    destination[maxLen] = 0;
}
