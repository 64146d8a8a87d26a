#include "tools/render/Interrupts.h"

#include <limits.h>
#include <signal.h>
#include <unistd.h>

#include <cstring>

namespace {

constexpr int kSlots = 4;

// Written only with the signals held, read by the handler.
char temporaryPaths[kSlots][PATH_MAX];
volatile sig_atomic_t slotUsed[kSlots] = {};
volatile sig_atomic_t progressWidth = 0; // 0: no progress line shown

void writeAll(int descriptor, const char* text, size_t length)
{
    while (length > 0) {
        const ssize_t written = write(descriptor, text, length);
        if (written <= 0)
            return;
        text += written;
        length -= static_cast<size_t>(written);
    }
}

void cleanUp()
{
    for (int i = 0; i < kSlots; ++i)
        if (slotUsed[i])
            unlink(temporaryPaths[i]);
    if (progressWidth > 0) {
        char line[256];
        const int width = progressWidth < 250 ? progressWidth : 250;
        line[0] = '\r';
        std::memset(line + 1, ' ', static_cast<size_t>(width));
        line[width + 1] = '\r';
        writeAll(STDERR_FILENO, line, static_cast<size_t>(width) + 2);
    }
}

void onInterrupt(int signal)
{
    cleanUp();
    _exit(128 + signal);
}

// A crash (in the plug-in, say) removes the temporary files too, then crashes as it would have.
void onCrash(int signal)
{
    cleanUp();
    raise(signal); // the handler was reset to the default when this one was entered
}

constexpr int kInterrupts[] = {SIGINT, SIGTERM, SIGHUP};
constexpr int kCrashes[] = {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT};

sigset_t interruptSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (int signal : kInterrupts)
        sigaddset(&set, signal);
    return set;
}

} // namespace

void catchInterrupts()
{
    struct sigaction action {};
    action.sa_handler = onInterrupt;
    // While the handler runs, the other signal waits: the files are removed once, in one piece.
    action.sa_mask = interruptSignals();
    for (int signal : kInterrupts)
        sigaction(signal, &action, nullptr);
    struct sigaction crash {};
    crash.sa_handler = onCrash;
    crash.sa_flags = SA_RESETHAND | SA_NODEFER;
    sigemptyset(&crash.sa_mask);
    for (int signal : kCrashes)
        sigaction(signal, &crash, nullptr);
    // A file size limit (ulimit -f) then fails the write like a full disk does, and the
    // temporary file is removed on the way out, instead of the program being killed.
    signal(SIGXFSZ, SIG_IGN);
}

int registerTemporary(const std::string& path)
{
    if (path.size() >= PATH_MAX)
        return -1;
    for (int i = 0; i < kSlots; ++i) {
        if (!slotUsed[i]) {
            std::memcpy(temporaryPaths[i], path.c_str(), path.size() + 1);
            slotUsed[i] = 1;
            return i;
        }
    }
    return -1;
}

void forgetTemporary(int slot)
{
    if (slot >= 0 && slot < kSlots)
        slotUsed[slot] = 0;
}

void setProgressLineShown(bool shown, int width)
{
    progressWidth = shown ? width : 0;
}

HeldInterrupts::HeldInterrupts()
{
    const sigset_t set = interruptSignals();
    sigprocmask(SIG_BLOCK, &set, nullptr);
}

HeldInterrupts::~HeldInterrupts()
{
    const sigset_t set = interruptSignals();
    sigprocmask(SIG_UNBLOCK, &set, nullptr);
}

bool HeldInterrupts::interruptPending()
{
    sigset_t pending;
    sigemptyset(&pending);
    sigpending(&pending);
    for (int signal : kInterrupts)
        if (sigismember(&pending, signal))
            return true;
    return false;
}
