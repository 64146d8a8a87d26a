// What a host calls on its audio thread (processReplacing, setParameter, getParameter) must not
// allocate, free, lock or enter the kernel: each can block for an unbounded time and make the host
// drop out. This program replaces the C allocator (which operator new and delete call) and the
// pthread lock calls, and the module binds to the replacements, as the executable comes first in
// the global scope. A guarded thread also runs under a seccomp filter that turns every system call
// into SIGSYS. Only an armed thread's calls count; unarmed, memory and locks work and system calls
// fail quietly, so a guarded thread sets itself up before the filter and reports through memory.
#include <gtest/gtest.h>

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

#include <array>
#include <atomic>
#include <cerrno>
#include <cmath>
#include <functional>
#include <limits>
#include <mutex>
#include <thread>
#include <vector>

#include <lv2/core/lv2.h>

#include "tools/vsthost/VstPlugin.h"

namespace {

// Initial-exec TLS in the executable: reading it never allocates, unlike a lazily created slot.
__attribute__((tls_model("initial-exec"))) thread_local bool armed = false;
enum Counter { kMemory, kLocks, kSystemCalls, kLastSystemCall };
std::atomic<int> counters[4];

void count(Counter counter)
{
    if (armed)
        counters[counter].fetch_add(1, std::memory_order_relaxed);
}

std::array<int, 4> takeCounts() // since the last call, on any thread
{
    return {counters[0].exchange(0), counters[1].exchange(0), counters[2].exchange(0),
            counters[3].exchange(0)};
}

void onSigsys(int, siginfo_t* info, void* context)
{
    static_cast<ucontext_t*>(context)->uc_mcontext.gregs[REG_RAX] = -ENOSYS; // it did not run
    count(kSystemCalls);
    if (armed)
        counters[kLastSystemCall] = info->si_syscall;
}

// Runs work armed on a new thread on which every system call traps, except returning from the
// trap handler and ending the thread; false if the kernel refused the filter.
bool runGuarded(const std::function<void()>& work)
{
    static sock_filter program[] = {
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, arch)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, AUDIT_ARCH_X86_64, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_KILL_PROCESS),
        BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_rt_sigreturn, 2, 0),
        BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_exit, 1, 0),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_TRAP),
        BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    static const sock_fprog filter{static_cast<unsigned short>(std::size(program)), program};
    struct sigaction action = {};
    action.sa_sigaction = onSigsys;
    action.sa_flags = SA_SIGINFO;
    sigaction(SIGSYS, &action, nullptr);
    takeCounts();
    bool filtered = false;
    std::thread([&] {
        free(malloc(1)); // maps the thread's malloc arena while system calls still work
        filtered = prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) == 0 &&
                   syscall(SYS_seccomp, SECCOMP_SET_MODE_FILTER, 0, &filter) == 0;
        armed = filtered;
        if (filtered)
            work();
        armed = false;
    }).join();
    return filtered;
}

} // namespace

extern "C" {
void* __libc_malloc(size_t size);
void* __libc_calloc(size_t count, size_t size);
void* __libc_realloc(void* block, size_t size);
void* __libc_memalign(size_t alignment, size_t size);
void __libc_free(void* block);

void* malloc(size_t size) { count(kMemory); return __libc_malloc(size); }
void* calloc(size_t n, size_t size) { count(kMemory); return __libc_calloc(n, size); }
void* realloc(void* block, size_t size) { count(kMemory); return __libc_realloc(block, size); }
void free(void* block) { count(kMemory); __libc_free(block); }
void* memalign(size_t a, size_t size) { count(kMemory); return __libc_memalign(a, size); }
void* aligned_alloc(size_t alignment, size_t size) { return memalign(alignment, size); }
int posix_memalign(void** block, size_t alignment, size_t size)
{
    return (*block = memalign(alignment, size)) ? 0 : ENOMEM;
}

// The next definition is looked up without a static guard, whose first-use protocol could wait.
#define HVT_COUNTED_LOCK(name, type)                                                            \
    int name(type* lock)                                                                        \
    {                                                                                           \
        count(kLocks);                                                                          \
        static std::atomic<void*> next;                                                         \
        if (!next.load(std::memory_order_relaxed))                                              \
            next = dlsym(RTLD_NEXT, #name);                                                     \
        return reinterpret_cast<int (*)(type*)>(next.load())(lock);                             \
    }
HVT_COUNTED_LOCK(pthread_mutex_lock, pthread_mutex_t)
HVT_COUNTED_LOCK(pthread_mutex_trylock, pthread_mutex_t)
HVT_COUNTED_LOCK(pthread_rwlock_rdlock, pthread_rwlock_t)
HVT_COUNTED_LOCK(pthread_rwlock_wrlock, pthread_rwlock_t)
HVT_COUNTED_LOCK(pthread_spin_lock, pthread_spinlock_t)
} // extern "C"

// Without this, a guard that never fires would pass the test after it.
TEST(AudioPathGuard, seesTheModulesMemoryCallsAndALockAndASystemCall)
{
    const VstModule module(HVT_MODULE_PATH);
    ASSERT_TRUE(module.entry()) << module.error();
    takeCounts();
    armed = true;
    AEffect* effect = module.entry()(VstPlugin::defaultCallback);
    const int created = takeCounts()[kMemory];
    effect->dispatcher(effect, effClose, 0, 0, nullptr, 0.0f);
    armed = false;
    EXPECT_GE(created, 1) << "the module's operator new was not seen";
    EXPECT_GE(takeCounts()[kMemory], 1) << "the module's operator delete was not seen";

    std::mutex mutex;
    std::array<int, 4> locked{}, called{};
    ASSERT_TRUE(runGuarded([&] {
        mutex.lock();
        mutex.unlock();
        locked = takeCounts();
        syscall(SYS_getppid);
        called = takeCounts();
    })) << "the kernel refused the seccomp filter";
    EXPECT_EQ(locked[kLocks], 1);
    EXPECT_EQ(called[kSystemCalls], 1);
    EXPECT_EQ(called[kLastSystemCall], SYS_getppid);
}

TEST(AudioPathGuard, processingAndParameterChangesNeitherAllocateNorLockNorCallTheKernel)
{
    const VstModule module(HVT_MODULE_PATH);
    const auto plugin = VstPlugin::create(module);
    ASSERT_TRUE(plugin) << module.error();
    // Values a host may send, sensible and not: the audio path must treat all of them alike.
    constexpr float kValues[] = {0.0f, 0.25f, 1.0f, -1.0f, 7.0f, 8.0f, 9.0f, 10.0f, 1e30f, -1e30f,
                                 1e-45f, std::numeric_limits<float>::quiet_NaN(),
                                 std::numeric_limits<float>::infinity()};
    std::vector<float> inL(8192), inR(8192), outL(8192), outR(8192);
    for (size_t i = 0; i < inL.size(); ++i)
        inR[i] = -(inL[i] = std::sin(0.01f * static_cast<float>(i)));
    float* inputs[2] = {inL.data(), inR.data()};
    float* outputs[2] = {outL.data(), outR.data()};
    // The panel, when shown, receives every host change: that path must be as quiet.
    for (const bool editorOpen : {false, true}) {
        plugin->dispatch(editorOpen ? effEditOpen : effEditClose);
        std::array<int, 4> counts{};
        ASSERT_TRUE(runGuarded([&] {
            size_t next = 0;
            for (int program = 0; program < 10; ++program) {
                armed = false; // a program switch is a dispatcher call, not an audio-thread one
                plugin->dispatch(effSetProgram, 0, program);
                armed = true;
                for (const int frames : {1, 3, 31, 64, 100, 512, 1000, 4096, 8192}) {
                    for (int index = -1; index <= 6; ++index) {
                        plugin->setParameter(index, kValues[next++ % std::size(kValues)]);
                        plugin->getParameter(index);
                    }
                    // Sensible settings for the processing itself, so that both stages run.
                    for (int index = 0; index < 5; ++index)
                        plugin->setParameter(index, 0.3f + 0.1f * static_cast<float>(index));
                    plugin->setParameter(5, static_cast<float>(7 + program % 4));
                    plugin->processReplacing(inputs, outputs, frames);
                    plugin->processReplacing(outputs, outputs, frames);
                }
            }
            counts = takeCounts();
        })) << "the kernel refused the seccomp filter";
        // Memory calls, locks, system calls, and the number of the last system call if any.
        EXPECT_EQ(counts, (std::array{0, 0, 0, counts[kLastSystemCall]}))
            << "editor open: " << editorOpen;
        EXPECT_NE(outL, inL) << "the effect did not process anything";
    }
    plugin->dispatch(effEditClose);
}

// The LV2 plug-in's run and connect_port, both of the audio threading class, loaded as an LV2
// host loads it: the binary's descriptor, no lilv.
TEST(AudioPathGuard, theLv2PluginsRunNeitherAllocatesNorLocksNorCallsTheKernel)
{
    void* binary = dlopen(HVT_LV2_DSP_PATH, RTLD_NOW | RTLD_LOCAL);
    ASSERT_TRUE(binary) << dlerror();
    const auto entry = reinterpret_cast<const LV2_Descriptor* (*)(uint32_t)>(
        dlsym(binary, "lv2_descriptor"));
    ASSERT_TRUE(entry);
    const LV2_Descriptor* descriptor = entry(0);
    LV2_Handle plugin = descriptor->instantiate(descriptor, 48000.0, "", nullptr);
    ASSERT_TRUE(plugin);
    descriptor->activate(plugin);
    constexpr float kValues[] = {0.0f, 0.25f, 1.0f, -1.0f, 7.0f, 8.0f, 9.0f, 10.0f, 1e30f,
                                 std::numeric_limits<float>::quiet_NaN(),
                                 -std::numeric_limits<float>::infinity()};
    std::vector<float> inL(8192), inR(8192), outL(8192), outR(8192);
    for (size_t i = 0; i < inL.size(); ++i)
        inR[i] = -(inL[i] = std::sin(0.01f * static_cast<float>(i)));
    float controls[7] = {};
    std::array<int, 4> counts{};
    ASSERT_TRUE(runGuarded([&] {
        size_t next = 0;
        for (const int frames : {1, 3, 31, 64, 100, 512, 1000, 4096, 8192}) {
            for (uint32_t port = 0; port < 11; ++port)
                descriptor->connect_port(plugin, port, port < 4 ? nullptr : &controls[port - 4]);
            for (float& control : controls)
                control = kValues[next++ % std::size(kValues)];
            descriptor->run(plugin, static_cast<uint32_t>(frames));
            for (int parameter = 0; parameter < 5; ++parameter)
                controls[parameter] = 0.3f + 0.1f * static_cast<float>(parameter);
            controls[5] = static_cast<float>(frames % 11);
            float* buffers[2][4] = {{inL.data(), inR.data(), outL.data(), outR.data()},
                                    {outL.data(), outR.data(), outL.data(), outR.data()}};
            for (float* const(&ports)[4] : buffers) {
                for (uint32_t port = 0; port < 4; ++port)
                    descriptor->connect_port(plugin, port, ports[port]);
                descriptor->run(plugin, static_cast<uint32_t>(frames));
            }
        }
        counts = takeCounts();
    })) << "the kernel refused the seccomp filter";
    EXPECT_EQ(counts, (std::array{0, 0, 0, counts[kLastSystemCall]}));
    EXPECT_NE(outL, inL) << "the plug-in did not process anything";
    descriptor->cleanup(plugin);
    dlclose(binary);
}
