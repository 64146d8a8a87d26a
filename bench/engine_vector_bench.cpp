// The vector engine against the plain loops, in one process and interleaved: this machine's timing
// moves by a third between processes and over seconds, so each iteration times a stretch of the
// engine's plain reference loop, of the loop that keeps every field in memory (FieldsInMemoryLoop.h), of the vector
// engine and of a memcpy of the same buffers (the floor no engine can beat). The counters report
// all four in ns per stereo frame and each plain loop's time over the vector engine's.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "engine/ModulationEngine.h"
#include "engine/ReferenceEngine.h"
#include "engine/FactoryPrograms.h"

#include "FieldsInMemoryLoop.h"

namespace {

using Clock = std::chrono::steady_clock;

// About 16384 frames per timed stretch: long enough for the clock, short enough to interleave.
constexpr int64_t kFramesPerStretch = 16384;

template <class Work>
double secondsFor(int64_t blocks, Work&& work)
{
    const auto start = Clock::now();
    for (int64_t b = 0; b < blocks; ++b) {
        work();
        benchmark::ClobberMemory();
    }
    return std::chrono::duration<double>(Clock::now() - start).count();
}

void EngineVersusPlainLoop(benchmark::State& state)
{
    const auto frames = static_cast<int32_t>(state.range(0));
    const auto kernel = static_cast<ModulationEngine::Kernel>(state.range(1));
    ModulationEngine vector(kernel);
    if (vector.kernelInUse() != kernel) {
        state.SkipWithError("this kernel is not used on this processor");
        return;
    }
    OscillatorState plain;
    const EngineSettings settings = factorySettings(static_cast<int>(state.range(2)));
    FieldsInMemoryEffect inMemory(settings);

    std::vector<float> inL(frames), inR(frames), outL(frames), outR(frames);
    for (int32_t i = 0; i < frames; ++i) {
        inL[i] = 0.5f * std::sin(0.05f * static_cast<float>(i));
        inR[i] = 0.5f * std::cos(0.031f * static_cast<float>(i));
    }
    const int64_t blocks = std::max<int64_t>(1, kFramesPerStretch / frames);
    float* inputs[2] = {inL.data(), inR.data()};
    float* outputs[2] = {outL.data(), outR.data()};
    double plainSeconds = 0.0, inMemorySeconds = 0.0, vectorSeconds = 0.0, copySeconds = 0.0;
    for (auto _ : state) {
        plainSeconds += secondsFor(blocks, [&] {
            processReference(plain, inL.data(), inR.data(), outL.data(), outR.data(), frames,
                             settings);
        });
        inMemorySeconds += secondsFor(blocks, [&] {
            inMemory.processReplacing(inputs, outputs, frames);
        });
        vectorSeconds += secondsFor(blocks, [&] {
            vector.process(inL.data(), inR.data(), outL.data(), outR.data(), frames, settings);
        });
        copySeconds += secondsFor(blocks, [&] {
            std::memcpy(outL.data(), inL.data(), frames * sizeof(float));
            std::memcpy(outR.data(), inR.data(), frames * sizeof(float));
        });
    }
    // All three have run the same frames, so their next blocks must agree bit for bit.
    std::vector<float> plainOut(2 * frames), inMemoryOut(2 * frames), vectorOut(2 * frames);
    processReference(plain, inL.data(), inR.data(), plainOut.data(), plainOut.data() + frames,
                     frames, settings);
    float* inMemoryOutputs[2] = {inMemoryOut.data(), inMemoryOut.data() + frames};
    inMemory.processReplacing(inputs, inMemoryOutputs, frames);
    vector.process(inL.data(), inR.data(), vectorOut.data(), vectorOut.data() + frames, frames,
                   settings);
    const size_t bytes = vectorOut.size() * sizeof(float);
    if (std::memcmp(plainOut.data(), vectorOut.data(), bytes) != 0 ||
        std::memcmp(inMemoryOut.data(), vectorOut.data(), bytes) != 0) {
        state.SkipWithError("the loops' outputs differ");
        return;
    }
    const double perFrame = 1e9 / (static_cast<double>(state.iterations()) * blocks * frames);
    state.counters["plain_ns"] = plainSeconds * perFrame;
    state.counters["in_memory_ns"] = inMemorySeconds * perFrame;
    state.counters["vector_ns"] = vectorSeconds * perFrame;
    state.counters["memcpy_ns"] = copySeconds * perFrame;
    state.counters["speedup"] = plainSeconds / vectorSeconds;
    state.counters["speedup_in_memory"] = inMemorySeconds / vectorSeconds;
}

} // namespace

// Arguments: block size, the kernel (0 SSE2, 1 AVX2, 2 AVX-512), the factory program (0 to 9;
// 1 "Waves" has slow oscillators as most programs do, 9 "Rotary" the fastest, whose phases cross
// binades and wrap most often).
BENCHMARK(EngineVersusPlainLoop)
    ->ArgNames({"block", "kernel", "program"})
    ->ArgsProduct({{32, 512, 4096}, {0, 1, 2}, {0, 1, 2, 3, 4, 5, 6, 7, 8, 9}});

BENCHMARK_MAIN();
