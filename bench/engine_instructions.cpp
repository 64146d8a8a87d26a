// Processes a fixed number of frames with one engine, for counting instructions under callgrind
// (see count_engine_instructions.sh):
//   engine_instructions plain|in-memory|sse2|avx2|avx512 <block frames> <total frames> [program]
// "plain" is the engine's reference loop, "in-memory" the loop in FieldsInMemoryLoop.h.
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <vector>

#include "engine/ModulationEngine.h"
#include "engine/ReferenceEngine.h"
#include "engine/SineTables.h"
#include "engine/FactoryPrograms.h"

#include "FieldsInMemoryLoop.h"

int main(int argc, char** argv)
{
    if (argc != 4 && argc != 5) {
        std::fprintf(stderr,
                     "usage: %s plain|in-memory|sse2|avx2|avx512 <block frames> <total frames> [0..9]\n",
                     argv[0]);
        return 2;
    }
    const char* engineName = argv[1];
    const int block = std::atoi(argv[2]);
    const long total = std::atol(argv[3]);
    if (block <= 0 || total <= 0)
        return 2;
    const bool plain = std::strcmp(engineName, "plain") == 0;
    const bool inMemory = std::strcmp(engineName, "in-memory") == 0;
    auto kernel = ModulationEngine::Kernel::Sse2;
    if (std::strcmp(engineName, "avx2") == 0)
        kernel = ModulationEngine::Kernel::Avx2;
    else if (std::strcmp(engineName, "avx512") == 0)
        kernel = ModulationEngine::Kernel::Avx512;
    ModulationEngine vector(kernel);
    if (!plain && !inMemory && vector.kernelInUse() != kernel) {
        std::fprintf(stderr, "%s is not used on this processor\n", engineName);
        return 1;
    }
    sine_tables::tremoloTable(); // built here, not inside the counted calls
    OscillatorState plainState;
    // "Rotary", the fastest oscillators, unless another factory program is named.
    const int program = argc < 5 ? 9 : std::atoi(argv[4]);
    if (program < 0 || program >= kNumPrograms)
        return 2;
    const EngineSettings settings = factorySettings(program);
    FieldsInMemoryEffect inMemoryEffect(settings);
    std::vector<float> inL(block), inR(block), outL(block), outR(block);
    float* inputs[2] = {inL.data(), inR.data()};
    float* outputs[2] = {outL.data(), outR.data()};
    for (int i = 0; i < block; ++i) {
        inL[i] = 0.5f * std::sin(0.05f * static_cast<float>(i));
        inR[i] = 0.5f * std::cos(0.031f * static_cast<float>(i));
    }
    for (long done = 0; done < total; done += block) {
        if (plain)
            processReference(plainState, inL.data(), inR.data(), outL.data(), outR.data(), block,
                             settings);
        else if (inMemory)
            inMemoryEffect.processReplacing(inputs, outputs, block);
        else
            vector.process(inL.data(), inR.data(), outL.data(), outR.data(), block, settings);
    }
    // Keeps the work observable.
    std::printf("%s %d %ld %a\n", engineName, block, total, static_cast<double>(outL[block - 1]));
    return 0;
}
