// processReplacing through the loaded module, as a host calls it, in ns per stereo frame.
#include <benchmark/benchmark.h>

#include <vector>

#include "tools/vsthost/VstPlugin.h"

namespace {

void ProcessReplacing(benchmark::State& state)
{
    static const VstModule module(HVT_MODULE_PATH);
    auto plugin = VstPlugin::create(module);
    if (!plugin) {
        state.SkipWithError(module.error().c_str());
        return;
    }
    // Both stages running: the most work per frame any program asks for.
    plugin->dispatch(effSetProgram, 0, 9);
    const auto frames = static_cast<VstInt32>(state.range(0));
    std::vector<float> inL(frames, 0.25f), inR(frames, -0.25f), outL(frames), outR(frames);
    float* inputs[2] = {inL.data(), inR.data()};
    float* outputs[2] = {outL.data(), outR.data()};
    for (auto _ : state) {
        plugin->processReplacing(inputs, outputs, frames);
        benchmark::DoNotOptimize(outL.data());
        benchmark::ClobberMemory();
    }
    state.counters["ns_per_frame"] = benchmark::Counter(
        static_cast<double>(state.iterations()) * frames,
        benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

} // namespace

BENCHMARK(ProcessReplacing)->Arg(32)->Arg(512)->Arg(4096);
BENCHMARK_MAIN();
