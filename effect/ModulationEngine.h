// The audio path: a tremolo (both channels' level follows a half-wave sine) followed by an
// automatic panner (the balance follows a full sine), each blended with its own input by the mix.
// All sample arithmetic is single precision in a fixed order: the output is defined bit for bit,
// by the plain loop in ReferenceEngine, and this engine gives the same bits several frames at a
// time. Knows nothing of the plug-in interface; it is handed plain buffers and a settings snapshot.
#pragma once

#include <cstdint>

#include "effect/EngineSettings.h"
#include "effect/MixKernel.h"
#include "effect/OscillatorState.h"

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
    // The kernel's job, whose settings-derived fields change only with the settings.
    MixJob job{};
    // The last buffers found fit for the vector path: hosts hand the same ones block after block.
    const float* checkedInL = nullptr;
    const float* checkedInR = nullptr;
    const float* checkedOutL = nullptr;
    const float* checkedOutR = nullptr;
    int32_t checkedFrames = 0;
    // The oscillators as the kernel keeps them, with the runs they are in.
    KernelOscillator tremoloOscillator;
    KernelOscillator pannerOscillator;
};
