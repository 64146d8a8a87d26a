// Ctrl-C, SIGTERM and SIGHUP: the handler removes the temporary files that are registered at that
// moment, clears the progress line if one is drawn, and exits with 128 + the signal's number
// (130, 143, 129). A crash (SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT) removes them too and then
// crashes as it would have. The handlers do only what is safe in a signal handler (unlink, write,
// _exit, raise) on paths built beforehand.
#pragma once

#include <string>

// Installs the handlers; SIGXFSZ is ignored, so that passing a file size
// limit is a write error like any other.
void catchInterrupts();

// Registers a temporary file for removal; returns its slot, or -1 when every slot is taken (the
// caller then refuses to create the file). Call with interrupts held (see HeldInterrupts), so
// that a file is never created unregistered.
int registerTemporary(const std::string& path);
void forgetTemporary(int slot);

// Whether a progress line is on the terminal; the handler clears it before exiting.
void setProgressLineShown(bool shown, int width);

// Holds the interrupts back while alive: a file is created and registered, or renamed and
// forgotten, as one step. interruptPending() says whether one arrived meanwhile; it is handled
// when the holder goes.
class HeldInterrupts {
public:
    HeldInterrupts();
    ~HeldInterrupts();
    HeldInterrupts(const HeldInterrupts&) = delete;
    HeldInterrupts& operator=(const HeldInterrupts&) = delete;

    static bool interruptPending();
};
