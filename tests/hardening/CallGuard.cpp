#include "tests/hardening/CallGuard.h"

#include <dlfcn.h>
#include <linux/audit.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <pthread.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/syscall.h>
#include <ucontext.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <cstddef>
#include <new>
#include <thread>

// glibc's own allocator entry points: the replacements below count and then forward to them.
extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);
}

namespace call_guard {
namespace {

// Initial-exec TLS in the executable: reading it never allocates, unlike a lazily created slot.
__attribute__((tls_model("initial-exec"))) thread_local bool armed = false;

std::atomic<uint64_t> allocations{0};
std::atomic<uint64_t> releases{0};
std::atomic<uint64_t> news{0};
std::atomic<uint64_t> deletes{0};
std::atomic<uint64_t> locks{0};
std::atomic<uint64_t> systemCalls{0};
std::atomic<long> lastSystemCall{-1};

void count(std::atomic<uint64_t>& counter)
{
    if (armed)
        counter.fetch_add(1, std::memory_order_relaxed);
}

void onSigsys(int, siginfo_t* info, void* context)
{
    // The call did not run; it returns -ENOSYS. Only an armed thread's calls are findings.
    auto* registers = static_cast<ucontext_t*>(context);
    registers->uc_mcontext.gregs[REG_RAX] = -ENOSYS;
    if (armed) {
        systemCalls.fetch_add(1, std::memory_order_relaxed);
        lastSystemCall.store(info->si_syscall, std::memory_order_relaxed);
    }
}

// Every system call traps, except returning from the trap handler and ending the thread.
bool installFilter()
{
    static sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_rt_sigreturn, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_exit, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW),
    };
    sock_fprog filter{static_cast<unsigned short>(sizeof program / sizeof program[0]), program};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0)
        return false;
    return syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
}

// The next definition of a replaced lock call, looked up on first use without a static guard
// (whose first-use protocol could itself wait). A race only repeats an identical lookup.
template <typename Function>
Function realFunction(std::atomic<Function>& slot, const char* name)
{
    Function function = slot.load(std::memory_order_relaxed);
    if (!function) {
        function = reinterpret_cast<Function>(dlsym(RTLD_NEXT, name));
        slot.store(function, std::memory_order_relaxed);
    }
    return function;
}

} // namespace

void arm()
{
    armed = true;
}

void reset()
{
    allocations = 0;
    releases = 0;
    news = 0;
    deletes = 0;
    locks = 0;
    systemCalls = 0;
    lastSystemCall = -1;
}

void disarm()
{
    armed = false;
}

Counts counts()
{
    Counts result;
    result.allocations = allocations;
    result.releases = releases;
    result.news = news;
    result.deletes = deletes;
    result.locks = locks;
    result.systemCalls = systemCalls;
    result.lastSystemCall = lastSystemCall;
    return result;
}

bool runOnGuardedThread(const std::function<void()>& work)
{
    struct sigaction action = {};
    action.sa_sigaction = onSigsys;
    action.sa_flags = SA_SIGINFO;
    sigemptyset(&action.sa_mask);
    sigaction(SIGSYS, &action, nullptr);

    bool filtered = false;
    std::thread thread([&] {
        // A thread's first allocation maps its malloc arena; do it while system calls still work.
        free(malloc(1));
        filtered = installFilter();
        if (filtered)
            work();
    });
    thread.join();
    return filtered;
}

} // namespace call_guard

using call_guard::count;

// --- The replacements. Each counts when armed and forwards to glibc. ---

extern "C" {

void* malloc(size_t size)
{
    count(call_guard::allocations);
    return __libc_malloc(size);
}

void* calloc(size_t number, size_t size)
{
    count(call_guard::allocations);
    return __libc_calloc(number, size);
}

void* realloc(void* block, size_t size)
{
    count(call_guard::allocations);
    return __libc_realloc(block, size);
}

void free(void* block)
{
    count(call_guard::releases);
    __libc_free(block);
}

void* memalign(size_t alignment, size_t size)
{
    count(call_guard::allocations);
    return __libc_memalign(alignment, size);
}

void* aligned_alloc(size_t alignment, size_t size)
{
    count(call_guard::allocations);
    return __libc_memalign(alignment, size);
}

int posix_memalign(void** block, size_t alignment, size_t size)
{
    count(call_guard::allocations);
    void* result = __libc_memalign(alignment, size);
    if (!result)
        return ENOMEM;
    *block = result;
    return 0;
}

int pthread_mutex_lock(pthread_mutex_t* mutex)
{
    count(call_guard::locks);
    static std::atomic<int (*)(pthread_mutex_t*)> real{nullptr};
    return call_guard::realFunction(real, "pthread_mutex_lock")(mutex);
}

int pthread_mutex_trylock(pthread_mutex_t* mutex)
{
    count(call_guard::locks);
    static std::atomic<int (*)(pthread_mutex_t*)> real{nullptr};
    return call_guard::realFunction(real, "pthread_mutex_trylock")(mutex);
}

int pthread_rwlock_rdlock(pthread_rwlock_t* lock)
{
    count(call_guard::locks);
    static std::atomic<int (*)(pthread_rwlock_t*)> real{nullptr};
    return call_guard::realFunction(real, "pthread_rwlock_rdlock")(lock);
}

int pthread_rwlock_wrlock(pthread_rwlock_t* lock)
{
    count(call_guard::locks);
    static std::atomic<int (*)(pthread_rwlock_t*)> real{nullptr};
    return call_guard::realFunction(real, "pthread_rwlock_wrlock")(lock);
}

int pthread_spin_lock(pthread_spinlock_t* lock)
{
    count(call_guard::locks);
    static std::atomic<int (*)(pthread_spinlock_t*)> real{nullptr};
    return call_guard::realFunction(real, "pthread_spin_lock")(lock);
}

} // extern "C"

namespace {

void* countedNew(size_t size, size_t alignment = 0)
{
    count(call_guard::news);
    // operator new(0) must still return a unique pointer.
    if (size == 0)
        size = 1;
    return alignment ? __libc_memalign(alignment, size) : __libc_malloc(size);
}

void* throwingNew(size_t size, size_t alignment = 0)
{
    void* block = countedNew(size, alignment);
    if (!block)
        throw std::bad_alloc();
    return block;
}

void countedDelete(void* block)
{
    count(call_guard::deletes);
    __libc_free(block);
}

} // namespace

void* operator new(size_t size) { return throwingNew(size); }
void* operator new[](size_t size) { return throwingNew(size); }
void* operator new(size_t size, const std::nothrow_t&) noexcept { return countedNew(size); }
void* operator new[](size_t size, const std::nothrow_t&) noexcept { return countedNew(size); }
void* operator new(size_t size, std::align_val_t alignment)
{
    return throwingNew(size, static_cast<size_t>(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment)
{
    return throwingNew(size, static_cast<size_t>(alignment));
}
void* operator new(size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return countedNew(size, static_cast<size_t>(alignment));
}
void* operator new[](size_t size, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return countedNew(size, static_cast<size_t>(alignment));
}

void operator delete(void* block) noexcept { countedDelete(block); }
void operator delete[](void* block) noexcept { countedDelete(block); }
void operator delete(void* block, size_t) noexcept { countedDelete(block); }
void operator delete[](void* block, size_t) noexcept { countedDelete(block); }
void operator delete(void* block, const std::nothrow_t&) noexcept { countedDelete(block); }
void operator delete[](void* block, const std::nothrow_t&) noexcept { countedDelete(block); }
void operator delete(void* block, std::align_val_t) noexcept { countedDelete(block); }
void operator delete[](void* block, std::align_val_t) noexcept { countedDelete(block); }
void operator delete(void* block, size_t, std::align_val_t) noexcept { countedDelete(block); }
void operator delete[](void* block, size_t, std::align_val_t) noexcept { countedDelete(block); }
void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept
{
    countedDelete(block);
}
void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept
{
    countedDelete(block);
}
