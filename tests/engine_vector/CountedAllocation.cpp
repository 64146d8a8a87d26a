#include "CountedAllocation.h"

#include <atomic>
#include <cstdlib>
#include <new>

namespace {

std::atomic<bool> counting{false};
std::atomic<long> allocations{0};

} // namespace

namespace counted_allocation {

void start()
{
    allocations = 0;
    counting = true;
}

long stop()
{
    counting = false;
    return allocations;
}

} // namespace counted_allocation

namespace {

void* allocate(std::size_t size)
{
    if (counting)
        ++allocations;
    return std::malloc(size ? size : 1);
}

} // namespace

// Every form a program may call, so that no allocation slips past the count and no memory
// allocated here is released by another allocator (which AddressSanitizer rightly reports).
void* operator new(std::size_t size)
{
    if (void* memory = allocate(size))
        return memory;
    throw std::bad_alloc();
}

void* operator new[](std::size_t size)
{
    return operator new(size);
}

void* operator new(std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void* operator new[](std::size_t size, const std::nothrow_t&) noexcept
{
    return allocate(size);
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, std::size_t) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}

void operator delete[](void* memory, const std::nothrow_t&) noexcept
{
    std::free(memory);
}
