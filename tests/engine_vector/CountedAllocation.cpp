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

void* operator new(std::size_t size)
{
    if (counting)
        ++allocations;
    if (void* memory = std::malloc(size ? size : 1))
        return memory;
    throw std::bad_alloc();
}

void operator delete(void* memory) noexcept
{
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept
{
    std::free(memory);
}
