// The block loop, written once over lane types and compiled once per instruction set: the file
// that includes it chooses the target and the lane types (MixLanes*.h). A kernel runs the long
// stretches at its own width, L, and the frames around a stretch end at a narrower one, N, so
// that fewer frames are read one at a time. Everything here has internal linkage, so no instance
// compiled for a wider set can stand in for the baseline one at link time.
//
// A lane type offers: F (a vector of floats), width, load, store, splat, add, sub, mul, min and
// max with the x86 rules (min(a, b) = a < b ? a : b, max(a, b) = a > b ? a : b), and lookup,
// which reads the table entries of `width` consecutive frames, their indices from a source's
// next().
#include <algorithm>
#include <bit>
#include <cstdint>

#include "effect/MixKernel.h"

namespace {

// Hands out a stretch's table indices frame by frame, one addition and one shift each. The
// mantissa is kept shifted so that the index is its upper half: every walker then shifts by the
// same constant, and the frame loop needs no register for either oscillator's shift. Whole
// registers wide: a walker goes through memory between segments of a block, and fields stored and
// loaded at one width never make a load wait for a store it only partly overlaps.
struct IndexWalker {
    static constexpr uint32_t kIndexBits = 32;

    uint64_t step;     // the run's step << up
    uint64_t position; // the mantissa << up
    uint64_t up;       // kIndexBits - the run's shift

    // Shifts of at most 23 leave a 24-bit mantissa well inside the 64 bits.
    static IndexWalker from(const IndexSteps& steps)
    {
        const uint64_t up = kIndexBits - steps.shift;
        return {static_cast<uint64_t>(steps.step) << up,
                static_cast<uint64_t>(steps.mantissa) << up, up};
    }

    IndexSteps steps() const
    {
        return {static_cast<uint32_t>(step >> up), static_cast<uint32_t>(kIndexBits - up),
                static_cast<uint32_t>(position >> up)};
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

// One running oscillator's table reads through a block, stretch after stretch.
class TableReader {
public:
    TableReader(KernelOscillator& oscillator, int32_t blockFrames)
        : table(oscillator.table), oscillator(oscillator), phase(oscillator.phase),
          index(oscillator.index), unplanned(blockFrames)
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

    // Frames left in the current stretch, starting the next one when it is used up.
    int32_t ready()
    {
        if (left == 0)
            plan();
        return left;
    }

    // The index of the next frame, across stretch ends.
    uint64_t next()
    {
        if (left == 0)
            plan();
        --left;
        return walker.next();
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
        oscillator.runIndices = walker.steps();
        oscillator.runBitStep = stretch.bitStep;
        oscillator.runLimitBits = stretch.limitBits;
    }

    const float* const table;
    IndexWalker walker{};
    int32_t left = 0; // frames of the current stretch not yet read

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
        walker = IndexWalker::from(stretch.indices);
        phase = stretch.phaseAfter(stretch.frames);
        index = static_cast<uint32_t>(phase);
    }

    KernelOscillator& oscillator;
    Stretch stretch;
    float phase;    // after the current stretch
    uint32_t index; // read by the frame after the current stretch
    int32_t unplanned;
};

// Table reads inside one stretch, from a walker the frame loop keeps in registers.
struct StretchReads {
    const float* table;
    IndexWalker walker;

    template <class L>
    typename L::F read()
    {
        return L::lookup(table, walker);
    }
};

// Table reads frame by frame, across stretch ends.
struct FrameReads {
    TableReader* reader;

    template <class L>
    typename L::F read()
    {
        return L::lookup(reader->table, *reader);
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

// The same for stretches of both oscillators, out of line so that the long loops' registers are
// allocated for them alone. The walkers' steps and positions travel in registers (a walker passed
// whole would go through the stack) and come back as the two positions they reach.
struct Positions {
    uint64_t tremolo;
    uint64_t panner;
};

template <class L, bool Tremolo, bool Panner>
[[gnu::noinline]] Positions mixStretchFrames(const MixJob& job, Positions steps, Positions start,
                                             int32_t from, int32_t to)
{
    StretchReads tremolo{job.tremolo->table, {steps.tremolo, start.tremolo, 0}};
    StretchReads panner{job.panner->table, {steps.panner, start.panner, 0}};
    mixFramesHere<L, Tremolo, Panner>(job, from, to, tremolo, panner);
    return {tremolo.walker.position, panner.walker.position};
}

// Runs frames [from, to) of both oscillators' current stretches.
template <class L, bool Tremolo, bool Panner>
void mixStretches(const MixJob& job, int32_t from, int32_t to, IndexWalker& tremolo,
                  IndexWalker& panner)
{
    const Positions reached = mixStretchFrames<L, Tremolo, Panner>(
        job, {tremolo.step, panner.step}, {tremolo.position, panner.position}, from, to);
    tremolo.position = reached.tremolo;
    panner.position = reached.panner;
}

template <bool Tremolo, bool Panner>
void finish(TableReader& tremolo, TableReader& panner)
{
    if (Tremolo)
        tremolo.finish();
    if (Panner)
        panner.finish();
}

template <class L, class N, bool Tremolo, bool Panner>
void mixBlock(MixJob& job)
{
    static_assert((L::width & (L::width - 1)) == 0 && (N::width & (N::width - 1)) == 0);
    static_assert(N::width <= L::width);
    constexpr int32_t wholeVectors = ~(N::width - 1);
    TableReader tremolo(*job.tremolo, job.frames);
    TableReader panner(*job.panner, job.frames);
    const int32_t vectorEnd = job.frames & wholeVectors;
    for (int32_t i = 0; i < vectorEnd;) {
        // As many whole vectors as both current stretches cover, wide ones where they can be.
        int32_t frames = vectorEnd - i;
        if (Tremolo)
            frames = std::min(frames, tremolo.ready());
        if (Panner)
            frames = std::min(frames, panner.ready());
        if (frames >= L::width)
            frames &= ~(L::width - 1);
        else
            frames &= wholeVectors;
        if (frames >= L::width) {
            mixStretches<L, Tremolo, Panner>(job, i, i + frames, tremolo.walker, panner.walker);
            tremolo.left -= Tremolo ? frames : 0;
            panner.left -= Panner ? frames : 0;
        } else if (frames > 0) {
            mixStretches<N, Tremolo, Panner>(job, i, i + frames, tremolo.walker, panner.walker);
            tremolo.left -= Tremolo ? frames : 0;
            panner.left -= Panner ? frames : 0;
        } else {
            // A stretch ends inside the next narrow vector: that oscillator reads frame by frame.
            frames = N::width;
            StretchReads tremoloReads{tremolo.table, tremolo.walker};
            StretchReads pannerReads{panner.table, panner.walker};
            FrameReads tremoloSteps{&tremolo};
            FrameReads pannerSteps{&panner};
            if (!Tremolo || tremolo.left >= frames) {
                mixFramesHere<N, Tremolo, Panner>(job, i, i + frames, tremoloReads, pannerSteps);
                tremolo.walker = tremoloReads.walker;
                tremolo.left -= Tremolo ? frames : 0;
            } else if (!Panner || panner.left >= frames) {
                mixFramesHere<N, Tremolo, Panner>(job, i, i + frames, tremoloSteps, pannerReads);
                panner.walker = pannerReads.walker;
                panner.left -= Panner ? frames : 0;
            } else {
                mixFramesHere<N, Tremolo, Panner>(job, i, i + frames, tremoloSteps, pannerSteps);
            }
        }
        i += frames;
    }
    FrameReads tremoloReads{&tremolo};
    FrameReads pannerReads{&panner};
    mixFramesHere<ScalarLanes, Tremolo, Panner>(job, vectorEnd, job.frames, tremoloReads,
                                                pannerReads);
    finish<Tremolo, Panner>(tremolo, panner);
}

template <class L, class N, bool Tremolo, bool Panner>
[[gnu::noinline]] void mixRuns(const MixJob& job)
{
    StretchReads tremolo{job.tremolo->table, IndexWalker::from(job.tremolo->runIndices)};
    StretchReads panner{job.panner->table, IndexWalker::from(job.panner->runIndices)};
    const int32_t wideEnd = job.frames & ~(L::width - 1);
    const int32_t narrowEnd = job.frames & ~(N::width - 1);
    mixFramesHere<L, Tremolo, Panner>(job, 0, wideEnd, tremolo, panner);
    // Tested apart: the frame loop's stores make the compiler reload the job for the tail.
    if (narrowEnd != wideEnd)
        mixFramesHere<N, Tremolo, Panner>(job, wideEnd, narrowEnd, tremolo, panner);
    if (narrowEnd != job.frames)
        mixFramesHere<ScalarLanes, Tremolo, Panner>(job, narrowEnd, job.frames, tremolo, panner);
}

// The loops in the order MixFunctions keeps them.
template <class L, class N>
constexpr MixFunctions mixFunctions()
{
    return {{mixBlock<L, N, false, false>, mixBlock<L, N, true, false>,
             mixBlock<L, N, false, true>, mixBlock<L, N, true, true>},
            {mixRuns<L, N, false, false>, mixRuns<L, N, true, false>, mixRuns<L, N, false, true>,
             mixRuns<L, N, true, true>}};
}

} // namespace
