// Nothing may throw across the C boundary into the host: an exception there ends the host's
// process, and with it the user's unsaved session. Each entry from the host runs its work through
// guarded, which answers the interface's "no" (0, null, nothing done) instead.
#pragma once

template <typename Answer, typename Work>
Answer guarded(Answer fallback, Work&& work) noexcept
{
    try {
        return work();
    } catch (...) {
        return fallback;
    }
}

template <typename Work>
void guarded(Work&& work) noexcept
{
    try {
        work();
    } catch (...) {
    }
}
