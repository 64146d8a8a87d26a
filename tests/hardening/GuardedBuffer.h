// A buffer with an inaccessible page on each side, for handing to the module where a host hands
// it memory. Each placement puts the buffer flush against one of the two guard pages, so that a
// read or write one byte past that end faults at once, and fills the rest of the pages with a
// canary, so that a stray write that lands on the far side is found afterwards.
#pragma once

#include <cstddef>
#include <cstdint>

class GuardedBuffer {
public:
    explicit GuardedBuffer(size_t capacity);
    ~GuardedBuffer();

    GuardedBuffer(const GuardedBuffer&) = delete;
    GuardedBuffer& operator=(const GuardedBuffer&) = delete;

    // Lays out size bytes (at most the capacity) against the trailing guard page when atEnd,
    // else against the leading one, and returns them; their content is undefined. Call
    // outsideUntouched() after every use: the next placement trusts that it held.
    uint8_t* place(size_t size, bool atEnd);

    // True when nothing outside the placed bytes has changed since place().
    bool outsideUntouched() const;

    uint8_t* data() const { return placed; }
    size_t size() const { return placedSize; }

private:
    static constexpr uint8_t kCanary = 0xA5;

    uint8_t* mapping = nullptr;
    size_t mappingSize = 0;
    uint8_t* first = nullptr; // start of the accessible pages
    size_t capacityBytes = 0; // their size
    uint8_t* placed = nullptr;
    size_t placedSize = 0;
};
