// The audio path: a tremolo (both channels' level follows a half-wave sine) followed by an
// automatic panner (the balance follows a full sine), each blended with its own input by the mix.
// All sample arithmetic is single precision in a fixed order: the output is defined bit for bit,
// by the plain loop in ReferenceEngine, and this engine gives the same bits several frames at a
// time. Knows nothing of the plug-in interface; it is handed plain buffers and a settings snapshot.
#pragma once

#include <cstdint>

#include "engine/EngineSettings.h"
#include "engine/MixKernel.h"
#include "engine/OscillatorState.h"

class ModulationEngine : public OscillatorState {
public:
    // The instruction sets the engine has a kernel for, narrowest first.
    enum class Kernel { Sse2, Avx2, Avx512 };

    // Uses the widest kernel up to `widest` that suits the processor (see chooseKernel).
    explicit ModulationEngine(Kernel widest = Kernel::Avx512);

    // outL/outR may be the same buffers as inL/inR. frames <= 0 touches nothing.
    void process(const float* inL, const float* inR, float* outL, float* outR, int32_t frames,
                 const EngineSettings& settings);

    Kernel kernelInUse() const { return inUse; }

private:
    // The widest kernel up to `widest` that this processor runs, and runs fast.
    static Kernel chooseKernel(Kernel widest);

    void takeSettings(); // from lastBlock into the job and the oscillators
    // Any block: copies the oscillators in, lets the kernel plan their stretches, copies them out.
    void mixBlock(const MixFunctions& mix);
    // The frames the running oscillators' runs cover from where the kernel left them.
    int32_t runsCoverage() const;

    Kernel inUse;
    const MixFunctions* kernel;
    // The kernel for blocks shorter than kWideBlock: two or three sixteen-frame vectors a block
    // gain nothing over eight-frame ones (measured at 32 frames: the same or a little slower).
    static constexpr int32_t kWideBlock = 256;
    const MixFunctions* shortBlockKernel;
    // The last block's settings and what they came to: hosts change them far less often than
    // every block, and deriving them costs as much as the frames of a short block.
    EngineSettings lastSettings;
    BlockSettings lastBlock;
    // The last buffers found fit for the vector path: hosts hand the same ones block after block.
    // The job holds them too.
    const float* checkedInL = nullptr;
    const float* checkedInR = nullptr;
    const float* checkedOutL = nullptr;
    const float* checkedOutR = nullptr;
    int32_t checkedFrames = 0;
    // The kernel's job: buffers, the settings-derived fields, and the oscillators as the kernel
    // keeps them, with the runs they are in.
    MixJob job{};
    // Where the last block left the oscillators, and how many more frames their runs cover from
    // there. While nobody has moved them since and the settings are the same, a block of at most
    // that many frames goes straight along the runs: the check most blocks need is this one.
    OscillatorState left;
    int32_t coveredFrames = 0;
    // The loops along those runs, for short blocks and for wide ones.
    StretchLoop runsLoops[2] = {};
};
