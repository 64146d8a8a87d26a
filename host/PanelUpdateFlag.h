// The flag the panel raises around its own parameter writes so that the effect does not echo them
// back to the panel. It reads as raised only on the thread that raised it: automation arriving on
// another thread while the panel writes is still shown, not swallowed.
#pragma once

#include <atomic>
#include <thread>

class PanelUpdateFlag {
public:
    void store(bool raised, std::memory_order order = std::memory_order_relaxed)
    {
        owner.store(raised ? std::this_thread::get_id() : std::thread::id(), order);
    }
    bool load(std::memory_order order = std::memory_order_relaxed) const
    {
        return owner.load(order) == std::this_thread::get_id();
    }
    PanelUpdateFlag& operator=(bool raised)
    {
        store(raised);
        return *this;
    }
    operator bool() const { return load(); }

private:
    std::atomic<std::thread::id> owner{};
};
