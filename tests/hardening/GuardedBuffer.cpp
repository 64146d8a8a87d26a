#include "tests/hardening/GuardedBuffer.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <cstring>

GuardedBuffer::GuardedBuffer(size_t capacity)
{
    const size_t page = static_cast<size_t>(sysconf(_SC_PAGESIZE));
    capacityBytes = (capacity + page - 1) / page * page;
    mappingSize = capacityBytes + 2 * page;
    void* mapped =
        mmap(nullptr, mappingSize, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED)
        std::abort();
    mapping = static_cast<uint8_t*>(mapped);
    first = mapping + page;
    if (mprotect(mapping, page, PROT_NONE) != 0 ||
        mprotect(first + capacityBytes, page, PROT_NONE) != 0)
        std::abort();
    std::memset(first, kCanary, capacityBytes);
    placed = first;
}

GuardedBuffer::~GuardedBuffer()
{
    munmap(mapping, mappingSize);
}

uint8_t* GuardedBuffer::place(size_t size, bool atEnd)
{
    if (size > capacityBytes)
        std::abort();
    // Only the bytes of the previous placement lost the canary (the rest was checked since).
    std::memset(placed, kCanary, placedSize);
    placed = atEnd ? first + capacityBytes - size : first;
    placedSize = size;
    return placed;
}

namespace {

// Whether every byte in [begin, end) is the canary, eight bytes at a time: the fuzzer checks
// tens of kilobytes after every call.
bool allCanary(const uint8_t* begin, const uint8_t* end, uint8_t canary)
{
    const uint64_t pattern = 0x0101010101010101ull * canary;
    uint64_t difference = 0;
    const uint8_t* p = begin;
    for (; p + sizeof(uint64_t) <= end; p += sizeof(uint64_t)) {
        uint64_t word;
        std::memcpy(&word, p, sizeof word);
        difference |= word ^ pattern;
    }
    for (; p < end; ++p)
        difference |= static_cast<uint8_t>(*p ^ canary);
    return difference == 0;
}

} // namespace

bool GuardedBuffer::outsideUntouched() const
{
    return allCanary(first, placed, kCanary) &&
           allCanary(placed + placedSize, first + capacityBytes, kCanary);
}
