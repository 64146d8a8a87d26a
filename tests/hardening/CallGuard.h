// Watches a thread for what an audio callback must never do: allocate or free memory, take a
// lock, or enter the kernel.
//
// The executable that links this file replaces malloc, free, calloc, realloc, the aligned
// allocators, every operator new and delete, and the pthread lock calls; a module loaded with
// dlopen binds to these replacements, because the executable comes first in the global symbol
// scope. A guarded thread also runs under a seccomp filter that turns every system call into
// SIGSYS. While the thread is armed, each such call is counted; unarmed, they pass (memory and
// locks) or fail quietly (system calls), so a guarded thread must do its set-up before it installs
// the filter and report its findings only through memory.
#pragma once

#include <cstdint>
#include <functional>

namespace call_guard {

struct Counts {
    uint64_t allocations = 0; // malloc, calloc, realloc, aligned allocators
    uint64_t releases = 0;    // free
    uint64_t news = 0;        // every operator new
    uint64_t deletes = 0;     // every operator delete
    uint64_t locks = 0;       // pthread mutex, rwlock and spin locks
    uint64_t systemCalls = 0;
    long lastSystemCall = -1; // number of the most recent one, for the failure message

    uint64_t total() const
    {
        return allocations + releases + news + deletes + locks + systemCalls;
    }
};

// Arms or disarms the calling thread.
void arm();
void disarm();

// The findings of all armed stretches since the last reset, on any thread.
Counts counts();
void reset();

// Runs work on a new thread that is guarded by the seccomp filter as well; returns false if the
// kernel refused the filter (then work has not run). work must not make system calls while
// unarmed: they fail.
bool runOnGuardedThread(const std::function<void()>& work);

} // namespace call_guard
