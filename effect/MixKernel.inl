// The frame loop, written once over a lane type and compiled once per instruction set: the file
// that includes it supplies the lane type and, for AVX2, the target. Everything here has internal
// linkage, so no instance compiled for AVX2 can stand in for the baseline one at link time.
//
// A lane type L offers: F (a vector of floats), width, load, store, splat, gather, add, sub, mul,
// atMostOne (v > 1 ? 1 : v), greater (a lane mask) and select (mask ? a : b).

namespace {

// One frame at a time, for the frames after the last full vector.
struct ScalarLanes {
    using F = float;
    static constexpr int32_t width = 1;
    static F load(const float* p) { return *p; }
    static void store(float* p, F v) { *p = v; }
    static F splat(float v) { return v; }
    static F gather(const float* table, const uint32_t* index) { return table[*index]; }
    static F add(F a, F b) { return a + b; }
    static F sub(F a, F b) { return a - b; }
    static F mul(F a, F b) { return a * b; }
    static F atMostOne(F v) { return v > 1.0f ? 1.0f : v; }
    static bool greater(F a, F b) { return a > b; }
    static F select(bool mask, F a, F b) { return mask ? a : b; }
};

// Frames [from, to), (to - from) a multiple of L::width.
template <class L, bool Tremolo, bool Panner>
inline void mixFrames(const MixJob& job, int32_t from, int32_t to)
{
    using F = typename L::F;
    const F zero = L::splat(0.0f);
    const F one = L::splat(1.0f);
    const F m = L::splat(job.mix);
    const F dry = L::splat(1.0f - job.mix);
    const F floor = L::splat(job.tremoloFloor);
    const F depth = L::splat(job.pannerDepth);
    for (int32_t i = from; i < to; i += L::width) {
        F left = L::load(job.inL + i);
        F right = L::load(job.inR + i);
        if constexpr (Tremolo) {
            const F g = L::atMostOne(L::add(floor, L::gather(job.tremoloTable,
                                                              job.tremoloIndices + i)));
            left = L::add(L::mul(L::mul(left, g), m), L::mul(dry, left));
            right = L::add(L::mul(L::mul(g, right), m), L::mul(dry, right));
        }
        if constexpr (Panner) {
            const F pan = L::mul(depth, L::gather(job.pannerTable, job.pannerIndices + i));
            // A positive pan lowers the left channel, a negative one the right.
            const F gL = L::select(L::greater(pan, zero), L::sub(one, pan), one);
            const F gR = L::select(L::greater(zero, pan), L::add(one, pan), one);
            left = L::add(L::mul(L::mul(gL, left), m), L::mul(dry, left));
            right = L::add(L::mul(L::mul(gR, right), m), L::mul(dry, right));
        }
        L::store(job.outL + i, left);
        L::store(job.outR + i, right);
    }
}

template <class L, bool Tremolo, bool Panner>
void mixBlock(const MixJob& job)
{
    const int32_t vectorEnd = job.frames - job.frames % L::width;
    mixFrames<L, Tremolo, Panner>(job, 0, vectorEnd);
    mixFrames<ScalarLanes, Tremolo, Panner>(job, vectorEnd, job.frames);
}

template <class L>
void mixWith(const MixJob& job)
{
    if (job.tremoloIndices && job.pannerIndices)
        mixBlock<L, true, true>(job);
    else if (job.tremoloIndices)
        mixBlock<L, true, false>(job);
    else if (job.pannerIndices)
        mixBlock<L, false, true>(job);
    else
        mixBlock<L, false, false>(job);
}

} // namespace
