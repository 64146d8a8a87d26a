// Carries parameter changes from whatever thread changed them to the UI thread: a post stores the
// value and sets the parameter's bit; the UI thread takes all bits at once and reads the values.
// The latest value wins. Lock-free, so the audio thread may post too.
#pragma once

#include <atomic>
#include <cstdint>

#include "engine/Parameters.h"

class ParameterMailbox {
public:
    static constexpr int kSlots = kNumParameters;

    // Indices outside the slots are dropped: the panel has nothing to show for them.
    void post(int32_t index, float value)
    {
        if (static_cast<uint32_t>(index) >= kSlots)
            return;
        pending[index].store(value, std::memory_order_relaxed);
        dirty.fetch_or(1u << index, std::memory_order_release);
    }

    // Calls deliver(index, value) for every slot posted since the last take, in index order.
    template <typename Deliver>
    void take(Deliver&& deliver)
    {
        const uint32_t bits = dirty.exchange(0, std::memory_order_acquire);
        for (int index = 0; index < kSlots; ++index)
            if (bits & (1u << index))
                deliver(index, pending[index].load(std::memory_order_relaxed));
    }

    void clear() { dirty.store(0, std::memory_order_relaxed); }

private:
    std::atomic<float> pending[kSlots]{};
    std::atomic<uint32_t> dirty{0};
};
