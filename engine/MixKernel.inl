// The block loop, written once over lane types and compiled once per instruction set: the file
// that includes it chooses the target and the lane type (MixLanes*.h). Everything here has
// internal linkage, so no instance compiled for a wider set can stand in for the baseline one at
// link time.
//
// A lane type offers: F and U (vectors of floats and of 32-bit unsigned integers), width, load,
// store, splat, add, sub, mul, min and max with the x86 rules (min(a, b) = a < b ? a : b,
// max(a, b) = a > b ? a : b), and lookup, which reads the table entries of `width` consecutive
// frames, their indices from a source's next(); and `windowed`, whether it also has a lookup from
// WindowReads.
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstring>

#include "engine/MixKernel.h"

namespace {

// Hands out a stretch's table indices frame by frame, one addition and one shift each. The
// mantissa is kept shifted so that the index is its upper half: every walker then shifts by the
// same constant, and the frame loop needs no register for either oscillator's shift.
struct IndexWalker {
    static constexpr uint32_t kIndexBits = 32;

    uint64_t step;     // the run's step, shifted as the position is
    uint64_t position; // the mantissa << (kIndexBits - the run's shift)

    // Shifts of at most 23 leave a 24-bit mantissa well inside the 64 bits.
    static IndexWalker from(const IndexSteps& steps)
    {
        const uint64_t up = kIndexBits - steps.shift;
        return {static_cast<uint64_t>(steps.step) << up,
                static_cast<uint64_t>(steps.mantissa) << up};
    }

    uint64_t next()
    {
        const uint64_t index = position >> kIndexBits;
        position += step;
        // One chain of additions: left alone, the compiler splits it into several with their
        // own strides, runs out of registers and spills inside the frame loop.
        asm("" : "+r"(position));
        return index;
    }
};

// Writes the indices (mantissa + j * step) >> shift of a stretch's frames j in [0, count), whole
// vectors of L::width at a time, in the vector instructions of the kernel including this.
template <class L>
void progression(uint32_t* out, int32_t count, const IndexSteps& steps)
{
    using Indices = typename L::U;
    Indices value;
    for (int32_t lane = 0; lane < L::width; ++lane)
        value[lane] = steps.mantissa + static_cast<uint32_t>(lane) * steps.step;
    const uint32_t stride = L::width * steps.step;
    for (int32_t j = 0; j < count; j += L::width) {
        const Indices indices = value >> steps.shift;
        std::memcpy(out + j, &indices, sizeof indices);
        value += stride;
    }
}

// One running oscillator's stretches through a block: it plans them and hands out where each
// stands, to a walker for long ones or as a list of indices where stretches end soon.
class TableReader {
public:
    TableReader(KernelOscillator& oscillator, int32_t blockFrames)
        : oscillator(oscillator), phase(oscillator.phase), index(oscillator.index),
          unplanned(blockFrames)
    {
        const int32_t resumed = runFrames(oscillator, blockFrames);
        if (resumed > 0) {
            // The block starts where the last one left its run.
            stretch.frames = resumed;
            stretch.indices = oscillator.runIndices;
            stretch.phaseBits = oscillator.runPhaseBits;
            stretch.bitStep = oscillator.runBitStep;
            stretch.run = true;
            stretch.limitBits = oscillator.runLimitBits;
            begin();
        }
    }

    // Frames left in the current stretch, planning the next one when it is used up.
    int32_t ready()
    {
        if (left == 0)
            plan();
        return left;
    }

    // Where the current stretch stands; the caller reads `frames` of its frames itself.
    IndexSteps take(int32_t frames)
    {
        const IndexSteps now = current;
        current.mantissa += static_cast<uint32_t>(frames) * current.step;
        left -= frames;
        return now;
    }

    // Lists the indices of the next `count` frames in indices[0, count); L writes whole vectors,
    // so the list has room for L::width - 1 more.
    template <class L>
    void list(uint32_t* indices, int32_t count)
    {
        for (int32_t listed = 0; listed < count;) {
            if (left == 0)
                plan();
            const int32_t frames = std::min(left, count - listed);
            progression<L>(indices + listed, frames, take(frames));
            listed += frames;
        }
    }

    // Leaves the oscillator where the block ends, with the run it is in.
    void finish()
    {
        const float now = stretch.phaseAfter(stretch.frames - left);
        oscillator.phase = now;
        oscillator.index = static_cast<uint32_t>(now);
        oscillator.inRun = stretch.run;
        oscillator.runPhaseBits = std::bit_cast<uint32_t>(now);
        oscillator.runIncrementBits = std::bit_cast<uint32_t>(oscillator.increment);
        oscillator.runIndices = current;
        oscillator.runBitStep = stretch.bitStep;
        oscillator.runLimitBits = stretch.limitBits;
    }

private:
    // Stretches never reach past the block, so each one is read to its end.
    void plan()
    {
        stretch = planStretch(phase, index, oscillator.increment, oscillator.length, unplanned);
        begin();
    }

    void begin()
    {
        unplanned -= stretch.frames;
        left = stretch.frames;
        current = stretch.indices;
        phase = stretch.phaseAfter(stretch.frames);
        index = static_cast<uint32_t>(phase);
    }

    KernelOscillator& oscillator;
    Stretch stretch;
    IndexSteps current; // the next frame's index and the step to the one after
    int32_t left = 0;   // frames of the current stretch not yet handed out
    float phase;        // after the current stretch
    uint32_t index;     // read by the frame after the current stretch
    int32_t unplanned;
};

// Table reads inside one stretch, from a walker the frame loop keeps in registers.
struct StretchReads {
    const float* table;
    IndexWalker walker;

    static StretchReads start(const float* table, const IndexSteps& steps)
    {
        return {table, IndexWalker::from(steps)};
    }

    template <class L>
    typename L::F read()
    {
        return L::lookup(table, walker);
    }
};

// Table reads inside one stretch whose frames step through the table slowly, for lane types that
// can read a vector's entries out of a window of 2 * L::width consecutive ones (L::windowed): the
// indices of a vector's frames are computed together, and the window starts at the first.
template <class L>
struct WindowReads {
    using U = typename L::U;

    const float* table;
    U mantissas; // lane j: the mantissa of the j-th frame from here
    U stride;    // L::width steps in every lane
    uint32_t step;
    uint32_t shift;

    static WindowReads start(const float* table, const IndexSteps& steps)
    {
        WindowReads reads{table, U{}, U{} + L::width * steps.step, steps.step, steps.shift};
        for (int32_t lane = 0; lane < L::width; ++lane)
            reads.mantissas[lane] = steps.mantissa + static_cast<uint32_t>(lane) * steps.step;
        return reads;
    }

    // Whether a stretch's vectors fit their windows. Frame j reads (m + j * step) >> shift, which
    // lies at most ((j * step) >> shift) + 1 entries past frame 0's, so the last lane's entry is
    // inside 2 * L::width of the first one's when this holds.
    static bool fits(const IndexSteps& steps)
    {
        return (static_cast<uint64_t>(L::width - 1) * steps.step >> steps.shift) + 1 <
               2 * static_cast<uint64_t>(L::width);
    }

    // The indices of the next L::width frames.
    U indices()
    {
        const U indices = mantissas >> shift;
        mantissas += stride;
        return indices;
    }

    // The next frame's index, for the frames after the last full vector.
    uint32_t next()
    {
        const uint32_t index = mantissas[0] >> shift;
        mantissas += step;
        return index;
    }

    template <class Lanes>
    typename Lanes::F read()
    {
        return Lanes::lookup(table, *this);
    }
};

// Table reads from indices listed beforehand.
struct ListedReads {
    const float* table;
    const uint32_t* indices;

    uint32_t next() { return *indices++; }

    template <class L>
    typename L::F read()
    {
        return L::lookup(table, *this);
    }
};

// One frame at a time, for the frames after the last full vector.
struct ScalarLanes {
    using F = float;
    static constexpr int32_t width = 1;
    static F load(const float* p) { return *p; }
    static void store(float* p, F v) { *p = v; }
    static F splat(float v) { return v; }
    static F add(F a, F b) { return a + b; }
    static F sub(F a, F b) { return a - b; }
    static F mul(F a, F b) { return a * b; }
    static F min(F a, F b) { return a < b ? a : b; }
    static F max(F a, F b) { return a > b ? a : b; }
    template <class Indices>
    static F lookup(const float* table, Indices& indices)
    {
        return table[indices.next()];
    }
};

// Frames [from, to), (to - from) a multiple of L::width.
template <class L, bool Tremolo, bool Panner, class TremoloReads, class PannerReads>
[[gnu::always_inline]] inline void mixFramesHere(const MixJob& job, int32_t from, int32_t to,
                                                 TremoloReads& tremolo, PannerReads& panner)
{
    using F = typename L::F;
    // Locals, so that the stores (which may alias anything) do not make the loop reload them. They
    // point at frame `to`, and the loop counts up to zero: no register holds the end.
    const float* const inL = job.inL + to;
    const float* const inR = job.inR + to;
    float* const outL = job.outL + to;
    float* const outR = job.outR + to;
    const F zero = L::splat(0.0f);
    const F one = L::splat(1.0f);
    const F m = L::splat(job.mix);
    const F dry = L::splat(1.0f - job.mix);
    const F floor = L::splat(job.tremoloFloor);
    const F depth = L::splat(job.pannerDepth);
    for (intptr_t i = from - to; i < 0; i += L::width) {
        F left = L::load(inL + i);
        F right = L::load(inR + i);
        if constexpr (Tremolo) {
            // The gain is capped at 1: min(1, g) is g > 1 ? 1 : g.
            const F g = L::min(one, L::add(floor, tremolo.template read<L>()));
            left = L::add(L::mul(L::mul(left, g), m), L::mul(dry, left));
            right = L::add(L::mul(L::mul(g, right), m), L::mul(dry, right));
        }
        if constexpr (Panner) {
            const F pan = L::mul(depth, panner.template read<L>());
            // A positive pan lowers the left channel, a negative one the right; the other gain is
            // 1 - 0 or 1 + 0, which is exactly 1.
            const F gL = L::sub(one, L::max(pan, zero));
            const F gR = L::add(one, L::min(pan, zero));
            left = L::add(L::mul(L::mul(gL, left), m), L::mul(dry, left));
            right = L::add(L::mul(L::mul(gR, right), m), L::mul(dry, right));
        }
        L::store(outL + i, left);
        L::store(outR + i, right);
    }
}

// Frames [from, to): whole vectors, then the frames after the last one singly.
template <class L, bool Tremolo, bool Panner, class TremoloReads, class PannerReads>
[[gnu::always_inline]] inline void mixFrames(const MixJob& job, int32_t from, int32_t to,
                                             TremoloReads& tremolo, PannerReads& panner)
{
    const int32_t vectorEnd = from + ((to - from) & ~(L::width - 1));
    mixFramesHere<L, Tremolo, Panner>(job, from, vectorEnd, tremolo, panner);
    // Tested apart: the frame loop's stores make the compiler reload the job for the tail.
    if (vectorEnd != to)
        mixFramesHere<ScalarLanes, Tremolo, Panner>(job, vectorEnd, to, tremolo, panner);
}

// Frames [from, to) of both oscillators' current stretches, their table reads kept in registers.
template <class L, bool Tremolo, bool Panner, class TremoloReads, class PannerReads>
[[gnu::noinline]] void mixStretchesWith(const MixJob& job, int32_t from, int32_t to,
                                        const IndexSteps& tremoloSteps,
                                        const IndexSteps& pannerSteps)
{
    TremoloReads tremolo = TremoloReads::start(job.tremolo.table, tremoloSteps);
    PannerReads panner = PannerReads::start(job.panner.table, pannerSteps);
    mixFrames<L, Tremolo, Panner>(job, from, to, tremolo, panner);
}

// The loop for both oscillators' current stretches: a stretch that fits the lane type's window
// is read through it, any other one entry by entry.
template <class L, bool Tremolo, bool Panner>
StretchLoop stretchLoop(const IndexSteps& tremoloSteps, const IndexSteps& pannerSteps)
{
    using Window = WindowReads<L>;
    if constexpr (L::windowed) {
        const bool tremoloWindow = Tremolo && Window::fits(tremoloSteps);
        const bool pannerWindow = Panner && Window::fits(pannerSteps);
        if (tremoloWindow && pannerWindow)
            return mixStretchesWith<L, Tremolo, Panner, Window, Window>;
        if (tremoloWindow)
            return mixStretchesWith<L, Tremolo, Panner, Window, StretchReads>;
        if (pannerWindow)
            return mixStretchesWith<L, Tremolo, Panner, StretchReads, Window>;
    }
    return mixStretchesWith<L, Tremolo, Panner, StretchReads, StretchReads>;
}

// The loop for the stretches the running oscillators' runs are in.
template <class L>
StretchLoop runsLoop(const MixJob& job)
{
    const IndexSteps& tremolo = job.tremolo.runIndices;
    const IndexSteps& panner = job.panner.runIndices;
    switch (stagesRunning(job)) {
    case 1:
        return stretchLoop<L, true, false>(tremolo, panner);
    case 2:
        return stretchLoop<L, false, true>(tremolo, panner);
    case 3:
        return stretchLoop<L, true, true>(tremolo, panner);
    default:
        return stretchLoop<L, false, false>(tremolo, panner);
    }
}

// Stretches this long are read by walkers in registers, which costs less per frame than lists.
constexpr int32_t kWalkedFrames = 64;
// Frames listed at a time where stretches end: the lists stay in the first-level cache.
constexpr int32_t kListedFrames = 128;

// Any block: where both oscillators' stretches go on for a while the frames are read by walkers,
// and where one ends soon a stretch of frames is listed ahead, so that the frame loop never
// stops at a stretch end.
template <class L, bool Tremolo, bool Panner>
void mixBlock(MixJob& job)
{
    TableReader tremolo(job.tremolo, job.frames);
    TableReader panner(job.panner, job.frames);
    alignas(64) uint32_t tremoloIndices[kListedFrames + L::width];
    alignas(64) uint32_t pannerIndices[kListedFrames + L::width];
    for (int32_t from = 0; from < job.frames;) {
        int32_t frames = job.frames - from;
        if (Tremolo)
            frames = std::min(frames, tremolo.ready());
        if (Panner)
            frames = std::min(frames, panner.ready());
        if (frames >= kWalkedFrames) {
            if (from + frames != job.frames)
                frames &= ~(L::width - 1);
            const IndexSteps tremoloSteps = Tremolo ? tremolo.take(frames) : IndexSteps{};
            const IndexSteps pannerSteps = Panner ? panner.take(frames) : IndexSteps{};
            stretchLoop<L, Tremolo, Panner>(tremoloSteps, pannerSteps)(
                job, from, from + frames, tremoloSteps, pannerSteps);
        } else {
            // Only an oscillator whose stretch ends within them is listed; the other one's
            // stretch is walked.
            frames = std::min(job.frames - from, kListedFrames);
            const auto mix = [&](auto tremoloReads, auto pannerReads) {
                mixFrames<L, Tremolo, Panner>(job, from, from + frames, tremoloReads,
                                              pannerReads);
            };
            const bool listTremolo = Tremolo && tremolo.ready() < frames;
            const bool listPanner = Panner && panner.ready() < frames;
            if (listTremolo)
                tremolo.list<L>(tremoloIndices, frames);
            if (listPanner)
                panner.list<L>(pannerIndices, frames);
            // (A stage that is not running takes the list, which is never read.)
            const ListedReads tremoloList{job.tremolo.table, tremoloIndices};
            const ListedReads pannerList{job.panner.table, pannerIndices};
            const auto walk = [frames](TableReader& reader, const float* table) {
                return StretchReads::start(table, reader.take(frames));
            };
            if (listTremolo || !Tremolo) {
                if (listPanner || !Panner)
                    mix(tremoloList, pannerList);
                else
                    mix(tremoloList, walk(panner, job.panner.table));
            } else if (listPanner || !Panner) {
                mix(walk(tremolo, job.tremolo.table), pannerList);
            } else {
                mix(walk(tremolo, job.tremolo.table), walk(panner, job.panner.table));
            }
        }
        from += frames;
    }
    if (Tremolo)
        tremolo.finish();
    if (Panner)
        panner.finish();
}

// The loops in the order MixFunctions keeps them.
template <class L>
constexpr MixFunctions mixFunctions()
{
    return {{mixBlock<L, false, false>, mixBlock<L, true, false>, mixBlock<L, false, true>,
             mixBlock<L, true, true>},
            runsLoop<L>};
}

} // namespace
