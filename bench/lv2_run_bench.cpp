// The LV2 plug-in's run through lilv, as a host calls it, in ns per stereo frame: the figures to
// set beside process_bench's for the VST module. Each port has a buffer of its own (lv2bench
// connects both inputs to one buffer and both outputs to another, which the engine must treat
// as overlapping and runs frame by frame).
#include <benchmark/benchmark.h>
#include <lilv/lilv.h>

#include <vector>

#include "engine/FactoryPrograms.h"

namespace {

void Lv2Run(benchmark::State& state)
{
    LilvWorld* world = lilv_world_new();
    LilvNode* bundle = lilv_new_file_uri(world, nullptr, HVT_LV2_BUNDLE);
    lilv_world_load_bundle(world, bundle);
    LilvNode* uri = lilv_new_uri(world, "urn:halvo:hvtremolo");
    const LilvPlugin* plugin = lilv_plugins_get_by_uri(lilv_world_get_all_plugins(world), uri);
    LilvInstance* instance = plugin ? lilv_plugin_instantiate(plugin, 44100.0, nullptr) : nullptr;
    if (!instance) {
        state.SkipWithError("the LV2 plug-in did not load");
    } else {
        // Program 9, both stages running, as in process_bench.
        float controls[7] = {};
        for (int parameter = 0; parameter < 5; ++parameter)
            controls[parameter] = factoryValue(9, parameter);
        for (uint32_t port = 4; port < 11; ++port)
            lilv_instance_connect_port(instance, port, &controls[port - 4]);
        const auto frames = static_cast<uint32_t>(state.range(0));
        std::vector<float> inL(frames, 0.25f), inR(frames, -0.25f), outL(frames), outR(frames);
        float* buffers[4] = {inL.data(), inR.data(), outL.data(), outR.data()};
        for (uint32_t port = 0; port < 4; ++port)
            lilv_instance_connect_port(instance, port, buffers[port]);
        lilv_instance_activate(instance);
        for (auto _ : state) {
            lilv_instance_run(instance, frames);
            benchmark::DoNotOptimize(outL.data());
            benchmark::ClobberMemory();
        }
        state.counters["ns_per_frame"] = benchmark::Counter(
            static_cast<double>(state.iterations()) * frames,
            benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
        lilv_instance_deactivate(instance);
        lilv_instance_free(instance);
    }
    lilv_node_free(uri);
    lilv_node_free(bundle);
    lilv_world_free(world);
}

} // namespace

BENCHMARK(Lv2Run)->Arg(32)->Arg(512)->Arg(4096);
BENCHMARK_MAIN();
